#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace host {

/// Whether two names are one in any case of their letters.
bool IsSameName(std::string_view one, std::string_view other);

/// " (did you mean "--format"?)" for a word that is nearly one of these, else nothing.
std::string DidYouMean(std::string_view word, const std::vector<std::string>& names);

}  // namespace host
