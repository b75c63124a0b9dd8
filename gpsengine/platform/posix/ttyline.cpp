// The kernel's own termios, for non-standard baud rates. It conflicts with <termios.h>.
#include <asm/termbits.h>
#include <fcntl.h>
#include <linux/serial.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstring>

#include "gpsengine/platform/clock.h"
#include "gpsengine/platform/file.h"
#include "gpsengine/platform/serial.h"
#include "gpsengine/platform/system.h"

namespace {

constexpr tcflag_t kSizes[] = {CS5, CS6, CS7, CS8};

void SetRaw(termios2& state) {
  state.c_iflag = IGNBRK;
  state.c_oflag = 0;
  state.c_lflag = 0;
  state.c_cflag |= CREAD | CLOCAL;
  std::memset(state.c_cc, 0, sizeof state.c_cc);
}

void SetSpeed(termios2& state, DWORD baud_rate) {
  state.c_cflag &= ~static_cast<tcflag_t>(CBAUD | CBAUD << IBSHIFT);
  state.c_cflag |= BOTHER | BOTHER << IBSHIFT;
  state.c_ispeed = state.c_ospeed = baud_rate;
}

void SetFraming(termios2& state, const DCB& dcb) {
  state.c_cflag &= ~static_cast<tcflag_t>(CSIZE | PARENB | PARODD | CMSPAR | CSTOPB | CRTSCTS);
  if (dcb.ByteSize >= 5 && dcb.ByteSize <= 8) state.c_cflag |= kSizes[dcb.ByteSize - 5];
  if (dcb.Parity != 0) state.c_cflag |= PARENB;
  if (dcb.Parity == 1 || dcb.Parity == 3) state.c_cflag |= PARODD;
  if (dcb.Parity >= 3) state.c_cflag |= CMSPAR;
  if (dcb.StopBits != 0) state.c_cflag |= CSTOPB;
  if (dcb.fOutxCtsFlow != 0 || dcb.fRtsControl == 2) state.c_cflag |= CRTSCTS;
  if (dcb.fOutX != 0) state.c_iflag |= IXON;
  if (dcb.fInX != 0) state.c_iflag |= IXOFF;
  state.c_cc[VSTART] = static_cast<cc_t>(dcb.XonChar);
  state.c_cc[VSTOP] = static_cast<cc_t>(dcb.XoffChar);
}

class TtyLine : public SerialLine {
 public:
  explicit TtyLine(int file) : m_nFile(file) { TakeErrors(); }
  ~TtyLine() override {
    Release();
    close(m_nFile);
  }
  TtyLine(const TtyLine&) = delete;
  TtyLine& operator=(const TtyLine&) = delete;

  bool GetState(DCB& dcb) override {
    termios2 state;
    if (ioctl(m_nFile, TCGETS2, &state) != 0) return false;
    dcb.BaudRate = state.c_ospeed;
    const tcflag_t size = state.c_cflag & CSIZE;
    for (BYTE i = 0; i < 4; ++i) {
      if (kSizes[i] == size) dcb.ByteSize = static_cast<BYTE>(5 + i);
    }
    dcb.StopBits = (state.c_cflag & CSTOPB) != 0 ? 2 : 0;
    return true;
  }

  bool SetState(const DCB& dcb) override {
    termios2 state;
    if (ioctl(m_nFile, TCGETS2, &state) != 0) return false;
    SetRaw(state);
    SetSpeed(state, dcb.BaudRate);
    SetFraming(state, dcb);
    // A pseudo-terminal refuses parity and has no modem lines: go on without.
    if (ioctl(m_nFile, TCSETS2, &state) != 0) {
      state.c_cflag &= ~static_cast<tcflag_t>(PARENB | PARODD | CMSPAR);
      if (ioctl(m_nFile, TCSETS2, &state) != 0) return false;
    }
    SetModemLine(TIOCM_DTR, dcb.fDtrControl != 0);
    if (dcb.fRtsControl != 2) SetModemLine(TIOCM_RTS, dcb.fRtsControl != 0);
    return true;
  }

  int Read(void* data, int max, DWORD ms) override {
    if (max <= 0 || !WaitUntil(POLLIN, m_WakeReader, ms)) return 0;
    const ssize_t count = read(m_nFile, data, static_cast<std::size_t>(max));
    if (count > 0) return static_cast<int>(count);
    return HasHungUp() ? -1 : 0;
  }

  int Write(const void* data, int length, DWORD ms) override {
    std::uint64_t last = CurrentClock().Milliseconds();  // when a byte was last accepted
    int written = 0;
    while (written < length) {
      const std::uint64_t passed = CurrentClock().Milliseconds() - last;
      if (passed >= ms || !WaitUntil(POLLOUT, m_WakeWriter, static_cast<DWORD>(ms - passed))) break;
      const ssize_t count = write(m_nFile, static_cast<const char*>(data) + written,
                                  static_cast<std::size_t>(length - written));
      if (count < 0 && (errno == EAGAIN || errno == EINTR)) continue;
      if (count <= 0) break;
      written += static_cast<int>(count);
      last = CurrentClock().Milliseconds();
    }
    return written;
  }

  void Cancel() override {
    m_bCancelled = true;
    WakeReader();
    m_WakeWriter.Set();
    Release();
  }

  void WakeReader() override { m_WakeReader.Set(); }

  bool PurgeInput() override { return ioctl(m_nFile, TCFLSH, TCIFLUSH) == 0; }

  int BytesWaiting(DWORD& errors) override {
    errors = TakeErrors();
    int count = 0;
    return ioctl(m_nFile, FIONREAD, &count) == 0 ? count : 0;
  }

  bool SetBreak(bool on) override { return ioctl(m_nFile, on ? TIOCSBRK : TIOCCBRK) == 0; }

 private:
  // Frees the device for the next open, even while a blocked thread is still leaving or a child process holds
  // the descriptor. Only once: after that the lock may belong to the next open.
  void Release() {
    if (m_bReleased.exchange(true)) return;
    ioctl(m_nFile, TIOCNXCL);
    flock(m_nFile, LOCK_UN);
  }

  bool HasHungUp() const {
    pollfd line{m_nFile, 0, 0};
    return poll(&line, 1, 0) > 0;
  }

  // False on timeout, and when the line is cancelled or woken without data. True for a failed line: the
  // following call then reports the failure.
  bool WaitUntil(short events, WakeUp& wake, DWORD ms) {
    return CurrentClock().Wait(WaitKind::line, ms, [&](DWORD limit) {
      const std::uint64_t start = CurrentClock().Milliseconds();
      for (;;) {
        if (m_bCancelled) return false;
        pollfd sources[] = {{m_nFile, events, 0}, {wake.Descriptor(), POLLIN, 0}};
        const std::uint64_t passed = CurrentClock().Milliseconds() - start;
        const int left = limit == INFINITE ? -1 : static_cast<int>(passed >= limit ? 0 : limit - passed);
        const int ready = poll(sources, 2, left);
        if (ready < 0 && errno == EINTR) continue;
        if (sources[1].revents != 0) wake.Clear();
        return ready > 0 && !m_bCancelled && sources[0].revents != 0;
      }
    });
  }

  void SetModemLine(int line, bool on) { ioctl(m_nFile, on ? TIOCMBIS : TIOCMBIC, &line); }

  // Whether there were line errors since the last call. The kernel counts them; a line without hardware has
  // no counters.
  DWORD TakeErrors() {
    serial_icounter_struct counts{};
    if (ioctl(m_nFile, TIOCGICOUNT, &counts) != 0) return 0;
    const int sum = counts.frame + counts.overrun + counts.parity + counts.buf_overrun;
    return m_nErrors.exchange(sum) == sum ? 0 : 1;
  }

  const int m_nFile;
  WakeUp m_WakeReader, m_WakeWriter;
  std::atomic<bool> m_bCancelled{false};
  std::atomic<bool> m_bReleased{false};
  std::atomic<int> m_nErrors{0};
};

// The descriptor, or -1 with errno.
int OpenExclusive(const std::string& device) {
  const int file = open(device.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
  if (file < 0) return -1;
  termios2 state;
  int reason = 0;
  if (ioctl(file, TCGETS2, &state) != 0) {
    reason = ENOTTY;
  } else if (flock(file, LOCK_EX | LOCK_NB) != 0 || ioctl(file, TIOCEXCL) != 0) {
    // TIOCEXCL does not stop the superuser, and flock only programs that use it: so both.
    reason = EBUSY;
  }
  if (reason == 0) return file;
  close(file);
  errno = reason;
  return -1;
}

}  // namespace

std::unique_ptr<SerialLine> OpenSerialDevice(const CString& device) {
  const int file = OpenExclusive(device.ToUtf8());
  if (file < 0) {
    SetLastError(static_cast<DWORD>(errno));
    return nullptr;
  }
  return std::make_unique<TtyLine>(file);
}
