#include "gpsengine/text/textfile.h"

namespace {

constexpr UINT kChunk = 65536;
// A line that does not end is handed out in pieces of this size, so that a file of any kind can be read.
constexpr std::size_t kLongestLine = 1 << 20;

}  // namespace

int CTextFile::Open(const WCHAR* pszPath, UINT nFlags, CFileException* pError) {
  m_strBuffer.clear();
  m_nTaken = 0;
  return CFile::Open(pszPath, nFlags, pError);
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
  while (end == std::string::npos && m_strBuffer.size() - m_nTaken < kLongestLine && Fill()) {
    end = m_strBuffer.find('\n', m_nTaken);
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
