#include "host/records/textsink.h"

#include <algorithm>
#include <cmath>
#include <string_view>
#include <type_traits>
#include <utility>

#include "host/records/fixkind.h"
#include "host/records/jsonwriter.h"
#include "host/records/units.h"

namespace host {

namespace {

void AppendPadded(std::string& out, double value, int decimals, std::size_t width) {
  std::string digits;
  if (std::isfinite(value)) {
    AppendFixed(digits, value, decimals);
  } else {
    digits = "-";
  }
  if (digits.size() < width) out.append(width - digits.size(), ' ');
  out += digits;
}

void AppendTwo(std::string& out, int value) {
  out += static_cast<char>('0' + value / 10 % 10);
  out += static_cast<char>('0' + value % 10);
}

void AppendTimeOfDay(std::string& out, double seconds) {
  const auto hundredths = static_cast<int>(std::lround(seconds * 100.0));
  AppendTwo(out, hundredths / 360'000);
  out += ':';
  AppendTwo(out, hundredths / 6000 % 60);
  out += ':';
  AppendTwo(out, hundredths / 100 % 60);
  out += '.';
  AppendTwo(out, hundredths % 100);
}

/// `spare`: so many columns of those for a longitude are not needed.
void AppendAngle(std::string& out, double radians, AngleFormat format, std::size_t spare, char positive,
                 char negative) {
  std::string text = PlainAngleText(radians, format, positive, negative);
  if (!std::isfinite(radians)) text.replace(0, text.size() - 1, std::string(text.size() - 2, ' ') + '-');
  out += text.starts_with(' ') ? text.substr(spare) : text;
}

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

}  // namespace

bool TextSink::OnData(const CGPSData& data) {
  const bool fix = shows_ == Shows::fixes && data.m_bPositionValid && kinds_.Has(Kind::fix);
  if (fix) WriteFix(data);
  told_ = kinds_.Has(Kind::report) && WriteReports(data);
  return told_ || fix;
}

bool TextSink::OnString(const CString& text) {
  const bool told = std::exchange(told_, false);
  const bool is_prompt = text.GetLength() < 6;
  const bool is_answer =
      !is_prompt && (text.StartsWith("$>") || text.StartsWith("#") || text.StartsWith("$RD"));
  std::string bytes;
  if (shows_ != Shows::reports || told || !is_answer || !text.ToBytes(bytes)) return false;
  bytes.erase(bytes.find_last_not_of("\r\n") + 1);
  out_ += "answer: ";
  AppendValue(out_, std::string_view(bytes));
  out_ += '\n';
  return true;
}

void TextSink::WritePlace(const CGPSData& data) {
  out_ += "  ";
  AppendAngle(out_, data.m_dLatitude, display_.Angles(), 1, 'N', 'S');
  out_ += "  ";
  AppendAngle(out_, data.m_dLongitude, display_.Angles(), 0, 'E', 'W');
  if (!display_.projection) return;
  const auto place = display_.projection->Of(data.m_dLatitude * kDegrees, data.m_dLongitude * kDegrees);
  AppendPadded(out_, place ? place->easting : NAN, 2, 13);
  out_ += " E";
  AppendPadded(out_, place ? place->northing : NAN, 2, 12);
  out_ += " N";
}

void TextSink::WriteFix(const CGPSData& data) {
  const UnitSystem& units = display_.System();
  if (HasTimeOfDay(data)) {
    AppendTimeOfDay(out_, data.m_dTimeOfDay);
  } else {
    out_ += "--:--:--.--";
  }
  const auto signal = FixKindOf(data.m_nSignalType).name;
  out_ += "  ";
  out_ += signal;
  out_.append(signal.size() < 9 ? 9 - signal.size() : 0, ' ');
  if (data.m_nSignalType != UDF_SIGNAL_NONE) {
    WritePlace(data);
    AppendPadded(out_, data.m_dAltitude * units.length.per_metre, 1, 9);
    (out_ += ' ') += units.length.name;
  }
  AppendPadded(out_, data.m_nSatellitesUsed, 0, 5);
  out_ += '/';
  out_ += std::to_string(data.m_nSatellitesInView);
  out_ += " satellites";
  if (data.m_bDOPValid && data.m_dHDOP > 0.0) {
    out_ += "  HDOP ";
    AppendPadded(out_, data.m_dHDOP, 1, 0);
  }
  if (data.m_nSignalType != UDF_SIGNAL_NONE && data.m_bVelocityValid) {
    AppendPadded(out_, data.m_dSpeed * units.speed.per_metre, 1, 7);
    (out_ += ' ') += units.speed.name;
    if (data.m_dSpeed > 0.0) {
      AppendPadded(out_, CourseOf(data), 0, 5);
      out_ += " deg";
    }
  }
  out_ += '\n';
}

bool TextSink::WriteReports(const CGPSData& data) {
  // A receiver that has sentences of its own sends them with every fix: too many beside those.
  if (shows_ == Shows::fixes && !data.m_Status.m_bStatusUpdated) return false;
  const auto start = out_.size();
  out_ += "report: ";
  const auto first = out_.size();
  const bool any =
      reports_.Visit(data, [&](std::string_view, std::string_view label, auto value, std::string_view unit) {
        if (out_.size() > first) out_ += ", ";
        out_ += label;
        out_ += ' ';
        AppendValue(out_, value);
        if (!unit.empty()) {
          out_ += ' ';
          out_ += unit;
        }
      });
  if (any) {
    out_ += '\n';
  } else {
    out_.resize(start);
  }
  return any;
}

bool TextSink::WriteRawEpoch(int week, double seconds, const std::vector<std::string>& satellites) {
  out_ += "raw epoch: week " + std::to_string(week) + ' ';
  AppendPadded(out_, seconds, 3, 0);
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
