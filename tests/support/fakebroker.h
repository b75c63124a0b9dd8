#pragma once

#include <poll.h>
#include <sys/socket.h>

#include <chrono>
#include <string>
#include <string_view>

#include "host/server/listener.h"

/// An MQTT broker that does what a test says and no more, for one client at a time.
class FakeBroker {
 public:
  enum Type { none = 0, connect = 1, publish = 3, ping = 12, disconnect = 14 };
  struct Packet {
    int type = none;  ///< None if the client has gone.
    int flags = 0;
    std::string body;

    /// Of a message that is published.
    std::string Topic() const { return body.substr(2, Number(0)); }
    std::string Payload() const { return body.substr(4 + Topic().size()); }
    std::string Id() const { return body.substr(2 + Topic().size(), 2); }
    bool IsRetained() const { return (flags & 1) != 0; }
    bool IsRepeated() const { return (flags & 8) != 0; }
    int Quality() const { return flags >> 1 & 3; }

   private:
    std::size_t Number(std::size_t at) const {
      return static_cast<unsigned char>(body[at]) * 256u + static_cast<unsigned char>(body[at + 1]);
    }
  };

  int Port() const { return listener_.Port(); }
  /// Takes the next client, in place of any other.
  bool Accept() {
    pollfd waiting{listener_.Descriptor(), POLLIN, 0};
    if (poll(&waiting, 1, kPatience) != 1) return false;
    std::string peer;
    client_ = listener_.Accept(peer);
    return static_cast<bool>(client_);
  }
  /// Takes the next client and answers what it says first: 0 lets it in.
  Packet Welcome(int code = 0) {
    if (!Accept()) return {};
    Packet packet = Next();
    Send(std::string_view("\x20\x02\x00", 3));
    Send(std::string(1, static_cast<char>(code)));
    return packet;
  }
  void Send(std::string_view bytes) const { send(client_.Get(), bytes.data(), bytes.size(), MSG_NOSIGNAL); }
  void Acknowledge(const Packet& packet) const { Send("\x40\x02" + packet.Id()); }
  void Drop() { client_ = host::UniqueDescriptor(); }

  /// The next packet but for pings, which are answered.
  Packet Next() {
    for (;;) {
      Packet packet;
      const std::string head = Take(1);
      if (head.empty()) return packet;
      std::size_t length = 0, shift = 0;
      for (unsigned char byte = 0x80; byte >= 0x80; shift += 7) {
        byte = static_cast<unsigned char>(Take(1).c_str()[0]);
        length += static_cast<std::size_t>(byte & 0x7F) << shift;
      }
      packet.type = static_cast<unsigned char>(head[0]) >> 4;
      packet.flags = head[0] & 15;
      packet.body = Take(length);
      if (packet.type != ping) return packet;
      Send(std::string_view("\xD0\x00", 2));
    }
  }
  /// The next message, which it acknowledges.
  Packet NextMessage() {
    Packet packet = Next();
    if (packet.type == publish) Acknowledge(packet);
    return packet;
  }

 private:
  static constexpr int kPatience = 5000;  // milliseconds

  /// That many bytes; fewer if the client has gone.
  std::string Take(std::size_t count) const {
    std::string bytes;
    pollfd waiting{client_.Get(), POLLIN, 0};
    while (bytes.size() < count && poll(&waiting, 1, kPatience) == 1) {
      char piece[4096];
      const ssize_t read = recv(client_.Get(), piece, std::min(sizeof piece, count - bytes.size()), 0);
      if (read > 0) bytes.append(piece, static_cast<std::size_t>(read));
      if (read == 0 || (read < 0 && errno != EAGAIN)) break;
    }
    return bytes;
  }

  const host::Listener listener_{"127.0.0.1", 0, ""};
  host::UniqueDescriptor client_;
};
