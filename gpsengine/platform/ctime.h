#pragma once

#include <compare>
#include <cstdint>
#include <ctime>

#pragma GCC visibility push(default)

/// A moment in whole seconds since 1970, 32 bits wide and unsigned, so that it reads on until 2106.
class CTime {
 public:
  CTime() = default;
  explicit CTime(std::int64_t seconds) : m_nSeconds(static_cast<std::uint32_t>(seconds)) {}

  /// The present moment of the platform's clock.
  static CTime GetCurrentTime();
  std::int64_t GetTime() const { return m_nSeconds; }
  /// Fills `pTm` with the local date and time and gives it back; null if the platform cannot tell.
  std::tm* GetLocalTm(std::tm* pTm) const;

  friend auto operator<=>(const CTime&, const CTime&) = default;

 private:
  std::uint32_t m_nSeconds = 0;
};

#pragma GCC visibility pop
