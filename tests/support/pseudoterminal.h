#pragma once

#include <fcntl.h>
#include <poll.h>
#include <stdlib.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <stdexcept>
#include <string>
#include <string_view>

#include "host/run/descriptor.h"
#include "simulator/linespeed.h"

/// The other side of a serial line: a real terminal device of the kernel, whose master end the test holds.
class PseudoTerminal {
 public:
  PseudoTerminal() : m_Master(posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC)) {
    char name[128];
    if (!m_Master || grantpt(m_Master.Get()) != 0 || unlockpt(m_Master.Get()) != 0 ||
        ptsname_r(m_Master.Get(), name, sizeof name) != 0)
      throw std::runtime_error("no pseudo-terminal");
    m_strName = name;
    // Held open so that the line does not hang up between two opens of the code under test.
    m_Keeper = host::UniqueDescriptor(open(name, O_RDWR | O_NOCTTY | O_CLOEXEC));
    termios state;
    tcgetattr(m_Keeper.Get(), &state);
    cfmakeraw(&state);
    tcsetattr(m_Keeper.Get(), TCSANOW, &state);
  }

  const std::string& Name() const { return m_strName; }
  int Keeper() const { return m_Keeper.Get(); }

  void Send(std::string_view bytes) const {
    while (!bytes.empty()) {
      pollfd source{m_Master.Get(), POLLOUT, 0};
      if (poll(&source, 1, 5000) <= 0) throw std::runtime_error("nobody reads the line");
      const ssize_t count = write(m_Master.Get(), bytes.data(), bytes.size());
      bytes.remove_prefix(static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    }
  }

  /// Sends as much as the line has room for, takes what has been written to it, and waits for neither. How
  /// much was sent.
  std::size_t Exchange(std::string_view bytes) const {
    char taken[4096];
    [[maybe_unused]] const ssize_t count = read(m_Master.Get(), taken, sizeof taken);
    const ssize_t sent = write(m_Master.Get(), bytes.data(), bytes.size());
    return sent > 0 ? static_cast<std::size_t>(sent) : 0;
  }

  /// What has been written to the line, waiting until there is `least` of it or the time is up.
  std::string Receive(std::size_t least, std::chrono::milliseconds limit = std::chrono::seconds(5)) const {
    const auto end = std::chrono::steady_clock::now() + limit;
    std::string bytes;
    while (bytes.size() < least && std::chrono::steady_clock::now() < end) {
      pollfd source{m_Master.Get(), POLLIN, 0};
      char piece[4096];
      if (poll(&source, 1, 10) <= 0) continue;
      if (const ssize_t count = read(m_Master.Get(), piece, sizeof piece); count > 0)
        bytes.append(piece, static_cast<std::size_t>(count));
    }
    return bytes;
  }

  /// Whether someone has the line to himself.
  bool IsExclusive() const {
    int exclusive = 0;
    return ioctl(m_Keeper.Get(), TIOCGEXCL, &exclusive) == 0 && exclusive != 0;
  }

  /// The rate that the other side has set.
  int Speed() const { return simulator::LineSpeed(m_Master.Get()); }

  /// Pulls the plug.
  void HangUp() {
    for (auto* end : {&m_Keeper, &m_Master}) *end = host::UniqueDescriptor();
  }

 private:
  host::UniqueDescriptor m_Master, m_Keeper;
  std::string m_strName;
};
