#include "gpsengine/platform/system.h"

#include <locale.h>
#include <sys/eventfd.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>

WakeUp::WakeUp() : m_nDescriptor(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {}

WakeUp::~WakeUp() {
  close(m_nDescriptor);
}

void WakeUp::Set() {
  eventfd_write(m_nDescriptor, 1);
}

void WakeUp::Clear() {
  eventfd_t count = 0;
  eventfd_read(m_nDescriptor, &count);
}

void RaisePriority(int priority) {
  // On Linux each thread has its own nice value.
  setpriority(PRIO_PROCESS, 0, -5 * priority);
}

std::string ConfigurationFolder() {
  const char* configured = std::getenv("XDG_CONFIG_HOME");
  if (configured != nullptr && *configured != '\0') return configured;
  const char* home = std::getenv("HOME");
  return std::string(home == nullptr ? "." : home) + "/.config";
}

std::string StandardPort(int port) {
  return "/dev/ttyS" + std::to_string(port - 1);
}

void WaitForEnter() {
  if (isatty(STDIN_FILENO) != 1) return;
  std::fputs("Press Enter to go on.\n", stderr);
  char c = 0;
  while (read(STDIN_FILENO, &c, 1) == 1 && c != '\n') {
  }
}

std::tm* LocalTime(std::time_t seconds, std::tm* tm) {
  return localtime_r(&seconds, tm);
}

std::string PrintPlain(const char* format, std::va_list arguments) {
  static const locale_t plain = newlocale(LC_ALL_MASK, "C", nullptr);
  const locale_t before = uselocale(plain);
  std::va_list again;
  va_copy(again, arguments);
  char buffer[128];  // more than nearly all take
  const int length = std::max(std::vsnprintf(buffer, sizeof buffer, format, arguments), 0);
  std::string text(buffer, std::min(static_cast<std::size_t>(length), sizeof buffer - 1));
  if (static_cast<std::size_t>(length) > text.size()) {
    text.resize(static_cast<std::size_t>(length));
    std::vsnprintf(text.data(), text.size() + 1, format, again);
  }
  va_end(again);
  uselocale(before);
  return text;
}
