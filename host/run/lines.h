#pragma once

#include <string>
#include <string_view>

namespace host {

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

}  // namespace host
