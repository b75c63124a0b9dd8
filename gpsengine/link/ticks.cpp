#include "gpsengine/link/ticks.h"

#include "gpsengine/platform/clock.h"

namespace {

constexpr DWORD kWrap = 0x7FFFFFFF;  // where a 31-bit tick wraps
constexpr DWORD kHour = 3600000;     // calls are never further apart: a greater step is a wrap

}  // namespace

DWORD CTicks::GetTicks() {
  return Continue(GetTickCount());
}

DWORD CTicks::Continue(DWORD tick) {
  if ((m_nLast > kWrap || tick > kWrap) && tick - m_nLast > kHour) tick -= kWrap;
  const bool wrapped = tick < m_nLast && tick + kWrap - m_nLast < kHour;
  m_nLast = tick;
  return wrapped ? tick + kWrap : tick;
}
