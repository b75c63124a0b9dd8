#pragma once

#include <gtest/gtest.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>

#include <stdexcept>
#include <string>
#include <string_view>

#include "host/server/listener.h"

/// A server on this machine, with one connection at a time.
class TcpPeer {
 public:
  /// Port 0 is any that is free.
  explicit TcpPeer(int nPort = 0) : m_Listener("127.0.0.1", nPort, "") {
    listen(m_Listener.Descriptor(), 0);  // a place for one that nobody has accepted yet, and no more
  }

  int Port() const { return m_Listener.Port(); }
  std::string Host() const { return "127.0.0.1:" + std::to_string(Port()); }

  /// Waits for the next client, which takes the place of any other.
  void Accept() {
    if (!Wait(m_Listener.Descriptor())) throw std::runtime_error("nobody connects");
    std::string name;
    m_Client = m_Listener.Accept(name);
  }
  void Send(std::string_view bytes) const { send(m_Client.Get(), bytes.data(), bytes.size(), MSG_NOSIGNAL); }
  /// Waits until the client has sent that much, or has gone; takes no more than `most`.
  std::string Receive(std::size_t least, std::size_t most = ~std::size_t{0}) const {
    std::string bytes;
    char piece[4096];
    while (bytes.size() < least && Wait(m_Client.Get())) {
      const ssize_t count = recv(m_Client.Get(), piece, std::min(sizeof piece, most - bytes.size()), 0);
      if (count <= 0) break;
      bytes.append(piece, static_cast<std::size_t>(count));
    }
    return bytes;
  }
  void HangUp() { m_Client = host::UniqueDescriptor(); }

 private:
  static bool Wait(int nDescriptor) {
    pollfd source{nDescriptor, POLLIN, 0};
    return poll(&source, 1, 5000) > 0;
  }

  const host::Listener m_Listener;
  host::UniqueDescriptor m_Client;
};

/// A socket connected to a port of this machine.
inline host::UniqueDescriptor ConnectTo(int nPort, int nType = SOCK_STREAM, int nBuffer = 0) {
  host::UniqueDescriptor end(socket(AF_INET, nType | SOCK_CLOEXEC, 0));
  if (nBuffer > 0) setsockopt(end.Get(), SOL_SOCKET, SO_RCVBUF, &nBuffer, sizeof nBuffer);
  sockaddr_in address{AF_INET, htons(static_cast<std::uint16_t>(nPort)), {htonl(INADDR_LOOPBACK)}, {}};
  EXPECT_EQ(connect(end.Get(), reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
  return end;
}

/// A port that nobody listens on.
inline int FreePort() {
  return TcpPeer().Port();
}
