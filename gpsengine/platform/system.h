#pragma once

#include <cstdarg>
#include <ctime>
#include <string>

// What a port to another system implements, besides files (file.h) and serial devices (serial.h).

/// Wakes a thread that polls descriptors.
class WakeUp {
 public:
  WakeUp();
  ~WakeUp();
  WakeUp(const WakeUp&) = delete;
  WakeUp& operator=(const WakeUp&) = delete;

  void Set();                                       ///< Makes the descriptor readable. From any thread.
  void Clear();                                     ///< Makes it unreadable again.
  int Descriptor() const { return m_nDescriptor; }  ///< Belongs to this object.

 private:
  const int m_nDescriptor;
};

/// Raises the calling thread's priority, if permitted.
void RaisePriority(int priority);
/// The user's configuration folder.
std::string ConfigurationFolder();
/// The default device of a port number.
std::string StandardPort(int port);
/// Blocks until the user presses Enter. Returns at once if standard input is no terminal.
void WaitForEnter();
/// Local date and time; null on failure.
std::tm* LocalTime(std::time_t seconds, std::tm* tm);
/// As vsprintf does it in the C locale, whatever the host has made of its own. Empty on failure.
[[gnu::format(printf, 1, 0)]] std::string PrintPlain(const char* format, std::va_list arguments);
