#pragma once

#include "tests/support/tcppeer.h"

/// An MQTT broker that does what a test says and no more, for one client at a time.
class FakeBroker : public TcpPeer {
 public:
  enum Type { none = 0, publish = 3, ping = 12, disconnect = 14 };
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

  /// Takes the next client and answers what it says first: 0 lets it in.
  Packet Welcome(int code = 0) {
    Accept();
    Packet packet = Next();
    Send(std::string_view("\x20\x02\x00", 3));
    Send(std::string(1, static_cast<char>(code)));
    return packet;
  }
  void Acknowledge(const Packet& packet) const { Send("\x40\x02" + packet.Id()); }

  /// The next packet but for pings, which are answered.
  Packet Next() {
    for (;;) {
      Packet packet;
      const std::string head = Receive(1, 1);
      if (head.empty()) return packet;
      std::size_t length = 0, shift = 0;
      for (unsigned char byte = 0x80; byte >= 0x80; shift += 7) {
        byte = static_cast<unsigned char>(Receive(1, 1).c_str()[0]);
        length += static_cast<std::size_t>(byte & 0x7F) << shift;
      }
      packet.type = static_cast<unsigned char>(head[0]) >> 4;
      packet.flags = head[0] & 15;
      packet.body = Receive(length, length);
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
};
