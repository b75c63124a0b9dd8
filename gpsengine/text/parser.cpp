#include "gpsengine/text/parser.h"

#include <bit>
#include <utility>

#include "gpsengine/platform/object.h"
#include "gpsengine/platform/textscan.h"
#include "gpsengine/text/number.h"

CParser::CParser(const CString& strText, const CString& strDelimiters, bool bThrow)
    : m_strText(strText),
      m_cFirst(strDelimiters[0]),
      m_cSecond(strDelimiters.GetLength() > 1 ? strDelimiters[1] : strDelimiters[0]),
      m_strMore(strDelimiters.Mid(2)),
      m_bThrow(bThrow) {
  Rewind();
}

CParser::CParser(const CString& strText, const char* pszDelimiters, bool bThrow)
    : m_strText(strText),
      m_cFirst(static_cast<unsigned char>(pszDelimiters[0])),
      m_cSecond(m_cFirst),
      m_bThrow(bThrow) {
  if (m_cFirst != 0 && pszDelimiters[1] != 0) {
    m_cSecond = static_cast<unsigned char>(pszDelimiters[1]);
    if (pszDelimiters[2] != 0) m_strMore = pszDelimiters + 2;
  }
  Rewind();
}

void CParser::SetString(CString strText) {
  m_strText = std::move(strText);
  Rewind();
}

// To the first field. An empty text has none.
void CParser::Rewind() {
  m_Text = m_strText.View();
  m_nNext = m_Text.empty() ? 1 : 0;
  MarkBlock(0);
}

// Marks the delimiters of the block that begins at `nBlock`.
void CParser::MarkBlock(int nBlock) {
  const std::u16string_view block = m_Text.substr(static_cast<std::size_t>(nBlock));
  m_nBlock = nBlock;
  m_Marks = textscan::MatchBits(block, m_cFirst, m_cSecond);
  for (const WCHAR c : m_strMore.View()) m_Marks |= textscan::MatchBits(block, c, c);
}

CString CParser::GetRemainingBuffer() const {
  return m_strText.Mid(m_nNext);
}

// Every field takes the mark of the delimiter that ends it; the last one ends with the text.
inline bool CParser::NextField(std::u16string_view& field) {
  const int length = static_cast<int>(m_Text.size());
  if (m_nNext > length) return false;
  while (m_Marks == 0 && m_nBlock + textscan::kBlock < length) MarkBlock(m_nBlock + textscan::kBlock);
  int end = length;
  if (m_Marks != 0) {
    end = m_nBlock + std::countr_zero(m_Marks);
    m_Marks &= m_Marks - 1;
  }
  field = {m_Text.data() + m_nNext, static_cast<std::size_t>(end - m_nNext)};
  m_nNext = end + 1;
  return true;
}

bool CParser::Fail() const {
  if (m_bThrow) AfxThrowUserException();
  return false;
}

bool CParser::SkipField() {
  std::u16string_view field;
  return NextField(field) || Fail();
}

bool CParser::GetNextString(CString& out) {
  std::u16string_view field;
  if (!NextField(field)) return Fail();
  out.Assign(field);
  return true;
}

bool CParser::GetInt(int& out) {
  std::u16string_view field;
  if (!NextField(field)) return Fail();
  return textscan::ReadShortNumber(field, m_Text.data() + m_Text.size(), out) || ParseInt(field, &out) ||
         Fail();
}

bool CParser::GetDouble(double& out) {
  std::u16string_view field;
  double value = 0.0;
  int remaining = 0;
  if (!NextField(field) || !ParseDouble(field, value, remaining)) return Fail();
  out = value;
  return true;
}
