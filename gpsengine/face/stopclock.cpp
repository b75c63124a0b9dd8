#include "gpsengine/face/stopclock.h"

#include <algorithm>

namespace gps {

namespace {

// So long a wait goes on at most when it is to end.
constexpr DWORD kPiece = 50;

}  // namespace

void StopClock::Sleep(DWORD ms) {
  while (ms > 0 && !IsStopping()) {
    const DWORD piece = std::min(ms, kPiece);
    Clock::Sleep(piece);
    ms -= piece;
  }
}

bool StopClock::Wait(WaitKind kind, DWORD ms, const std::function<bool(DWORD)>& block) {
  if (kind != WaitKind::message || ms == INFINITE) return Clock::Wait(kind, ms, block);
  do {
    const DWORD piece = std::min(ms, kPiece);
    if (Clock::Wait(kind, piece, block)) return true;
    ms -= piece;
  } while (ms > 0 && !IsStopping());
  return false;
}

}  // namespace gps
