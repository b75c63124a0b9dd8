#pragma once

#include <compare>
#include <cstdint>
#include <ctime>

#pragma GCC visibility push(default)

/// A moment in whole seconds since 1970, 32 bits wide and unsigned, so that it reads on until 2106.
class CTime {
 public:
  /// The beginning of 1970.
  CTime() = default;
  /// Seconds since 1970, UTC, of which the lowest 32 bits count.
  explicit CTime(std::int64_t seconds) : m_nSeconds(static_cast<std::uint32_t>(seconds)) {}

  /// The present moment of the platform's clock.
  static CTime GetCurrentTime();
  /// Seconds since 1970, UTC; 0 as it is made.
  std::int64_t GetTime() const { return m_nSeconds; }
  /// Fills `pTm` with the local date and time and gives it back; null if the platform cannot tell.
  std::tm* GetLocalTm(std::tm* pTm) const;

  /// The earlier one is the lesser.
  friend auto operator<=>(const CTime&, const CTime&) = default;

 private:
  std::uint32_t m_nSeconds = 0;
};

#pragma GCC visibility pop
