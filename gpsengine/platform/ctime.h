#pragma once

#include <compare>
#include <cstdint>
#include <ctime>

#pragma GCC visibility push(default)

/// A moment in whole seconds since 1970, 32 bits unsigned, good until 2106.
class CTime {
 public:
  /// The beginning of 1970.
  CTime() = default;
  /// Seconds since 1970, UTC, truncated to 32 bits.
  explicit CTime(std::int64_t seconds) : m_nSeconds(static_cast<std::uint32_t>(seconds)) {}

  /// The current time of the thread's clock.
  static CTime GetCurrentTime();
  /// Seconds since 1970, UTC; 0 when default-constructed.
  std::int64_t GetTime() const { return m_nSeconds; }
  /// Fills `pTm` with the local date and time and returns it; null on failure.
  std::tm* GetLocalTm(std::tm* pTm) const;

  /// Orders by time.
  friend auto operator<=>(const CTime&, const CTime&) = default;

 private:
  std::uint32_t m_nSeconds = 0;
};

#pragma GCC visibility pop
