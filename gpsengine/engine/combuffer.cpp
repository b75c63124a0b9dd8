#include "gpsengine/engine/combuffer.h"

namespace {

constexpr int kCaptureLimit = 100000;

}  // namespace

void CComBuffer::OnRawData(CString* text) {
  if (m_bPaused || text == nullptr) return;
  const bool full = m_strData.GetLength() > kCaptureLimit;
  m_strData += *text;
  if (full) m_bPaused = m_bOverflow = true;
}

void CComBuffer::KeepCapturing(bool bWanted, bool bEmpties) {
  const bool bStopped = m_bOverflow && m_bPaused;
  if (bStopped || bEmpties) m_strData.Empty();
  if (bStopped) m_bOverflow = false;
  if (m_bPaused == bWanted) m_bPaused = !bWanted;
}
