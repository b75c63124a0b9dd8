#pragma once

#include <string>
#include <string_view>

namespace host {

/// Appends text of any bytes so that XML and HTML may hold it, between tags or as an attribute in double
/// quotes: markup is escaped; control characters, and what is no UTF-8, become U+FFFD.
void AppendMarkup(std::string& out, std::string_view text);

}  // namespace host
