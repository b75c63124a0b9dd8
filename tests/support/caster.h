#pragma once

#include <poll.h>
#include <sys/socket.h>

#include <atomic>
#include <functional>
#include <string>
#include <string_view>
#include <thread>

#include "host/run/event.h"
#include "host/server/listener.h"

/// A caster of corrections on a port of its own, which does with each connection, one after another, what the
/// test wants.
class Caster {
 public:
  /// A connection, whose calls end when the caster does.
  class Connection {
   public:
    Connection(host::UniqueDescriptor socket, const host::Event& stop)
        : m_Socket(std::move(socket)), m_Stop(stop) {}

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

  explicit Caster(Serve serve) : m_Serve(std::move(serve)), m_Thread([this] { Run(); }) {}
  ~Caster() {
    m_Stop.Set();
    m_Thread.join();
  }

  std::string Address() const { return "127.0.0.1:" + std::to_string(m_Listener.Port()); }
  int Connections() const { return m_nConnections; }

 private:
  void Run() {
    for (;;) {
      pollfd waits[] = {{m_Listener.Descriptor(), POLLIN, 0}, {m_Stop.Descriptor(), POLLIN, 0}};
      if (poll(waits, 2, -1) <= 0 || waits[1].revents != 0) return;
      std::string name;
      const Connection connection(m_Listener.Accept(name), m_Stop);
      m_Serve(connection, ++m_nConnections);
    }
  }

  const Serve m_Serve;
  const host::Listener m_Listener{"127.0.0.1", 0, ""};
  host::Event m_Stop;
  std::atomic<int> m_nConnections{0};
  std::thread m_Thread;
};
