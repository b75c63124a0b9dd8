#include "host/server/listener.h"

#include <arpa/inet.h>
#include <netdb.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <cerrno>
#include <cstring>
#include <memory>

#include "host/run/failure.h"
#include "host/run/url.h"

namespace host {

namespace {

struct FreeAddresses {
  void operator()(addrinfo* info) const { freeaddrinfo(info); }
};

/// Without asking a name server: a server's own address is a number.
std::unique_ptr<addrinfo, FreeAddresses> Resolve(const std::string& address, int port) {
  addrinfo hints{};
  hints.ai_flags = AI_NUMERICHOST | AI_NUMERICSERV | AI_PASSIVE;
  hints.ai_socktype = SOCK_STREAM;
  addrinfo* found = nullptr;
  if (getaddrinfo(address.c_str(), std::to_string(port).c_str(), &hints, &found) != 0) {
    throw Failure(ExitCode::usage,
                  "--listen takes an address such as 127.0.0.1, 0.0.0.0 or ::1, and not " + address);
  }
  return std::unique_ptr<addrinfo, FreeAddresses>(found);
}

std::string NameOf(const sockaddr_storage& address) {
  char host[INET6_ADDRSTRLEN] = "?", port[8] = "?";
  getnameinfo(reinterpret_cast<const sockaddr*>(&address), sizeof address, host, sizeof host, port,
              sizeof port, NI_NUMERICHOST | NI_NUMERICSERV);
  return HostAndPort(host, std::atoi(port));
}

}  // namespace

Listener::Listener(const std::string& address, int port, const std::string& option) {
  const auto info = Resolve(address, port);
  descriptor_ =
      UniqueDescriptor(socket(info->ai_family, info->ai_socktype | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
  const int yes = 1;
  setsockopt(Descriptor(), SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
  if (!descriptor_ || bind(Descriptor(), info->ai_addr, info->ai_addrlen) != 0 ||
      listen(Descriptor(), kBacklog) != 0) {
    const int reason = errno;
    throw Failure(ExitCode::failed,
                  "cannot listen on " + HostAndPort(address, port) + ": " + std::strerror(reason) +
                      (reason == EADDRINUSE ? "; " + option + " chooses another port" : ""));
  }
  sockaddr_storage bound{};
  socklen_t length = sizeof bound;
  getsockname(Descriptor(), reinterpret_cast<sockaddr*>(&bound), &length);
  // The port stands at the same place for both families.
  port_ = ntohs(reinterpret_cast<const sockaddr_in&>(bound).sin_port);
}

UniqueDescriptor Listener::Accept(std::string& peer) const {
  sockaddr_storage address{};
  socklen_t length = sizeof address;
  UniqueDescriptor client(
      accept4(Descriptor(), reinterpret_cast<sockaddr*>(&address), &length, SOCK_CLOEXEC | SOCK_NONBLOCK));
  if (client) peer = NameOf(address);
  return client;
}

bool IsLoopback(const std::string& address) {
  const auto info = Resolve(address, 0);
  if (info->ai_family == AF_INET6) {
    return IN6_IS_ADDR_LOOPBACK(&reinterpret_cast<const sockaddr_in6*>(info->ai_addr)->sin6_addr);
  }
  const auto number = ntohl(reinterpret_cast<const sockaddr_in*>(info->ai_addr)->sin_addr.s_addr);
  return number >> 24 == IN_LOOPBACKNET;
}

}  // namespace host
