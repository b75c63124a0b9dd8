#include "host/run/nearest.h"

#include <algorithm>
#include <cctype>
#include <numeric>

namespace host {

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

bool IsSameName(std::string_view one, std::string_view other) {
  return std::equal(one.begin(), one.end(), other.begin(), other.end(),
                    [](char a, char b) { return Lower(a) == Lower(b); });
}

std::string DidYouMean(std::string_view word, const std::vector<std::string>& names) {
  // A third of the word may be wrong; what is further off is another word.
  std::size_t nearest = word.size() / 3 + 1;
  std::string name;
  for (const std::string& candidate : names) {
    const std::size_t distance = Distance(word, candidate);
    if (distance >= nearest && !(name.empty() && distance == nearest)) continue;
    nearest = distance;
    name = candidate;
  }
  return name.empty() ? "" : " (did you mean \"" + name + "\"?)";
}

}  // namespace host
