#pragma once

#include <chrono>
#include <deque>
#include <memory>
#include <string>
#include <string_view>

#include "host/run/deadline.h"
#include "host/run/descriptor.h"
#include "host/server/gpsdrequest.h"

namespace host {

/// A piece of output, which clients share: whole lines, or bytes of the receiver.
using GpsdPiece = std::shared_ptr<const std::string>;

/// A client's connection: what it asks, and what waits to be sent to it. Never blocks. One that reads too
/// slowly loses the oldest pieces that wait.
class GpsdClient {
 public:
  /// `longest_request` and `queue` are limits in bytes; `stall` is how long a client may take nothing.
  GpsdClient(UniqueDescriptor socket, std::string peer, std::size_t longest_request, std::size_t queue,
             std::chrono::milliseconds stall);

  int Descriptor() const { return socket_.Get(); }
  const std::string& Peer() const { return peer_; }

  /// Takes in what the client has sent. The requests in it go to `take`.
  template <class Take>
  void Read(Take&& take);
  /// Hands `take` a request that the client has not ended, once the client has been quiet for a moment.
  template <class Take>
  void TakeUnended(Take&& take);

  /// Puts a piece after what waits.
  void Send(const GpsdPiece& piece);
  /// Writes as much as the connection takes.
  void Flush();

  bool IsWaiting() const { return !queue_.empty(); }
  bool IsStalled() const { return stalled_.HasPassed(); }
  /// The connection is of no more use.
  bool IsGone() const { return gone_; }
  long long Dropped() const { return dropped_; }
  /// When to look at the client even if nothing happens.
  Deadline::Clock::time_point Earlier(Deadline::Clock::time_point other) const {
    return stalled_.Earlier(quiet_.Earlier(other));
  }

  GpsdWatch watch;  ///< What it wants to be sent.

 private:
  std::string_view Receive(char* space, std::size_t size);
  void MakeRoom(std::size_t bytes);

  UniqueDescriptor socket_;
  const std::string peer_;
  const std::size_t queue_limit_;
  const std::chrono::milliseconds stall_limit_;
  GpsdRequestReader reader_;
  std::deque<GpsdPiece> queue_;
  std::size_t queued_ = 0;  // bytes of the queue
  std::size_t sent_ = 0;    // bytes of its first piece
  long long dropped_ = 0;
  Deadline quiet_, stalled_;
  bool gone_ = false;
};

/// A request without an end is one after this time.
constexpr std::chrono::milliseconds kQuiet{100};

template <class Take>
void GpsdClient::Read(Take&& take) {
  char space[4096];
  const auto bytes = Receive(space, sizeof space);
  reader_.Feed(bytes, take);
  quiet_.Clear();
  if (!reader_.HasUnended()) return;
  if (gone_) {
    take(reader_.TakeUnended());
  } else {
    quiet_.Set(kQuiet);
  }
}

template <class Take>
void GpsdClient::TakeUnended(Take&& take) {
  if (!quiet_.HasPassed()) return;
  quiet_.Clear();
  take(reader_.TakeUnended());
}

}  // namespace host
