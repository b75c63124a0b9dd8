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
// So many lines with a time may come between two groups, of receivers that send them seldom.
constexpr int kPatience = 300;

std::optional<int> InRange(std::string_view field, int least, int most) {
  const auto value = WholeOf(field);
  return value && *value >= least && *value <= most ? value : std::nullopt;
}

/// Where a satellite stands among those by system and number, or would.
std::vector<Satellite>::iterator PlaceOf(const SatelliteId& id, std::vector<Satellite>& all) {
  if (all.empty() || all.back().id < id) return all.end();  // most come in order
  return std::lower_bound(all.begin(), all.end(), id,
                          [](const Satellite& a, const SatelliteId& b) { return a.id < b; });
}

/// A satellite is told of by each of its bands.
void Merge(const Satellite& other, std::vector<Satellite>& all) {
  const auto satellite = PlaceOf(other.id, all);
  if (satellite == all.end() || satellite->id != other.id) {
    all.insert(satellite, other);
    if (all.size() > Sky::kMost) all.pop_back();
    return;
  }
  satellite->signal = std::max(satellite->signal, other.signal);
  if (!satellite->elevation) satellite->elevation = other.elevation;
  if (!satellite->azimuth) satellite->azimuth = other.azimuth;
}

/// The satellites of a page, four fields each.
void ReadSatellites(const Fields& gsv, int end, std::vector<Satellite>& satellites) {
  constexpr int kFirst = 4, kMostNumber = 999;
  const Gnss said = SystemOfTalker(gsv.Talker());
  for (int field = kFirst; field < end; field += 4) {
    const auto number = InRange(gsv[field], 1, kMostNumber);
    if (!number) continue;
    // A signal of 0 is none.
    satellites.push_back({.id = SatelliteOf(*number, said),
                          .elevation = InRange(gsv[field + 1], -90, 90),
                          .azimuth = InRange(gsv[field + 2], 0, 360),
                          .signal = field + 3 < end ? InRange(gsv[field + 3], 1, 99) : std::nullopt});
  }
}

}  // namespace

bool SkyReader::Read(const Fields& sentence) {
  if (!sentence) return false;
  const auto kind = sentence.Kind();
  const bool was_in_run = std::exchange(in_run_, kind == "GSA");
  if (in_run_) {
    if (!was_in_run) ++run_;
    return OnUsed(sentence);
  }
  if (kind == "GSV") return OnPage(sentence);
  const int time = TimeFieldOf(sentence);
  const bool told = time > 0 && OnTime(TimeOf(sentence[time]));
  if (kind == "GGA" || kind == "GNS") OnPosition(sentence);
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
  const auto pages = InRange(gsv[1], 1, kMostPages);
  const int page = pages ? InRange(gsv[2], 1, *pages).value_or(0) : 0;  // 0 for none
  // After whole satellites stands the band. The signal of the last one may be cut off with its comma.
  const int rest = gsv.Size() - kHead, over = rest % 4;
  const bool is_whole = page > 0 && InRange(gsv[3], 0, static_cast<int>(Sky::kMost)) && rest >= 0 &&
                        rest <= kPerPage * 4 + 1 && over != 2;
  const int end = over == 1 ? gsv.Size() - 1 : gsv.Size();
  Source source{{gsv.Talker()[0], gsv.Talker()[1]}, over == 1 ? WholeOf(gsv[end], 16).value_or(0) : 0};
  if (is_whole && page == 1) {
    pages_ = Pages{source, *pages, 1};
    coming_.clear();
  } else if (!is_whole || !pages_ || !(pages_->source == source) || pages_->pages != *pages ||
             pages_->next != page) {
    pages_.reset();
    return false;
  }
  ++pages_->next;
  ReadSatellites(gsv, end, coming_);
  if (page < *pages) return false;
  pages_.reset();
  return OnGroup(source);
}

bool SkyReader::OnGroup(const Source& source) {
  // Without times an epoch ends where the first group comes again.
  const bool is_again = std::any_of(groups_.begin(), groups_.end(), [&](const Group& other) {
    return other.source == source && other.epoch == epoch_;
  });
  const bool told = !time_ && is_again && EndEpoch();
  Group& kept = Remember(groups_, source);
  // Some receivers tell of several bands without naming them.
  if (kept.epoch != epoch_) kept.items.clear();
  if (kept.items.size() < Sky::kMost) {
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
    const auto number = InRange(gsa[field], 1, 999);
    if (number && used.items.size() < Sky::kMost) used.items.push_back(SatelliteOf(*number, said));
  }
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
  for (const Group& group : groups_) {
    for (const Satellite& satellite : group.items) Merge(satellite, sky_.satellites);
  }
  for (const auto& list : used_) {
    for (const SatelliteId& id : list.items) {
      const auto found = PlaceOf(id, sky_.satellites);
      if (found != sky_.satellites.end() && found->id == id) found->used = true;
    }
  }
  sky_.in_view = static_cast<int>(sky_.satellites.size());
  sky_.has_used = !used_.empty();
  sky_.used = used_count_;
  if (sky_.has_used) {
    sky_.used = static_cast<int>(std::count_if(sky_.satellites.begin(), sky_.satellites.end(),
                                               [](const auto& satellite) { return satellite.used; }));
  }
  is_new_ = false;
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
