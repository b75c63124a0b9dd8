#pragma once

#include <string>

#include "host/run/failure.h"

namespace host {

/// An address as users write it: SCHEME://[USER@]HOST[:PORT][/PATH].
struct Url {
  std::string scheme;
  std::string user;   ///< Empty for none.
  std::string host;   ///< A name or a number, that of IPv6 without its brackets; may be empty.
  int port = 0;       ///< From 1 to 65535; 0 for none.
  std::string path;   ///< What follows the first "/".
  std::string wrong;  ///< What is wrong with it, in words; if anything is, the rest is not to be used.
  bool has_password = false;  ///< It holds a password, which is wrong.
};

/// Reads an address. What is wrong is told in `wrong`, which repeats nothing of a password.
Url ReadUrl(const std::string& text);
/// "gps.example:3001", "[::1]:3001".
std::string HostAndPort(const std::string& host, int port);

/// A password, which never stands on a command line: the first line of the file, or without a file what the
/// variable of the environment holds, which may be nothing. Throws a Failure if the file has none.
std::string ReadPassword(const std::string& file, const char* variable);
/// What to tell who has put one into the address of an option all the same.
Failure PasswordInAddress(const std::string& option, const char* variable);

}  // namespace host
