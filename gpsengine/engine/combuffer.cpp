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

void CComBuffer::KeepCapturing(bool wanted, bool empties) {
  const bool stopped = m_bOverflow && m_bPaused;
  if (empties) m_strData.ReleaseBuffer(0);  // its memory is used again
  if (stopped) m_strData.Empty();
  if (stopped) m_bOverflow = false;
  if (m_bPaused == wanted) m_bPaused = !wanted;
}
