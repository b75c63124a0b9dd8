#pragma once

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>

#include <atomic>
#include <functional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <thread>

#include "host/run/descriptor.h"
#include "host/run/event.h"

/// A caster of corrections on a port of its own, which does with each connection, one after another, what the
/// test wants.
class Caster {
 public:
  /// A connection, whose calls end when the caster does.
  class Connection {
   public:
    Connection(int socket, const host::Event& stop) : m_Socket(socket), m_Stop(stop) {}

    /// What has come, waiting until that holds `part`, or nothing more comes.
    std::string ReceiveUntil(std::string_view part) const {
      std::string bytes;
      char piece[4096];
      while (bytes.find(part) == bytes.npos && Wait(POLLIN)) {
        const ssize_t count = recv(m_Socket.Get(), piece, sizeof piece, 0);
        if (count <= 0) break;
        bytes.append(piece, static_cast<std::size_t>(count));
      }
      return bytes;
    }
    /// False once the other side is gone.
    bool Send(std::string_view bytes) const {
      while (!bytes.empty() && Wait(POLLOUT)) {
        const ssize_t count = send(m_Socket.Get(), bytes.data(), bytes.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
        if (count <= 0) return false;
        bytes.remove_prefix(static_cast<std::size_t>(count));
      }
      return bytes.empty();
    }
    /// Until the other side has closed, or the end.
    void Hold() const { ReceiveUntil("no such word"); }

   private:
    bool Wait(short events) const {
      pollfd waits[] = {{m_Socket.Get(), events, 0}, {m_Stop.Descriptor(), POLLIN, 0}};
      return poll(waits, 2, -1) > 0 && waits[1].revents == 0;
    }

    const host::UniqueDescriptor m_Socket;
    const host::Event& m_Stop;
  };
  using Serve = std::function<void(const Connection&, int number)>;

  explicit Caster(Serve serve)
      : m_Serve(std::move(serve)), m_Listener(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    auto* const any = reinterpret_cast<sockaddr*>(&address);
    if (bind(m_Listener.Get(), any, size) != 0 || listen(m_Listener.Get(), 4) != 0 ||
        getsockname(m_Listener.Get(), any, &size) != 0)
      throw std::runtime_error("no port");
    m_nPort = ntohs(address.sin_port);
    m_Thread = std::thread([this] { Run(); });
  }
  ~Caster() {
    m_Stop.Set();
    m_Thread.join();
  }
  Caster(const Caster&) = delete;
  Caster& operator=(const Caster&) = delete;

  std::string Address() const { return "127.0.0.1:" + std::to_string(m_nPort); }
  int Connections() const { return m_nConnections; }

 private:
  void Run() {
    for (;;) {
      pollfd waits[] = {{m_Listener.Get(), POLLIN, 0}, {m_Stop.Descriptor(), POLLIN, 0}};
      if (poll(waits, 2, -1) <= 0 || waits[1].revents != 0) return;
      const Connection connection(accept(m_Listener.Get(), nullptr, nullptr), m_Stop);
      m_Serve(connection, ++m_nConnections);
    }
  }

  const Serve m_Serve;
  const host::UniqueDescriptor m_Listener;
  host::Event m_Stop;
  int m_nPort = 0;
  std::atomic<int> m_nConnections{0};
  std::thread m_Thread;
};
