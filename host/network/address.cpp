#include "host/network/address.h"

#include <algorithm>
#include <iterator>
#include <string_view>

#include "host/run/url.h"

namespace host {

namespace {

constexpr struct {
  std::string_view name;
  Address::Scheme scheme;
  int port;  ///< Without one; 0 if there has to be one.
  bool needs_host;
  const char* example;
} kSchemes[] = {
    {"tcp", Address::Scheme::tcp, 0, true, "tcp://gps.example:3001"},
    {"rfc2217", Address::Scheme::rfc2217, 0, true, "rfc2217://gps.example:3001"},
    {"udp", Address::Scheme::udp, 0, false, "udp://:10110"},
    {"gpsd", Address::Scheme::gpsd, 2947, true, "gpsd://gps.example"},
};

constexpr std::string_view kMark = "://";

/// "gps.example:3001", which somebody may give for a device.
bool IsBareAddress(const std::string& name) {
  const auto colon = name.rfind(':');
  return name.find('/') == name.npos && colon != name.npos && colon > 0 && ReadUrl("tcp://" + name).port > 0;
}

}  // namespace

bool IsAddress(const std::string& name) {
  return name == "-" || name.find(kMark) != name.npos || IsBareAddress(name);
}

Address ReadAddress(const std::string& name, const std::string& option) {
  const auto wrong = [&](const std::string& what, const std::string& example) {
    return Failure(ExitCode::usage, option + name + ": " + what + "; an address looks like " + example);
  };
  if (name == "-") return {};
  const auto mark = name.find(kMark);
  if (mark == name.npos) throw wrong("this is no device", "tcp://" + name);
  const auto* const scheme = std::find_if(std::begin(kSchemes), std::end(kSchemes),
                                          [&](const auto& row) { return row.name == name.substr(0, mark); });
  if (scheme == std::end(kSchemes)) {
    throw wrong("there is no \"" + name.substr(0, mark) + "\"",
                "tcp://HOST:PORT, rfc2217://HOST:PORT, udp://[HOST]:PORT, gpsd://HOST[:PORT] or - (standard "
                "input)");
  }
  const Url url = ReadUrl(name);
  if (!url.wrong.empty()) throw wrong(url.wrong, scheme->example);
  if (url.host.empty() && scheme->needs_host) throw wrong("the host is missing", scheme->example);
  if (!url.user.empty() || !url.path.empty()) throw wrong("it has no user and no path", scheme->example);
  const int port = url.port > 0 ? url.port : scheme->port;
  if (port == 0) throw wrong("the port is missing", scheme->example);
  return {scheme->scheme, url.host, port};
}

Failure OnlyListenedTo(const std::string& name) {
  return Failure(ExitCode::refused,
                 "nothing can be sent to " + name +
                     ", which is only listened to: command the receiver at its own port, or "
                     "by tcp:// or rfc2217://");
}

}  // namespace host
