#pragma once

#include <charconv>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#pragma GCC visibility push(default)

namespace gps {

/// "GGA, RMC".
std::string Join(const std::vector<std::string>& words, std::string_view separator = ", ");

/// As printf does it in the C locale.
[[gnu::format(printf, 1, 2)]] std::string Print(const char* format, ...);

/// A text with blanks after it, up to a width in bytes.
std::string Padded(std::string_view text, std::size_t width);

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

}  // namespace gps

#pragma GCC visibility pop
