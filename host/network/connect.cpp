#include "host/network/connect.h"

#include <fcntl.h>
#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "gpsengine/face/words.h"
#include "host/run/deadline.h"
#include "host/run/face.h"
#include "host/run/failure.h"
#include "host/run/url.h"

namespace host {

namespace {

constexpr int kConnectTime = 5;  // seconds

// A peer that has gone without a word is noticed after about 40 s.
constexpr int kIdle = 20, kProbeInterval = 5, kProbes = 4;
constexpr unsigned kUnacknowledged = 40'000;

struct FreeFound {
  void operator()(addrinfo* info) const { freeaddrinfo(info); }
};
using Found = std::unique_ptr<addrinfo, FreeFound>;

/// What the system says, to stand within a sentence.
std::string ReasonOf(int error) {
  if (error == ETIMEDOUT) return "no answer within " + std::to_string(kConnectTime) + " s";
  std::string text = std::strerror(error);
  text[0] = static_cast<char>(std::tolower(static_cast<unsigned char>(text[0])));
  return text;
}

Found LookUp(const Address& address, int type) {
  addrinfo hints{};
  hints.ai_flags = AI_NUMERICSERV | (type == SOCK_DGRAM ? AI_PASSIVE : 0);
  hints.ai_socktype = type;
  addrinfo* found = nullptr;
  const int error = getaddrinfo(address.host.empty() ? nullptr : address.host.c_str(),
                                std::to_string(address.port).c_str(), &hints, &found);
  if (error == 0) return Found(found);
  throw Failure(ExitCode::port_closed, "cannot look up " + address.host + ": " +
                                           (error == EAI_SYSTEM ? ReasonOf(errno) : gai_strerror(error)));
}

std::string NumberOf(const addrinfo& info) {
  char host[NI_MAXHOST] = "?";
  getnameinfo(info.ai_addr, info.ai_addrlen, host, sizeof host, nullptr, 0, NI_NUMERICHOST);
  return host;
}

void Set(const UniqueDescriptor& socket, int level, int option, int value) {
  setsockopt(socket.Get(), level, option, &value, sizeof value);
}

void KeepAlive(const UniqueDescriptor& socket) {
  Set(socket, SOL_SOCKET, SO_KEEPALIVE, 1);
  Set(socket, IPPROTO_TCP, TCP_KEEPIDLE, kIdle);
  Set(socket, IPPROTO_TCP, TCP_KEEPINTVL, kProbeInterval);
  Set(socket, IPPROTO_TCP, TCP_KEEPCNT, kProbes);
  Set(socket, IPPROTO_TCP, TCP_USER_TIMEOUT, kUnacknowledged);
  Set(socket, IPPROTO_TCP, TCP_NODELAY, 1);
}

/// 0, or why there is no connection.
int ConnectTo(const addrinfo& info, const UniqueDescriptor& socket, const Event& given_up) {
  KeepAlive(socket);
  if (connect(socket.Get(), info.ai_addr, info.ai_addrlen) == 0) return 0;
  if (errno != EINPROGRESS) return errno;
  std::vector<pollfd> waits = {{socket.Get(), POLLOUT, 0}, {given_up.Descriptor(), POLLIN, 0}};
  WaitFor(waits, Deadline::Clock::now() + std::chrono::seconds(kConnectTime));
  if (waits[1].revents != 0) return ECANCELED;
  if (waits[0].revents == 0) return ETIMEDOUT;
  int error = 0;
  socklen_t length = sizeof error;
  getsockopt(socket.Get(), SOL_SOCKET, SO_ERROR, &error, &length);
  return error;
}

/// 0, or why nothing can be received there. IPv6 has IPv4 with it.
int ListenAt(const addrinfo& info, const UniqueDescriptor& socket) {
  if (info.ai_family == AF_INET6) Set(socket, IPPROTO_IPV6, IPV6_V6ONLY, 0);
  return bind(socket.Get(), info.ai_addr, info.ai_addrlen) == 0 ? 0 : errno;
}

/// One reason if it is the same for all.
std::string Tell(const std::string& host, const std::vector<std::pair<std::string, std::string>>& tried) {
  std::vector<std::string> numbers, each;
  bool same = true;
  for (const auto& [number, reason] : tried) {
    numbers.push_back(number);
    each.push_back(number + ": " + reason);
    same = same && reason == tried.front().second;
  }
  if (numbers.front() == host) return tried.front().second;
  return same ? tried.front().second + " (tried " + Join(numbers, " and ") + ')' : Join(each);
}

UniqueDescriptor OpenSocket(const Address& address, const Event& given_up) {
  const bool listens = address.scheme == Address::Scheme::udp;
  const Found found = LookUp(address, listens ? SOCK_DGRAM : SOCK_STREAM);
  std::vector<const addrinfo*> targets;
  for (const addrinfo* info = found.get(); info != nullptr; info = info->ai_next) targets.push_back(info);
  if (address.host.empty()) {
    std::stable_partition(targets.begin(), targets.end(),
                          [](const addrinfo* info) { return info->ai_family == AF_INET6; });
  }
  std::vector<std::pair<std::string, std::string>> tried;
  for (const addrinfo* info : targets) {
    UniqueDescriptor socket(
        ::socket(info->ai_family, info->ai_socktype | SOCK_CLOEXEC | SOCK_NONBLOCK, info->ai_protocol));
    int error = socket ? 0 : errno;
    if (error == 0) error = listens ? ListenAt(*info, socket) : ConnectTo(*info, socket, given_up);
    if (error == 0) return socket;
    tried.emplace_back(NumberOf(*info), ReasonOf(error));
  }
  throw Failure(ExitCode::port_closed, std::string(listens ? "cannot listen on " : "cannot connect to ") +
                                           HostAndPort(address.host, address.port) + ": " +
                                           Tell(address.host, tried));
}

}  // namespace

UniqueDescriptor Connect(const Address& address, const Event& given_up) {
  if (address.scheme != Address::Scheme::input) return OpenSocket(address, given_up);
  UniqueDescriptor input(fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 0));
  if (!input)
    throw Failure(ExitCode::port_closed, std::string("cannot read standard input: ") + ReasonOf(errno));
  return input;
}

}  // namespace host
