#include "host/exports/markup.h"

#include "gpsengine/platform/cstring.h"

namespace host {

void AppendMarkup(std::string& out, std::string_view text) {
  for (const char c : CString::FromUtf8(text).ToUtf8()) {
    switch (c) {
      case '&':
        out += "&amp;";
        break;
      case '<':
        out += "&lt;";
        break;
      case '>':
        out += "&gt;";
        break;
      case '"':
        out += "&quot;";
        break;
      default:
        static_cast<unsigned char>(c) < 0x20 || c == 0x7F ? out += "\xEF\xBF\xBD" : out += c;
    }
  }
}

}  // namespace host
