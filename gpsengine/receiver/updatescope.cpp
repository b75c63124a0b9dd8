#include "gpsengine/receiver/updatescope.h"

namespace {

thread_local const CUpdateScope* t_pCurrent = nullptr;

}  // namespace

CUpdateScope::CUpdateScope(const std::atomic<int>& ends, int run_ends)
    : m_Ends(ends), m_nEnds(run_ends), m_pOuter(t_pCurrent) {
  t_pCurrent = this;
}

CUpdateScope::~CUpdateScope() {
  t_pCurrent = m_pOuter;
}

void CUpdateScope::GoOn() {
  if (t_pCurrent != nullptr && t_pCurrent->IsOver()) throw RunIsOver();
}
