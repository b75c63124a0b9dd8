#include "simulator/obey.h"

#include <algorithm>
#include <charconv>

#include "simulator/nmea.h"

namespace simulator {
namespace {

template <class T>
std::optional<T> Read(std::string_view text, auto... base) {
  T value{};
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, base...);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return value;
}

char Upper(char c) {
  return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

}  // namespace

Fields Fields::OfSentence(std::string_view line) {
  Fields fields;
  if (const auto star = line.find('*'); star != line.npos) {
    const auto told = Read<unsigned>(line.substr(star + 1), 16);
    line = line.substr(0, star);
    fields.checksum_ = told == Xor(line.substr(1)) ? Checksum::kGood : Checksum::kBad;
  }
  for (;;) {
    const auto comma = line.find(',');
    fields.fields_.push_back(line.substr(0, comma));
    if (comma == line.npos) return fields;
    line.remove_prefix(comma + 1);
  }
}

Fields Fields::OfWords(std::string_view line) {
  Fields fields;
  for (;;) {
    line.remove_prefix(std::min(line.find_first_not_of(' '), line.size()));
    if (line.empty()) return fields;
    fields.fields_.push_back(line.substr(0, line.find(' ')));
    line.remove_prefix(fields.fields_.back().size());
  }
}

std::optional<double> Number(std::string_view text) {
  return Read<double>(text);
}

std::optional<int> Whole(std::string_view text, int low, int high) {
  const auto value = Read<int>(text);
  return value && *value >= low && *value <= high ? value : std::nullopt;
}

std::optional<bool> OnOff(std::string_view text) {
  if (text == "ON") return true;
  if (text == "OFF") return false;
  return std::nullopt;
}

bool SameWord(std::string_view a, std::string_view b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [](char x, char y) { return Upper(x) == Upper(y); });
}

}  // namespace simulator
