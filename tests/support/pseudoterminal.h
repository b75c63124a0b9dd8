#pragma once

#include <fcntl.h>
#include <poll.h>
#include <stdlib.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <chrono>
#include <stdexcept>
#include <string>
#include <string_view>

#include "simulator/linespeed.h"

/// The other side of a serial line: a real terminal device of the kernel, whose master end the test holds.
class PseudoTerminal {
 public:
  PseudoTerminal() : m_nMaster(posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC)) {
    char name[128];
    if (m_nMaster < 0 || grantpt(m_nMaster) != 0 || unlockpt(m_nMaster) != 0 ||
        ptsname_r(m_nMaster, name, sizeof name) != 0)
      throw std::runtime_error("no pseudo-terminal");
    m_strName = name;
    // Held open so that the line does not hang up between two opens of the code under test.
    m_nKeeper = open(name, O_RDWR | O_NOCTTY | O_CLOEXEC);
    termios state;
    tcgetattr(m_nKeeper, &state);
    cfmakeraw(&state);
    tcsetattr(m_nKeeper, TCSANOW, &state);
  }
  ~PseudoTerminal() { HangUp(); }
  PseudoTerminal(const PseudoTerminal&) = delete;
  PseudoTerminal& operator=(const PseudoTerminal&) = delete;

  const std::string& Name() const { return m_strName; }
  int Keeper() const { return m_nKeeper; }

  void Send(std::string_view bytes) const {
    while (!bytes.empty()) {
      const ssize_t count = write(m_nMaster, bytes.data(), bytes.size());
      if (count > 0) {
        bytes.remove_prefix(static_cast<std::size_t>(count));
      } else {
        pollfd source{m_nMaster, POLLOUT, 0};
        if (poll(&source, 1, 5000) <= 0) throw std::runtime_error("nobody reads the line");
      }
    }
  }

  /// Sends as much as the line has room for, takes what has been written to it, and waits for neither. How
  /// much was sent.
  std::size_t Exchange(std::string_view bytes) const {
    char taken[4096];
    [[maybe_unused]] const ssize_t count = read(m_nMaster, taken, sizeof taken);
    const ssize_t sent = write(m_nMaster, bytes.data(), bytes.size());
    return sent > 0 ? static_cast<std::size_t>(sent) : 0;
  }

  /// What has been written to the line, waiting until there is `least` of it or the time is up.
  std::string Receive(std::size_t least, std::chrono::milliseconds limit = std::chrono::seconds(5)) const {
    const auto end = std::chrono::steady_clock::now() + limit;
    std::string bytes;
    while (bytes.size() < least && std::chrono::steady_clock::now() < end) {
      pollfd source{m_nMaster, POLLIN, 0};
      char piece[4096];
      if (poll(&source, 1, 10) <= 0) continue;
      if (const ssize_t count = read(m_nMaster, piece, sizeof piece); count > 0)
        bytes.append(piece, static_cast<std::size_t>(count));
    }
    return bytes;
  }

  /// Whether someone has the line to himself.
  bool IsExclusive() const {
    int exclusive = 0;
    return ioctl(m_nKeeper, TIOCGEXCL, &exclusive) == 0 && exclusive != 0;
  }

  /// The rate that the other side has set.
  int Speed() const { return simulator::LineSpeed(m_nMaster); }

  /// Pulls the plug.
  void HangUp() {
    if (m_nKeeper >= 0) close(m_nKeeper);
    if (m_nMaster >= 0) close(m_nMaster);
    m_nKeeper = m_nMaster = -1;
  }

 private:
  int m_nMaster;
  int m_nKeeper = -1;
  std::string m_strName;
};
