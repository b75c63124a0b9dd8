#include "gpsengine/link/ticks.h"

#include "gpsengine/platform/clock.h"

namespace {

constexpr DWORD kWrap = 0x7FFFFFFF;  // where a 31-bit tick wraps
constexpr DWORD kHour = 3600000;     // calls are never further apart: a greater step is a wrap

}  // namespace

DWORD CTicks::GetTicks() {
  return Continue(GetTickCount());
}

DWORD CTicks::Continue(DWORD nTick) {
  if ((m_nLast > kWrap || nTick > kWrap) && nTick - m_nLast > kHour) nTick -= kWrap;
  const bool bWrapped = nTick < m_nLast && nTick + kWrap - m_nLast < kHour;
  m_nLast = nTick;
  return bWrapped ? nTick + kWrap : nTick;
}
