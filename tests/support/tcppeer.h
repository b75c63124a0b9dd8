#pragma once

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

/// A server on this machine, with one connection at a time.
class TcpPeer {
 public:
  /// Port 0 is any that is free.
  explicit TcpPeer(int nPort = 0) : m_nListener(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    const int yes = 1;
    setsockopt(m_nListener, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(static_cast<std::uint16_t>(nPort));
    socklen_t length = sizeof address;
    if (bind(m_nListener, reinterpret_cast<sockaddr*>(&address), length) != 0 || listen(m_nListener, 0) != 0)
      throw std::runtime_error("no server");
    getsockname(m_nListener, reinterpret_cast<sockaddr*>(&address), &length);
    m_nPort = ntohs(address.sin_port);
  }
  ~TcpPeer() {
    HangUp();
    close(m_nListener);
  }
  TcpPeer(const TcpPeer&) = delete;
  TcpPeer& operator=(const TcpPeer&) = delete;

  int Port() const { return m_nPort; }
  std::string Host() const { return "127.0.0.1:" + std::to_string(m_nPort); }

  /// Waits for the next client.
  void Accept() {
    HangUp();
    pollfd waiting{m_nListener, POLLIN, 0};
    if (poll(&waiting, 1, 5000) <= 0) throw std::runtime_error("nobody connects");
    m_nClient = accept4(m_nListener, nullptr, nullptr, SOCK_CLOEXEC);
  }
  void Send(std::string_view bytes) const { send(m_nClient, bytes.data(), bytes.size(), MSG_NOSIGNAL); }
  /// Waits until the client has sent that much, or has gone.
  std::string Receive(std::size_t least) const {
    std::string bytes;
    char piece[4096];
    pollfd source{m_nClient, POLLIN, 0};
    while (bytes.size() < least && poll(&source, 1, 5000) > 0) {
      const ssize_t count = recv(m_nClient, piece, sizeof piece, 0);
      if (count <= 0) break;
      bytes.append(piece, static_cast<std::size_t>(count));
    }
    return bytes;
  }
  void HangUp() {
    if (m_nClient >= 0) close(std::exchange(m_nClient, -1));
  }

 private:
  const int m_nListener;
  int m_nPort = 0;
  int m_nClient = -1;
};

/// A port that nobody listens on.
inline int FreePort() {
  return TcpPeer().Port();
}
