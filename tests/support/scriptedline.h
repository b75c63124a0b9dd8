#pragma once

#include <algorithm>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>

#include "gpsengine/platform/clock.h"
#include "gpsengine/platform/event.h"
#include "gpsengine/platform/serial.h"
#include "gpsengine/platform/shared.h"

/// A clock for a reader thread: it sleeps hardly at all, and a test sets what it shows.
class TestClock : public Clock {
 public:
  std::uint64_t Milliseconds() override {
    return Clock::Milliseconds() + static_cast<std::uint64_t>(msAhead.Get());
  }
  std::int64_t UnixSeconds() override { return Clock::UnixSeconds() + secondsAhead; }
  void Sleep(DWORD ms) override { Clock::Sleep(std::min(ms, kLongest)); }
  bool Wait(WaitKind, DWORD ms, const std::function<bool(DWORD)>& block) override {
    msLongestWait = std::max<DWORD>(msLongestWait, ms);
    return block(std::min(ms, kLongest));
  }

  CShared<long long> msAhead = 0;
  CShared<long long> secondsAhead = 0;  ///< Of the date and time.
  CShared<DWORD> msLongestWait = 0;     ///< That was asked for.

 private:
  static constexpr DWORD kLongest = 1;
};

/// The far end of a line of the host's own, which a port opens and closes when it likes. The thread that
/// reads it runs by a clock of the test's.
class Script {
 public:
  explicit Script(int nPort) { MapComPort(nPort, Opener()); }
  /// One that is nobody's port yet.
  Script() = default;
  SerialLineFactory Opener() const;

  TestClock& ReadersClock() { return m_pState->clock; }

  void Send(std::string_view bytes) {
    const std::lock_guard lock(m_pState->mutex);
    m_pState->bytes += bytes;
  }

 private:
  struct State {
    std::mutex mutex;
    std::string bytes;
    TestClock clock;
  };
  class Line;
  std::shared_ptr<State> m_pState = std::make_shared<State>();
};

class Script::Line : public SerialLine {
 public:
  explicit Line(std::shared_ptr<State> state) : m_pState(std::move(state)) {}
  ~Line() override { CloseHandle(m_hWake); }

  int Read(void* pData, int nMax, DWORD ms) override {
    SetClock(&m_pState->clock);
    int count = Take(static_cast<char*>(pData), nMax);
    if (count == 0 && WaitForSingleObject(m_hWake, std::min(ms, DWORD{10})) == WAIT_TIMEOUT)
      count = Take(static_cast<char*>(pData), nMax);
    return count;
  }
  void Cancel() override { SetEvent(m_hWake); }
  void WakeReader() override { SetEvent(m_hWake); }
  bool GetState(DCB&) override { return true; }
  bool SetState(const DCB&) override { return true; }
  int Write(const void*, int nLength, DWORD) override { return nLength; }
  bool PurgeInput() override { return true; }
  int BytesWaiting(DWORD& errors) override {
    errors = 0;
    return 0;
  }
  bool SetBreak(bool) override { return true; }

 private:
  int Take(char* pData, int nMax) {
    const std::lock_guard lock(m_pState->mutex);
    std::string& bytes = m_pState->bytes;
    const auto count = std::min(static_cast<std::size_t>(nMax), bytes.size());
    std::copy_n(bytes.begin(), count, pData);
    bytes.erase(0, count);
    return static_cast<int>(count);
  }

  const std::shared_ptr<State> m_pState;
  const HANDLE m_hWake = CreateEventW(true, false);
};

inline SerialLineFactory Script::Opener() const {
  return [state = m_pState] { return std::make_unique<Line>(state); };
}
