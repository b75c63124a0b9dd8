#include "host/records/textsink.h"

#include <algorithm>
#include <cmath>
#include <string_view>
#include <type_traits>
#include <utility>

#include "gpsengine/face/answerreader.h"
#include "gpsengine/face/words.h"
#include "host/records/fixkind.h"
#include "host/records/jsonwriter.h"
#include "host/run/face.h"

namespace host {

namespace {

template <class T>
void AppendValue(std::string& out, T value) {
  if constexpr (std::is_same_v<T, bool>) {
    out += value ? "yes" : "no";
  } else if constexpr (std::is_integral_v<T>) {
    out += std::to_string(value);
  } else if constexpr (std::is_floating_point_v<T>) {
    JsonWriter(out).Value(value);
  } else {
    // Only what a terminal shows as it is: a receiver's text may hold anything.
    for (const char c : value) out += c >= ' ' && c <= '~' ? c : '?';
  }
}

void AppendMetres(std::string& out, const std::optional<double>& metres, std::size_t width) {
  metres ? AppendPadded(out, *metres, 2, width) : void(out.append(width - 1, ' ') += '-');
}

}  // namespace

bool TextSink::OnData(const Record& record) {
  const bool fix = shows_ == Shows::fixes && record.HasPosition();
  if (fix) WriteFix(record.epoch);
  told_ = record.kinds.Has(Kind::report) && WriteReports(record.data);
  return told_ || fix;
}

bool TextSink::OnString(const CString& text) {
  const bool told = std::exchange(told_, false);
  std::string bytes;
  if (shows_ != Shows::reports || told || !IsAnswer(text) || !text.ToBytes(bytes)) return false;
  bytes.erase(bytes.find_last_not_of("\r\n") + 1);
  out_ += "answer: ";
  AppendValue(out_, std::string_view(bytes));
  out_ += '\n';
  return true;
}

void TextSink::WritePlace(const PositionEpoch& fix) {
  out_ += "  ";
  const std::string latitude = PlainAngle(fix.latitude, display_.Angles(), 'N', 'S');
  out_.append(latitude, latitude.starts_with(' ') ? 1 : 0);  // a column less than for a longitude
  out_ += "  ";
  out_ += PlainAngle(fix.longitude, display_.Angles(), 'E', 'W');
  if (!display_.projection) return;
  const auto place = display_.projection->Of(fix.latitude, fix.longitude);
  AppendMetres(out_, place ? std::optional(place->easting) : std::nullopt, 13);
  out_ += " E";
  AppendMetres(out_, place ? std::optional(place->northing) : std::nullopt, 12);
  out_ += " N";
}

void TextSink::WriteFix(const PositionEpoch& epoch) {
  const UnitSystem& units = display_.System();
  if (epoch.time_of_day) {
    AppendTimeOfDay(out_, *epoch.time_of_day);
  } else {
    out_ += "--:--:--.--";
  }
  out_ += "  ";
  out_ += Padded(NameOfSignal(epoch.signal), 9);
  if (epoch.valid) {
    WritePlace(epoch);
    AppendPadded(out_, *epoch.height * units.length.per_metre, 1, 9);
    (out_ += ' ') += units.length.name;
  }
  AppendPadded(out_, epoch.used, 0, 5);
  out_ += '/';
  out_ += std::to_string(epoch.in_view);
  out_ += " satellites";
  if (epoch.hdop) {
    out_ += "  HDOP ";
    AppendFixed(out_, *epoch.hdop, 1);
  }
  if (epoch.speed) {
    AppendPadded(out_, *epoch.speed * units.speed.per_metre, 1, 7);
    (out_ += ' ') += units.speed.name;
  }
  if (epoch.course) {
    AppendPadded(out_, *epoch.course, 0, 5);
    out_ += " deg";
  }
  out_ += '\n';
}

bool TextSink::WriteReports(const CGPSData& data) {
  // A receiver that has sentences of its own sends them with every fix: too many beside those.
  if (shows_ == Shows::fixes && !data.m_Status.m_bStatusUpdated) return false;
  const auto news = reports_.NewsIn(data);
  for (const Report& report : news) {
    (out_ += &report == &news.front() ? "report: " : ", ") += report.label;
    out_ += ' ';
    std::visit([this](const auto& value) { AppendValue(out_, value); }, report.value);
    if (!report.unit.empty()) (out_ += ' ') += report.unit;
  }
  if (!news.empty()) out_ += '\n';
  return !news.empty();
}

bool TextSink::WriteRawEpoch(int week, double seconds, const std::vector<std::string>& satellites) {
  out_ += "raw epoch: week " + std::to_string(week) + ' ';
  JsonWriter(out_).Fixed(seconds, 3);
  out_ += " s, " + std::to_string(satellites.size()) + " satellites:";
  for (const std::string& satellite : satellites) out_ += ' ' + satellite;
  out_ += '\n';
  return true;
}

bool TextSink::OnRawData(const CGPSDataRaw& epoch) {
  std::vector<std::string> satellites;
  for (int i = 0; i < epoch.GetNumSV(); ++i) {
    CGPSSatelliteDataRaw satellite;
    if (epoch.GetSatelliteData(satellite, i)) satellites.push_back(std::to_string(satellite.m_nPRN));
  }
  return WriteRawEpoch(epoch.m_nGPSWeek, epoch.m_dReceiverTime, satellites);
}

bool TextSink::OnBin(const Block& block) {
  if (block.ephemeris != nullptr) return OnEphemeris(block.ephemeris->orbit);
  if (block.epoch == nullptr) return false;
  std::vector<std::string> satellites;
  for (const auto& signal : block.epoch->signals) {
    const std::string name =
        signal.system + std::string(signal.satellite < 10 ? "0" : "") + std::to_string(signal.satellite);
    if (std::ranges::find(satellites, name) == satellites.end()) satellites.push_back(name);
  }
  return WriteRawEpoch(block.epoch->week, block.epoch->time_of_week, satellites);
}

bool TextSink::OnEphemeris(const CGPSDataEphemeris& ephemeris) {
  out_ += "ephemeris: satellite " + std::to_string(ephemeris.m_nPRN) + ", week " +
          std::to_string(ephemeris.m_nWeek) + ", for " + std::to_string(ephemeris.m_lToe) + " s\n";
  return true;
}

}  // namespace host
