#include "host/network/rfc2217line.h"

#include <gensio/sergensio.h>
#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <mutex>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "host/network/telnet.h"
#include "host/run/deadline.h"
#include "host/run/failure.h"
#include "host/run/url.h"

namespace host {

namespace {

using Setting = Telnet::Setting;

constexpr std::chrono::seconds kNegotiationTime{8}, kAnswerTime{4};
// gensio has deadlines of its own, which pass within its calls.
constexpr std::chrono::milliseconds kTurn{250};

class Rfc2217Line : public SerialLine {
 public:
  Rfc2217Line(UniqueDescriptor connection, std::string name)
      : connection_(std::move(connection)), name_(std::move(name)), telnet_(connection_) {}

  void Negotiate(const Event& given_up);

  bool GetState(DCB& dcb) override;
  bool SetState(const DCB& dcb) override;
  int Read(void* data, int most, DWORD ms) override;
  int Write(const void* data, int length, DWORD ms) override;
  void Cancel() override {
    cancelled_ = true;
    WakeReader();
    wake_writer_.Set();
    shutdown(connection_.Get(), SHUT_RDWR);
  }
  void WakeReader() override { wake_reader_.Set(); }
  bool PurgeInput() override;
  int BytesWaiting(DWORD& errors) override;
  bool SetBreak(bool on) override;

 private:
  bool Wait(short events, const Event& wake, Deadline::Moment until) const;
  template <class IsDone>
  void StepUntil(IsDone is_done, const Event& wake, Deadline::Moment until);
  void Ask(const DCB& dcb);

  const UniqueDescriptor connection_;
  const std::string name_;
  const Event wake_reader_, wake_writer_;
  std::atomic<bool> cancelled_ = false;

  std::mutex mutex_;  // never held over a wait
  Telnet telnet_;
  DCB state_;
};

// False if the line is cancelled or woken. Without events it waits a while for nothing else.
bool Rfc2217Line::Wait(short events, const Event& wake, Deadline::Moment until) const {
  if (cancelled_) return false;
  std::vector<pollfd> waits = {{events == 0 ? -1 : connection_.Get(), events, 0},
                               {wake.Descriptor(), POLLIN, 0}};
  WaitFor(waits, std::min(until, Deadline::Clock::now() + kTurn));
  if (waits[1].revents == 0) return !cancelled_;
  wake.Clear();
  return false;
}

/// Steps until then, or until that is so, which is asked under the lock.
template <class IsDone>
void Rfc2217Line::StepUntil(IsDone is_done, const Event& wake, Deadline::Moment until) {
  for (;;) {
    short events = 0;
    {
      const std::lock_guard lock(mutex_);
      telnet_.Step();
      if (is_done() || telnet_.IsLost()) return;
      events = telnet_.Events();
    }
    if (Deadline::Clock::now() >= until || !Wait(events, wake, until)) return;
  }
}

void Rfc2217Line::Negotiate(const Event& given_up) {
  const auto until = Deadline::Clock::now() + kNegotiationTime;
  StepUntil([this] { return telnet_.IsOpen(); }, given_up, until);
  bool asked = false;
  {
    const std::lock_guard lock(mutex_);
    asked = telnet_.IsOpen() && telnet_.Ask(Setting::baud, 0);
  }
  if (asked) StepUntil([this] { return telnet_.Baud() > 0; }, given_up, until);
  const std::lock_guard lock(mutex_);
  if (telnet_.Baud() > 0) {
    state_.BaudRate = telnet_.Baud();
    return;
  }
  throw Failure(ExitCode::port_closed,
                telnet_.IsLost()
                    ? name_ + " has closed the connection at once: is its line in use, or missing?"
                    : name_ +
                          " does not set a serial line by RFC 2217: tcp:// takes its bytes as "
                          "they are");
}

bool Rfc2217Line::GetState(DCB& dcb) {
  const std::lock_guard lock(mutex_);
  dcb = state_;
  return !telnet_.IsLost();
}

// DTR and RTS are on, since the other end has the line open. Of a line without them, ser2net answers nothing
// any more once they are asked for.
void Rfc2217Line::Ask(const DCB& dcb) {
  const unsigned flow = dcb.fOutxCtsFlow != 0 || dcb.fRtsControl == 2 ? SERGENSIO_FLOWCONTROL_RTS_CTS
                        : dcb.fOutX != 0                              ? SERGENSIO_FLOWCONTROL_XON_XOFF
                                                                      : SERGENSIO_FLOWCONTROL_NONE;
  telnet_.Ask(Setting::datasize, dcb.ByteSize);
  telnet_.Ask(Setting::parity, dcb.Parity + SERGENSIO_PARITY_NONE);
  telnet_.Ask(Setting::stopbits, dcb.StopBits == 0 ? 1 : 2);
  telnet_.Ask(Setting::flowcontrol, flow);
  telnet_.Ask(Setting::baud, dcb.BaudRate);
}

bool Rfc2217Line::SetState(const DCB& dcb) {
  {
    const std::lock_guard lock(mutex_);
    if (telnet_.IsLost()) return false;
    Ask(dcb);
  }
  StepUntil([this] { return telnet_.Unanswered() == 0; }, wake_writer_, Deadline::Clock::now() + kAnswerTime);
  const std::lock_guard lock(mutex_);
  state_ = dcb;
  state_.BaudRate = telnet_.Baud();
  if (state_.BaudRate == dcb.BaudRate) return true;
  Complain(name_ + " keeps its line at " + std::to_string(state_.BaudRate) + " baud, and not at " +
           std::to_string(dcb.BaudRate));
  return false;
}

int Rfc2217Line::Read(void* data, int most, DWORD ms) {
  if (most <= 0 || cancelled_) return 0;
  const auto until = Deadline::Clock::now() + std::chrono::milliseconds(ms);
  StepUntil([this] { return !telnet_.Input().empty(); }, wake_reader_, until);
  const std::lock_guard lock(mutex_);
  std::string& input = telnet_.Input();
  const std::size_t count = input.copy(static_cast<char*>(data), static_cast<std::size_t>(most));
  input.erase(0, count);
  return count == 0 && telnet_.IsLost() ? -1 : static_cast<int>(count);
}

int Rfc2217Line::Write(const void* data, int length, DWORD ms) {
  const std::string_view bytes(static_cast<const char*>(data), static_cast<std::size_t>(length));
  const std::chrono::milliseconds limit(ms);
  Deadline::Moment last = Deadline::Clock::now();  // when a byte was accepted
  std::size_t written = 0;
  while (!cancelled_ && written < bytes.size() && Deadline::Clock::now() < last + limit) {
    {
      const std::lock_guard lock(mutex_);
      if (telnet_.IsLost()) break;
      const std::size_t count = telnet_.Write(bytes.substr(written));
      telnet_.Step();
      written += count;
      if (count > 0) last = Deadline::Clock::now();
      if (count > 0) continue;
    }
    if (!Wait(POLLOUT, wake_writer_, last + limit)) break;
  }
  return static_cast<int>(written);
}

bool Rfc2217Line::PurgeInput() {
  const std::lock_guard lock(mutex_);
  telnet_.Flush();
  telnet_.Step();
  telnet_.Input().clear();
  return !telnet_.IsLost();
}

int Rfc2217Line::BytesWaiting(DWORD& errors) {
  errors = 0;
  const std::lock_guard lock(mutex_);
  telnet_.Step();
  return static_cast<int>(telnet_.Input().size());
}

bool Rfc2217Line::SetBreak(bool on) {
  const std::lock_guard lock(mutex_);
  telnet_.SetBreak(on);
  telnet_.Step();
  return !telnet_.IsLost();
}

}  // namespace

std::unique_ptr<SerialLine> OpenRfc2217Line(UniqueDescriptor connection, const Address& address,
                                            const Event& given_up) {
  auto line = std::make_unique<Rfc2217Line>(std::move(connection), HostAndPort(address.host, address.port));
  line->Negotiate(given_up);
  return line;
}

void CheckRfc2217() {}

std::string Rfc2217Version() {
  return "gensio " gensio_version_string;
}

}  // namespace host
