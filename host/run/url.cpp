#include "host/run/url.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string_view>

#include "gpsengine/face/words.h"
#include "host/run/face.h"

namespace host {

namespace {

constexpr std::string_view kMark = "://";
constexpr int kLastPort = 65535;

/// Takes the text up to a character and the character itself, if it is there.
std::string_view TakeUpTo(std::string_view& text, std::size_t at) {
  if (at == text.npos) return {};
  const std::string_view head = text.substr(0, at);
  text.remove_prefix(at + 1);
  return head;
}

bool IsHost(std::string_view host) {
  return std::all_of(host.begin(), host.end(), [](char c) {
    return c > ' ' && c < 0x7F && std::strchr("/@?#[]\"<>\\^`{|}", c) == nullptr;
  });
}

void ReadPort(std::string_view text, Url& url) {
  const auto number = ReadNumber<int>(text);
  const bool is_port = number && *number >= 1 && *number <= kLastPort && text.front() != '+';
  if (is_port) url.port = *number;
  if (!is_port && !text.empty()) url.wrong = "the port is no number from 1 to 65535";
}

void ReadHost(std::string_view text, Url& url) {
  const bool has_brackets = text.starts_with('[');
  const auto end = has_brackets ? text.find(']') : std::min(text.rfind(':'), text.size());
  const std::size_t bracket = has_brackets ? 1 : 0;
  url.host = text.substr(bracket, end - bracket);
  const bool is_number_6 = url.host.find(':') != url.host.npos;
  const std::string_view rest = end == text.npos ? "" : text.substr(end + bracket);
  if (end == text.npos || has_brackets != is_number_6 || !(rest.empty() || rest.starts_with(':'))) {
    url.wrong = "a number of IPv6 stands in brackets";
  } else if (!IsHost(url.host)) {
    url.wrong = "the host is no name";
  } else if (!rest.empty()) {
    ReadPort(rest.substr(1), url);
  }
}

}  // namespace

Url ReadUrl(const std::string& text) {
  Url url;
  const auto mark = std::min(text.find(kMark), text.size());
  url.scheme = text.substr(0, mark);
  std::string_view rest = std::string_view(text).substr(std::min(mark + kMark.size(), text.size()));
  const auto slash = std::min(rest.find('/'), rest.size());
  std::string_view place = rest.substr(0, slash);
  url.path = rest.substr(std::min(slash + 1, rest.size()));
  // A password may have a slash in it. A user's name may have an @.
  const bool is_cut = place.find(':') != place.npos && url.path.find('@') != url.path.npos;
  url.user = TakeUpTo(place, place.rfind('@'));
  url.has_password = is_cut || url.user.find(':') != url.user.npos;
  if (url.has_password) {
    url.wrong = "it holds a password";
  } else {
    ReadHost(place, url);
  }
  return url;
}

std::string HostAndPort(const std::string& host, int port) {
  return (host.find(':') == host.npos ? host : '[' + host + ']') + ':' + std::to_string(port);
}

std::string ReadPassword(const std::string& file, const char* variable) {
  if (file.empty()) {
    const char* const password = std::getenv(variable);
    return password == nullptr ? "" : password;
  }
  errno = 0;
  std::ifstream stream(file);
  std::string password;
  std::getline(stream, password);
  if (password.ends_with('\r')) password.pop_back();
  if (!password.empty()) return password;
  throw Failure(ExitCode::failed, "no password in " + file + ": " +
                                      (errno != 0 ? std::strerror(errno) : "its first line is empty"));
}

Failure PasswordInAddress(const std::string& option, const char* variable) {
  return Failure(
      ExitCode::usage,
      option +
          " takes no password, since every user of this machine can read a command line: leave it out of "
          "the address, and set " +
          variable + " or name a file by " + option + "-password-file");
}

}  // namespace host
