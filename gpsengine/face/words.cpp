#include "gpsengine/face/words.h"

#include <algorithm>
#include <cctype>
#include <cstdarg>
#include <numeric>

#include "gpsengine/platform/system.h"

namespace gps {

namespace {

char Lower(char c) {
  return static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
}

/// How many characters have to be put in, taken out or replaced to make one word of the other.
std::size_t Distance(std::string_view one, std::string_view other) {
  std::vector<std::size_t> row(other.size() + 1);
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (std::size_t i = 0; i < one.size(); ++i) {
    std::size_t corner = row[0]++;
    for (std::size_t j = 0; j < other.size(); ++j) {
      const std::size_t replaced = corner + (Lower(one[i]) == Lower(other[j]) ? 0 : 1);
      corner = row[j + 1];
      row[j + 1] = std::min({replaced, row[j] + 1, corner + 1});
    }
  }
  return row.back();
}

}  // namespace

std::string Join(const std::vector<std::string>& words, std::string_view separator) {
  std::string text;
  for (const std::string& word : words) {
    if (&word != &words.front()) text += separator;
    text += word;
  }
  return text;
}

std::string Print(const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  std::string text = PrintPlain(format, arguments);
  va_end(arguments);
  return text;
}

std::string Padded(std::string_view text, std::size_t width) {
  std::string padded(text);
  if (padded.size() < width) padded.append(width - padded.size(), ' ');
  return padded;
}

bool IsSameName(std::string_view one, std::string_view other) {
  return std::equal(one.begin(), one.end(), other.begin(), other.end(),
                    [](char a, char b) { return Lower(a) == Lower(b); });
}

std::string DidYouMean(std::string_view word, const std::vector<std::string>& names) {
  // A third of the letters may be wrong; what is further off is another word.
  const std::size_t letters = word.size() - std::min(word.find_first_not_of('-'), word.size());
  std::size_t nearest = std::max<std::size_t>(letters / 3, 1) + 1;
  std::string name;
  for (const std::string& candidate : names) {
    const bool is_beginning = letters >= 3 && IsSameName(candidate.substr(0, word.size()), word);
    const std::size_t distance = is_beginning ? 1 : Distance(word, candidate);
    if (distance >= nearest) continue;
    nearest = distance;
    name = candidate;
  }
  return name.empty() ? "" : " (did you mean \"" + name + "\"?)";
}

}  // namespace gps
