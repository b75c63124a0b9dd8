#include "host/records/jsonwriter.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>

#include "gpsengine/platform/cstring.h"

namespace host {

namespace {

constexpr std::array<std::int64_t, 10> kPowersOfTen = {1,      10,      100,      1000,      10000,
                                                       100000, 1000000, 10000000, 100000000, 1000000000};
// Up to here a double's whole numbers are exact.
constexpr double kExact = 9007199254740992.0;

// Characters that stand in a text as they are.
constexpr bool IsPlain(char c) {
  return c >= 0x20 && c < 0x7F && c != '"' && c != '\\';
}

// Whether a number has exactly that many decimals.
bool Scale(double value, int decimals, std::int64_t& scaled) {
  const double rounded =
      std::round(value * static_cast<double>(kPowersOfTen.at(static_cast<std::size_t>(decimals))));
  if (!(std::fabs(rounded) < kExact)) return false;
  scaled = static_cast<std::int64_t>(rounded);
  return true;
}

// The end of the number that `scaled` is, with its last digits as decimals.
char* WriteScaled(char* to, std::int64_t scaled, int decimals) {
  if (scaled < 0) *to++ = '-';
  const auto power = kPowersOfTen[static_cast<std::size_t>(decimals)];
  const auto parts = std::div(std::abs(scaled), power);
  to = WriteWhole(to, parts.quot);
  if (decimals == 0) return to;
  // A leading 1 keeps the zeros that stand before the decimals.
  char* const last = WriteWhole(to, parts.rem + power);
  *to = '.';
  return last;
}

}  // namespace

void AppendFixed(std::string& out, double value, int decimals) {
  std::array<char, 350> digits;
  std::int64_t scaled = 0;
  // The general way takes several times as long.
  char* const end = Scale(value, decimals, scaled)
                        ? WriteScaled(digits.data(), scaled, decimals)
                        : std::to_chars(digits.data(), digits.data() + digits.size(), value,
                                        std::chars_format::fixed, decimals)
                              .ptr;
  out.append(digits.data(), static_cast<std::size_t>(end - digits.data()));
}

void JsonWriter::Fixed(double value, int decimals) {
  if (!std::isfinite(value)) return Simple("null");
  Separate();
  std::int64_t scaled = 0;
  if (Scale(value, decimals, scaled)) {
    PutUpTo(WriteScaled(Room(2 * kLongestNumber), scaled, decimals));
  } else {
    Flush();
    AppendFixed(out_, value, decimals);
  }
  Pass();
}

void JsonWriter::PutEscaped(unsigned char byte) {
  constexpr char kHex[] = "0123456789abcdef";
  if (IsPlain(static_cast<char>(byte))) {
    Put(static_cast<char>(byte));
  } else if (byte == '"' || byte == '\\') {
    Put('\\');
    Put(static_cast<char>(byte));
  } else if (byte == '\n') {
    Put("\\n");
  } else if (byte == '\r') {
    Put("\\r");
  } else if (byte == '\t') {
    Put("\\t");
  } else if (byte < 0x80) {
    Put("\\u00");
    Put(kHex[byte >> 4]);
    Put(kHex[byte & 15]);
  } else {
    Put(static_cast<char>(0xC0 | byte >> 6));
    Put(static_cast<char>(0x80 | (byte & 0x3F)));
  }
}

void JsonWriter::Text(std::string_view bytes) {
  Separate();
  Put('"');
  while (!bytes.empty()) {
    const auto* const end = std::find_if_not(bytes.begin(), bytes.end(), IsPlain);
    Put(std::string_view(bytes.begin(), end));
    bytes = {end, bytes.end()};
    if (bytes.empty()) break;
    PutEscaped(static_cast<unsigned char>(bytes.front()));
    bytes.remove_prefix(1);
  }
  Put('"');
  Pass();
}

void JsonWriter::Utf8(std::string_view text) {
  Separate();
  Put('"');
  for (const char c : CString::FromUtf8(text).ToUtf8()) {
    if (static_cast<unsigned char>(c) < 0x80) {
      PutEscaped(static_cast<unsigned char>(c));
    } else {
      Put(c);
    }
  }
  Put('"');
  Pass();
}

}  // namespace host
