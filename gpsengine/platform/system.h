#pragma once

#include <ctime>
#include <string>

// What a port to another system replaces, beside files (file.h) and serial devices (serial.h).

/// Lets a thread that polls descriptors be woken by another one.
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

/// Gives the calling thread a priority above the normal one, if the user may.
void RaisePriority(int nPriority);
/// The folder for the settings of the user's programs.
std::string ConfigurationFolder();
/// The device that a port number stands for unless MapComPort says otherwise.
std::string StandardPort(int nPort);
/// Blocks until the user presses Enter. Returns at once if standard input is no terminal.
void WaitForEnter();
/// Local date and time; null if the system cannot tell.
std::tm* LocalTime(std::time_t seconds, std::tm* pTm);
