#pragma once

#include <charconv>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/run/failure.h"

namespace host {

/// "GGA, RMC".
std::string Join(const std::vector<std::string>& words, std::string_view separator = ", ");

/// As printf does it.
[[gnu::format(printf, 1, 2)]] std::string Print(const char* format, ...);

/// A text with blanks behind it, up to a width in bytes.
std::string Padded(std::string_view text, std::size_t width);

/// Hands over each line of a text, with its line end, and empties the text, which ends with one.
template <class Take>
void TakeLines(std::string& text, Take&& take) {
  std::string_view rest = text;
  while (!rest.empty()) {
    const auto line = rest.substr(0, rest.find('\n') + 1);
    rest.remove_prefix(line.size());
    take(line);
  }
  text.clear();
}

/// The number that a word is, all of it; decimal, and none for a number that does not fit.
template <class T>
std::optional<T> ReadNumber(std::string_view word) {
  T value{};
  const char* const end = word.data() + word.size();
  const auto read = std::from_chars(word.data(), end, value);
  return read.ec == std::errc() && read.ptr == end ? std::optional(value) : std::nullopt;
}

/// Whether two names are one in any case of their letters.
bool IsSameName(std::string_view one, std::string_view other);

/// " (did you mean "--format"?)" for a word that is nearly one of these, else nothing.
std::string DidYouMean(std::string_view word, const std::vector<std::string>& names);

/// The failure of a name that is none of those of its kind, which it lists. `quote` stands around each.
Failure NoSuch(const std::string& kind, const std::string& name, const std::vector<std::string>& names,
               const std::string& quote = "");

}  // namespace host
