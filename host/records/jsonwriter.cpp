#include "host/records/jsonwriter.h"

#include <cstdint>
#include <cstdlib>

#include "gpsengine/platform/cstring.h"

namespace host {

namespace {

constexpr std::array<std::int64_t, 10> kPowersOfTen = {1,      10,      100,      1000,      10000,
                                                       100000, 1000000, 10000000, 100000000, 1000000000};
// Up to here a double's whole numbers are exact.
constexpr double kExact = 9007199254740992.0;

void AppendEscaped(std::string& out, unsigned char byte) {
  constexpr char kHex[] = "0123456789abcdef";
  if (byte == '"' || byte == '\\') {
    out += {'\\', static_cast<char>(byte)};
  } else if (byte == '\n') {
    out += "\\n";
  } else if (byte == '\r') {
    out += "\\r";
  } else if (byte == '\t') {
    out += "\\t";
  } else if (byte < 0x20 || byte == 0x7F) {
    out += "\\u00";
    out += {kHex[byte >> 4], kHex[byte & 15]};
  } else if (byte < 0x80) {
    out += static_cast<char>(byte);
  } else {
    out += {static_cast<char>(0xC0 | byte >> 6), static_cast<char>(0x80 | (byte & 0x3F))};
  }
}

}  // namespace

void AppendFixed(std::string& out, double value, int decimals) {
  const auto power = kPowersOfTen.at(static_cast<std::size_t>(decimals));
  const double scaled = std::round(value * static_cast<double>(power));
  if (std::fabs(scaled) >= kExact) {  // the general way, which takes several times as long
    std::array<char, 350> digits;
    const auto end = digits.data() + digits.size();
    out.append(digits.data(),
               std::to_chars(digits.data(), end, value, std::chars_format::fixed, decimals).ptr);
    return;
  }
  const auto whole = static_cast<std::int64_t>(scaled);
  if (whole < 0) out += '-';
  const auto parts = std::div(std::abs(whole), power);
  std::array<char, 24> digits;
  const auto end = digits.data() + digits.size();
  out.append(digits.data(), std::to_chars(digits.data(), end, parts.quot).ptr);
  if (decimals == 0) return;
  // A leading 1 keeps the zeros that stand ahead of the decimals.
  char* last = std::to_chars(digits.data(), end, parts.rem + power).ptr;
  digits[0] = '.';
  out.append(digits.data(), last);
}

void JsonWriter::Fixed(double value, int decimals) {
  Separate();
  if (std::isfinite(value)) {
    AppendFixed(out_, value, decimals);
  } else {
    out_ += "null";
  }
}

void JsonWriter::Text(std::string_view bytes) {
  Separate();
  out_ += '"';
  for (const char c : bytes) AppendEscaped(out_, static_cast<unsigned char>(c));
  out_ += '"';
}

void JsonWriter::Utf8(std::string_view text) {
  Separate();
  out_ += '"';
  for (const char c : CString::FromUtf8(text).ToUtf8()) {
    if (static_cast<unsigned char>(c) < 0x80) {
      AppendEscaped(out_, static_cast<unsigned char>(c));
    } else {
      out_ += c;
    }
  }
  out_ += '"';
}

}  // namespace host
