#pragma once

#include <string_view>

#include "gpsengine/link/serialport.h"

#pragma GCC visibility push(default)

/// One line of a command set and the wait after it. An invalid line does not compile.
struct CGPSCommand {
  /// Whether a sequence may stop after this line.
  enum class Then {
    mayStop,  ///< The receiver is in a usable state.
    goOn,     ///< It is silent, restarting or in another protocol; the next line brings it back.
  };

  /// All fields. An empty line makes it a pause.
  consteval CGPSCommand(const char* pszCommand, DWORD nWaitAfter, Then next = Then::mayStop)
      : pszLine(pszCommand), nWait(nWaitAfter), then(next) {
    if (*pszCommand != '\0' && !IsLine(pszCommand))
      throw "not a command line: its end, its length or its checksum is wrong";
  }

  /// Whether `line` is fit to be sent: one line with its line end, no longer than the port takes, with the
  /// right checksum if it carries one.
  static constexpr bool IsLine(std::string_view line) {
    if (line.size() > CSerialPort::kMaxText || !line.ends_with("\r\n")) return false;
    line.remove_suffix(2);
    unsigned sum = 0;
    for (std::size_t i = 0; i < line.size(); ++i) {
      if (line[i] < ' ' || line[i] > '~') return false;
      if (line[i] == '*') {
        constexpr std::string_view kHex = "0123456789ABCDEF";
        return line.size() == i + 3 && line[i + 1] == kHex[sum >> 4] && line[i + 2] == kHex[sum & 15];
      }
      if (i > 0) sum ^= static_cast<unsigned>(line[i]);
    }
    return true;
  }

  const char* pszLine;  ///< With its line end, or empty.
  DWORD nWait;          ///< Milliseconds.
  Then then;            ///< What a stop does after this line.
};

#pragma GCC visibility pop
