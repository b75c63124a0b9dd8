#include "host/network/address.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <string_view>

#include "gpsengine/text/words.h"
#include "host/run/face.h"
#include "host/run/failure.h"

namespace host {

namespace {

constexpr struct {
  std::string_view name;
  Address::Scheme scheme;
  std::string_view port;  ///< Without one; empty if there has to be one.
  bool needs_host;
  const char* example;
} kSchemes[] = {
    {"tcp", Address::Scheme::tcp, "", true, "tcp://gps.example:3001"},
    {"rfc2217", Address::Scheme::rfc2217, "", true, "rfc2217://gps.example:3001"},
    {"udp", Address::Scheme::udp, "", false, "udp://:10110"},
    {"gpsd", Address::Scheme::gpsd, "2947", true, "gpsd://gps.example"},
};

constexpr std::string_view kMark = "://";

Failure Wrong(const std::string& name, const std::string& what, const std::string& example) {
  return Failure(ExitCode::usage, "--port " + name + ": " + what + "; an address looks like " + example);
}

bool IsPort(std::string_view text) {
  const auto number = ReadNumber<int>(text);
  return number && *number >= 1 && *number <= 65535 && text.front() != '+';
}

/// "gps.example:3001", which somebody may give for a device.
bool IsBareAddress(const std::string& name) {
  const auto colon = name.rfind(':');
  return name.find('/') == name.npos && colon != name.npos && colon > 0 && IsPort(name.substr(colon + 1));
}

/// Takes the host off the text; none if its brackets do not fit together.
std::optional<std::string> TakeHost(std::string_view& text) {
  std::size_t end = std::min(text.rfind(':'), text.size());
  const bool has_brackets = text.starts_with('[');
  if (has_brackets) end = text.find(']');
  if (end == text.npos) return std::nullopt;
  const std::string host(text.substr(has_brackets ? 1 : 0, end - (has_brackets ? 1 : 0)));
  text.remove_prefix(end + (has_brackets ? 1 : 0));
  if (has_brackets == (host.find(':') == host.npos)) return std::nullopt;
  return host;
}

}  // namespace

bool IsAddress(const std::string& name) {
  return name == "-" || name.find(kMark) != name.npos || IsBareAddress(name);
}

Address ReadAddress(const std::string& name) {
  if (name == "-") return {};
  const auto mark = name.find(kMark);
  if (mark == name.npos) throw Wrong(name, "this is no device", "tcp://" + name);
  const auto* const scheme = std::find_if(std::begin(kSchemes), std::end(kSchemes),
                                          [&](const auto& row) { return row.name == name.substr(0, mark); });
  if (scheme == std::end(kSchemes)) {
    throw Wrong(name, "there is no \"" + name.substr(0, mark) + "\"",
                "tcp://HOST:PORT, rfc2217://HOST:PORT, udp://[HOST]:PORT, gpsd://HOST[:PORT] or - (standard "
                "input)");
  }
  std::string_view rest = std::string_view(name).substr(mark + kMark.size());
  const auto host = TakeHost(rest);
  if (!host) throw Wrong(name, "a number of IPv6 stands in brackets", "tcp://[2001:db8::1]:3001");
  if (host->find_first_of(" /@?#[]") != host->npos) throw Wrong(name, "the host is no name", scheme->example);
  if (host->empty() && scheme->needs_host) throw Wrong(name, "the host is missing", scheme->example);
  Address address{scheme->scheme, *host, std::string(scheme->port)};
  if (!rest.empty()) address.port = rest.substr(1);
  if (address.port.empty()) throw Wrong(name, "the port is missing", scheme->example);
  if (!IsPort(address.port)) throw Wrong(name, "the port is no number from 1 to 65535", scheme->example);
  return address;
}

std::string HostAndPort(const std::string& host, const std::string& port) {
  return (host.find(':') == host.npos ? host : '[' + host + ']') + ':' + port;
}

}  // namespace host
