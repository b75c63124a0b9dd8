#include "gpsengine/text/parser.h"

#include <utility>

#include "gpsengine/platform/object.h"
#include "gpsengine/text/number.h"

CParser::CParser(CString strText, CString strDelimiters, bool bThrow)
    : m_strDelimiters(std::move(strDelimiters)), m_bThrow(bThrow) {
  SetString(std::move(strText));
}

void CParser::SetString(CString strText) {
  m_strText = std::move(strText);
  m_nNext = m_strText.IsEmpty() ? 1 : 0;
}

CString CParser::GetRemainingBuffer() const {
  return m_strText.Mid(m_nNext);
}

bool CParser::IsDelimiter(WCHAR c) const {
  return m_strDelimiters.Find(c) >= 0;
}

bool CParser::NextField(std::u16string_view& field) {
  const std::u16string_view text = m_strText.View();
  const auto start = static_cast<std::size_t>(m_nNext);
  if (start > text.size()) return false;
  std::size_t end = start;
  while (end < text.size() && !IsDelimiter(text[end])) ++end;
  field = text.substr(start, end - start);
  m_nNext = static_cast<int>(end) + 1;
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
  out = CString(field);
  return true;
}

bool CParser::GetInt(int& out) {
  std::u16string_view field;
  return (NextField(field) && ParseInt(field, &out)) || Fail();
}

bool CParser::GetDouble(double& out) {
  std::u16string_view field;
  double value = 0.0;
  int remaining = 0;
  if (!NextField(field) || !ParseDouble(field, value, remaining)) return Fail();
  out = value;
  return true;
}
