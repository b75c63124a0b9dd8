#include "gpsengine/engine/combuffer.h"

namespace {

constexpr int kCaptureLimit = 100000;

}  // namespace

void CComBuffer::OnRawData(CString* text) {
  if (m_bPaused || text == nullptr || !m_bCollects) return;
  const bool full = m_strData.GetLength() > kCaptureLimit;
  m_strData += *text;
  if (full) m_bPaused = m_bOverflow = true;
}

void CComBuffer::KeepCapturing(bool wanted) {
  m_bCollects = false;
  m_bPaused = !wanted;
}
