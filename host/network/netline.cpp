#include "host/network/netline.h"

#include <poll.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "host/network/gpsdlines.h"
#include "host/run/deadline.h"
#include "host/run/event.h"
#include "host/run/url.h"

namespace host {

namespace {

// No datagram is longer.
constexpr std::size_t kMost = 65536;
constexpr std::string_view kWatch = "?WATCH={\"enable\":true,\"raw\":2};\n";

class NetLine : public SerialLine {
 public:
  NetLine(UniqueDescriptor connection, const Address& address)
      : connection_(std::move(connection)), scheme_(address.scheme), room_(kMost, '\0') {
    if (scheme_ != Address::Scheme::gpsd) return;
    lines_.emplace(HostAndPort(address.host, address.port));
    Send(kWatch, kWriteLimit);
  }

  bool GetState(DCB&) override { return true; }
  bool SetState(const DCB&) override { return true; }
  int Read(void* data, int most, DWORD ms) override;
  int Write(const void* data, int length, DWORD ms) override {
    const bool takes = scheme_ == Address::Scheme::tcp;
    return takes ? Send({static_cast<const char*>(data), static_cast<std::size_t>(length)}, ms) : 0;
  }
  void Cancel() override {
    cancelled_ = true;
    WakeReader();
    wake_writer_.Set();
    // The peer is to hear of it even while a blocked thread is still leaving.
    if (scheme_ != Address::Scheme::input) shutdown(connection_.Get(), SHUT_RDWR);
  }
  void WakeReader() override { wake_reader_.Set(); }
  bool PurgeInput() override { return true; }
  int BytesWaiting(DWORD& errors) override;
  bool SetBreak(bool) override { return false; }

 private:
  bool WaitUntil(short events, const Event& wake, Deadline::Moment until) const;
  bool Fill();
  int Hand(void* data, int most);
  int Send(std::string_view bytes, DWORD ms);

  const UniqueDescriptor connection_;
  const Address::Scheme scheme_;
  const Event wake_reader_, wake_writer_;
  std::atomic<bool> cancelled_ = false;
  // The reader's.
  std::optional<GpsdLines> lines_;
  std::string room_;

  std::mutex mutex_;
  std::string bytes_;  // that have come and were not handed on
};

// False when the time is over, and when the line is cancelled or woken.
bool NetLine::WaitUntil(short events, const Event& wake, Deadline::Moment until) const {
  if (cancelled_) return false;
  std::vector<pollfd> waits = {{connection_.Get(), events, 0}, {wake.Descriptor(), POLLIN, 0}};
  WaitFor(waits, until);
  if (waits[1].revents != 0) wake.Clear();
  return !cancelled_ && waits[0].revents != 0;
}

/// What there is of bytes that were not asked for.
int NetLine::Hand(void* data, int most) {
  const std::lock_guard lock(mutex_);
  const std::size_t count = bytes_.copy(static_cast<char*>(data), static_cast<std::size_t>(most));
  bytes_.erase(0, count);
  return static_cast<int>(count);
}

// False if the other side has gone.
bool NetLine::Fill() {
  const ssize_t count = read(connection_.Get(), room_.data(), room_.size());
  if (count < 0) return errno == EAGAIN || errno == EINTR;
  if (count == 0) return scheme_ == Address::Scheme::udp;  // an empty datagram
  const std::string_view piece(room_.data(), static_cast<std::size_t>(count));
  const std::string stripped = lines_ ? lines_->Strip(piece) : std::string(piece);
  const std::lock_guard lock(mutex_);
  bytes_ += stripped;
  return true;
}

int NetLine::Read(void* data, int most, DWORD ms) {
  const Deadline::Moment until = Deadline::Clock::now() + std::chrono::milliseconds(ms);
  for (;;) {
    if (most <= 0 || cancelled_) return 0;
    if (const int count = Hand(data, most); count > 0) return count;
    if (!WaitUntil(POLLIN, wake_reader_, until)) return 0;
    if (!Fill()) return -1;
  }
}

int NetLine::Send(std::string_view bytes, DWORD ms) {
  const std::chrono::milliseconds limit(ms);
  Deadline::Moment last = Deadline::Clock::now();  // when a byte was accepted
  std::size_t sent = 0;
  while (sent < bytes.size() && WaitUntil(POLLOUT, wake_writer_, last + limit)) {
    const ssize_t count = send(connection_.Get(), bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL);
    if (count < 0 && errno != EAGAIN && errno != EINTR) break;
    if (count <= 0) continue;
    sent += static_cast<std::size_t>(count);
    last = Deadline::Clock::now();
  }
  return static_cast<int>(sent);
}

int NetLine::BytesWaiting(DWORD& errors) {
  errors = 0;
  int waiting = 0;
  if (ioctl(connection_.Get(), FIONREAD, &waiting) != 0) waiting = 0;
  const std::lock_guard lock(mutex_);
  return waiting + static_cast<int>(bytes_.size());
}

}  // namespace

std::unique_ptr<SerialLine> OpenNetLine(UniqueDescriptor connection, const Address& address) {
  return std::make_unique<NetLine>(std::move(connection), address);
}

}  // namespace host
