#include "gpsengine/engine/lease.h"

#include "gpsengine/platform/clock.h"
#include "gpsengine/platform/event.h"

namespace {

constexpr std::uint64_t kLongestLeave = 1000;
constexpr DWORD kLook = 20;  // polling interval past the limit

// Its address identifies the thread.
thread_local char t_Here;

}  // namespace

CEngineLease::CEngineLease(CGPSEngine* engine) : m_hFree(CreateEventW(false, false)), m_pEngine(engine) {}

CEngineLease::~CEngineLease() {
  CloseHandle(m_hFree);
}

CEngineLease::Hold::Hold(CEngineLease& lease) : m_Lease(lease) {
  lease.m_Mutex.lock();
  m_bWasOutside = lease.m_bOutside.load(std::memory_order_relaxed);
  if (lease.m_nDepth++ == 0) lease.m_pHolder = &t_Here;
  lease.m_bOutside.store(false, std::memory_order_release);
}

CEngineLease::Hold::~Hold() {
  m_Lease.m_bOutside.store(m_bWasOutside, std::memory_order_release);
  if (--m_Lease.m_nDepth == 0) m_Lease.m_pHolder = nullptr;
  m_Lease.m_Mutex.unlock();
  if (m_Lease.m_bLeaving.load(std::memory_order_acquire)) SetEvent(m_Lease.m_hFree);
}

bool CEngineLease::IsHeldHere() const {
  return m_pHolder == &t_Here;
}

void CEngineLease::BeginLeaving() {
  m_nLeavingSince = CurrentClock().Milliseconds();
  m_bLeaving = true;
}

bool CEngineLease::Withdraw() {
  if (IsHeldHere()) {  // a callback is destroying its own engine
    TakeAway(true);
    return false;
  }
  for (;;) {
    if (m_Mutex.try_lock()) {
      TakeAway(true);
      m_Mutex.unlock();
      return true;
    }
    const std::uint64_t passed = CurrentClock().Milliseconds() - m_nLeavingSince;
    const bool late = passed >= kLongestLeave;
    if (late && TakeAway(false)) return false;
    WaitForSingleObject(m_hFree, late ? kLook : static_cast<DWORD>(kLongestLeave - passed));
  }
}

// A step that is not in host code may continue: it checks for the engine after its next call out.
bool CEngineLease::TakeAway(bool at_any_rate) {
  const std::lock_guard lock(m_LeaveMutex);
  if (!at_any_rate && !m_bOutside.load(std::memory_order_acquire)) return false;
  m_pEngine = nullptr;
  ++m_nEnds;
  return true;
}
