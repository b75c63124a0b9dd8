#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "host/run/descriptor.h"

struct gensio;
struct gensio_os_funcs;
struct sergensio;

namespace host {

/// Telnet with RFC 2217 over a connection of ours, by gensio. Everything in it runs within its calls, which
/// never block: who waits polls the connection, and calls Step when that is ready. To be called by one thread
/// at a time.
class Telnet {
 public:
  /// Begins to negotiate. Throws a Failure if gensio cannot do that.
  explicit Telnet(const UniqueDescriptor& connection);
  ~Telnet();
  Telnet(const Telnet&) = delete;
  Telnet& operator=(const Telnet&) = delete;

  /// Does what there is to do.
  void Step();
  /// The events of poll that are worth a step.
  short Events() const;
  bool IsOpen() const { return open_; }
  bool IsLost() const { return lost_; }

  /// What has come of the line's bytes, to be taken from its front.
  std::string& Input() { return input_; }
  /// How many bytes were taken.
  std::size_t Write(std::string_view bytes);

  /// What RFC 2217 sets, by the names of gensio's requests.
  enum class Setting { baud, datasize, parity, stopbits, flowcontrol };
  /// Asks for a setting; 0 asks how it is. False if the other side knows of no such thing.
  bool Ask(Setting setting, unsigned value);
  /// How many answers are still to come.
  int Unanswered() const { return unanswered_; }
  /// The line's speed, as it was last answered; 0 until then.
  unsigned Baud() const { return baud_; }
  void SetBreak(bool on);
  /// The other side is to forget what it has not sent yet.
  void Flush();

 private:
  struct Callbacks;

  UniqueDescriptor socket_;  // gensio closes its own
  gensio_os_funcs* functions_ = nullptr;
  gensio* io_ = nullptr;
  sergensio* serial_ = nullptr;
  bool open_ = false, lost_ = false, closed_ = false, is_full_ = false, is_blocked_ = false;
  int unanswered_ = 0;
  unsigned baud_ = 0;
  std::string input_;
};

}  // namespace host
