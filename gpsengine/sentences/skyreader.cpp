#include "gpsengine/sentences/skyreader.h"

#include <algorithm>
#include <utility>

namespace gps {

namespace {

constexpr int kMostPages = static_cast<int>(Sky::kMost) / 4;
// More talkers and bands than any receiver has.
constexpr std::size_t kMostSources = 32;
// A system that is heard of no more is gone after this many epochs with satellites.
constexpr long long kEpochs = 3;
// Some receivers send groups seldom: this many lines with a time may come between two.
constexpr int kPatience = 300;

/// Takes over a whole number within bounds. False, with `value` untouched, for anything else.
template <class Number>
bool Take(std::string_view field, int least, int most, Number& value) {
  const int read = WholeOr(field, least - 1);
  if (read < least || read > most) return false;
  value = read;
  return true;
}

/// Where a satellite stands among those by system and number, or would. Most stand behind the one before.
std::vector<Satellite>::iterator PlaceOf(const SatelliteId& id, std::vector<Satellite>& all,
                                         std::vector<Satellite>::iterator before) {
  auto place = before != all.end() && before->id < id ? before : all.begin();
  while (place != all.end() && place->id < id) ++place;
  return place;
}

/// Adds the satellites of a band to those of the others.
void Merge(const std::vector<Satellite>& band, std::vector<Satellite>& all) {
  auto place = all.end();
  for (const Satellite& other : band) {
    place = PlaceOf(other.id, all, place);
    if (place == all.end() || place->id != other.id) {
      place = all.insert(place, other);
      if (all.size() > Sky::kMost) place = all.erase(all.end() - 1);
      continue;
    }
    place->signal = std::max(place->signal, other.signal);
    if (!place->elevation) place->elevation = other.elevation;
    if (!place->azimuth) place->azimuth = other.azimuth;
  }
}

/// The satellites of a page, four fields each.
void ReadSatellites(const Fields& gsv, Gnss said, int end, std::vector<Satellite>& satellites) {
  constexpr int kFirst = 4, kMostNumber = 999;
  for (int field = kFirst; field < end; field += 4) {
    int number = 0;
    if (!Take(gsv[field], 1, kMostNumber, number)) continue;
    Satellite& satellite = satellites.emplace_back();
    satellite.id = SatelliteOf(number, said);
    Take(gsv[field + 1], -90, 90, satellite.elevation);
    Take(gsv[field + 2], 0, 360, satellite.azimuth);
    Take(gsv[field + 3], 1, 99, satellite.signal);  // 0 is none
  }
}

}  // namespace

bool SkyReader::Read(const Fields& sentence) {
  if (!sentence) return false;
  const bool was_in_run = std::exchange(in_run_, sentence.Is("GSA"));
  if (in_run_) {
    if (!was_in_run) ++run_;
    return OnUsed(sentence);
  }
  if (sentence.Is("GSV")) return OnPage(sentence);
  const int time = TimeFieldOf(sentence);
  const bool told = time > 0 && OnTime(TimeOf(sentence[time]));
  if (sentence.Is("GGA") || sentence.Is("GNS")) OnPosition(sentence);
  return told;
}

void SkyReader::OnPosition(const Fields& position) {
  constexpr int kUsed = 7, kDilution = 8;
  used_count_ = WholeOf(position[kUsed]);
  if (used_.empty()) hdop_ = NumberOf(position[kDilution]);
}

bool SkyReader::OnTime(std::optional<double> time) {
  if (patience_ > 0) --patience_;
  const bool told = time && time_ != time && EndEpoch();
  time_ = time;
  return told;
}

bool SkyReader::OnPage(const Fields& gsv) {
  constexpr int kHead = 4, kPerPage = 4;
  int pages = 0, page = 0, in_view = 0;
  // After whole satellites stands the band. The signal of the last one may be cut off with its comma.
  const int rest = gsv.Size() - kHead, over = rest % 4;
  const bool is_whole = Take(gsv[1], 1, kMostPages, pages) && Take(gsv[2], 1, pages, page) &&
                        Take(gsv[3], 0, static_cast<int>(Sky::kMost), in_view) && rest >= 0 &&
                        rest <= kPerPage * 4 + 1 && over != 2;
  const int end = over == 1 ? gsv.Size() - 1 : gsv.Size();
  Source source{{gsv.Talker()[0], gsv.Talker()[1]}, over == 1 ? WholeOf(gsv[end], 16).value_or(0) : 0};
  if (is_whole && page == 1) {
    pages_ = Pages{source, SystemOfTalker(gsv.Talker()), pages, 1};
    coming_.clear();
  } else if (!is_whole || !pages_ || !(pages_->source == source) || pages_->pages != pages ||
             pages_->next != page) {
    pages_.reset();
    return false;
  }
  ++pages_->next;
  ReadSatellites(gsv, pages_->said, end, coming_);
  if (page < pages) return false;
  pages_.reset();
  return OnGroup(source);
}

bool SkyReader::OnGroup(const Source& source) {
  // Without times an epoch ends where the first group comes again.
  const auto is_again = [&] {
    return std::any_of(groups_.begin(), groups_.end(),
                       [&](const Group& other) { return other.source == source && other.epoch == epoch_; });
  };
  const bool told = !time_ && is_again() && EndEpoch();
  Group& kept = Remember(groups_, source);
  // Some receivers tell of several bands without naming them.
  if (kept.epoch != epoch_) kept.items.clear();
  if (kept.items.empty()) {
    kept.items.swap(coming_);
  } else if (kept.items.size() < Sky::kMost) {
    kept.items.insert(kept.items.end(), coming_.begin(), coming_.end());
  }
  kept.epoch = epoch_;
  is_new_ = true;
  patience_ = kPatience;
  return OnPart(source) || told;
}

bool SkyReader::OnUsed(const Fields& gsa) {
  constexpr int kFirst = 3, kNumbers = 12, kDilution = kFirst + kNumbers, kSystem = kDilution + 3;
  if (gsa.Size() < kSystem) return false;
  const int id = WholeOf(gsa[kSystem], 16).value_or(0);
  const Source source{{gsa.Talker()[0], gsa.Talker()[1]}, id};
  const Gnss said = id > 0 ? SystemOfId(id) : SystemOfTalker(gsa.Talker());
  auto& used = Remember(used_, source);
  // More than twelve, or several systems, take several sentences.
  if (used.run != run_) used.items.clear();
  used.run = run_;
  used.epoch = epoch_;
  for (int field = kFirst; field < kDilution; ++field) {
    int number = 0;
    if (Take(gsa[field], 1, 999, number)) used.items.push_back(SatelliteOf(number, said));
  }
  if (used.items.size() > Sky::kMost) used.items.resize(Sky::kMost);
  pdop_ = NumberOf(gsa[kDilution]);
  hdop_ = NumberOf(gsa[kDilution + 1]);
  vdop_ = NumberOf(gsa[kDilution + 2]);
  return OnPart(source);
}

/// Once as much has come as did in the epoch before, up to the same end, nothing more is waited for.
bool SkyReader::OnPart(const Source& source) {
  ++parts_;
  last_part_ = source;
  if (!is_new_ || is_told_ || parts_ != usual_parts_ || last_part_ != usual_last_) return false;
  Tell();
  return true;
}

bool SkyReader::EndEpoch() {
  const bool tells = is_new_ && !is_told_;
  const bool had_groups = is_new_ || is_told_;
  if (tells) Tell();
  if (had_groups) {
    usual_parts_ = parts_;
    usual_last_ = last_part_;
    ++epoch_;
  }
  parts_ = 0;
  is_new_ = is_told_ = false;
  return tells;
}

void SkyReader::Tell() {
  ForgetOld(groups_);
  ForgetOld(used_);
  auto satellites = std::move(sky_.satellites);  // for their memory
  satellites.clear();
  sky_ = Sky();
  sky_.satellites = std::move(satellites);
  sky_.time_of_day = time_;
  sky_.hdop = hdop_;
  sky_.pdop = pdop_;
  sky_.vdop = vdop_;
  for (const Group& group : groups_) Merge(group.items, sky_.satellites);
  for (const auto& list : used_) {
    auto place = sky_.satellites.end();
    for (const SatelliteId& id : list.items) {
      place = PlaceOf(id, sky_.satellites, place);
      if (place != sky_.satellites.end() && place->id == id) place->used = true;
    }
  }
  sky_.in_view = static_cast<int>(sky_.satellites.size());
  sky_.has_used = !used_.empty();
  sky_.used = used_count_;
  if (sky_.has_used) {
    sky_.used = static_cast<int>(std::count_if(sky_.satellites.begin(), sky_.satellites.end(),
                                               [](const auto& satellite) { return satellite.used; }));
  }
  is_told_ = true;
}

template <class T>
SkyReader::Said<T>& SkyReader::Remember(std::vector<Said<T>>& all, const Source& source) const {
  const auto found =
      std::find_if(all.begin(), all.end(), [&](const Said<T>& said) { return said.source == source; });
  if (found != all.end()) return *found;
  if (all.size() >= kMostSources) {
    all.erase(std::min_element(all.begin(), all.end(),
                               [](const auto& a, const auto& b) { return a.epoch < b.epoch; }));
  }
  return all.emplace_back(Said<T>{source});
}

template <class T>
void SkyReader::ForgetOld(std::vector<Said<T>>& all) const {
  std::erase_if(all, [&](const Said<T>& said) { return said.epoch + kEpochs <= epoch_; });
}

}  // namespace gps
