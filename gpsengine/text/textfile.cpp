#include "gpsengine/text/textfile.h"

namespace {

constexpr UINT kChunk = 65536;

}  // namespace

void CTextFile::Close() {
  m_strBuffer.clear();
  m_nTaken = 0;
  CFile::Close();
}

void CTextFile::SeekToBegin() {
  m_strBuffer.clear();
  m_nTaken = 0;
  CFile::SeekToBegin();
}

bool CTextFile::Fill() {
  m_strBuffer.erase(0, m_nTaken);
  m_nTaken = 0;
  const std::size_t old = m_strBuffer.size();
  m_strBuffer.resize(old + kChunk);
  const UINT count = Read(m_strBuffer.data() + old, kChunk);
  m_strBuffer.resize(old + count);
  return count > 0;
}

bool CTextFile::ReadString(CString& out) {
  std::size_t end = m_strBuffer.find('\n', m_nTaken);
  while (end == std::string::npos) {
    const std::size_t looked = m_strBuffer.size() - m_nTaken;
    if (!Fill()) break;
    end = m_strBuffer.find('\n', looked);
  }
  const bool whole = end != std::string::npos;
  if (!whole) end = m_strBuffer.size();
  std::size_t length = end - m_nTaken;
  if (length == 0 && !whole) return false;
  if (length > 0 && m_strBuffer[m_nTaken + length - 1] == '\r') --length;
  out = CString(m_strBuffer.data() + m_nTaken, static_cast<int>(length));
  m_nTaken = whole ? end + 1 : end;
  return true;
}
