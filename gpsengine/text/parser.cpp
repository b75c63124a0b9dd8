#include "gpsengine/text/parser.h"

#include <bit>
#include <utility>

#include "gpsengine/platform/object.h"
#include "gpsengine/platform/textscan.h"
#include "gpsengine/text/number.h"

CParser::CParser(const CString& text, const CString& delimiters, bool throws)
    : m_strOwn(text),
      m_cFirst(delimiters[0]),
      m_cSecond(delimiters.GetLength() > 1 ? delimiters[1] : delimiters[0]),
      m_strMore(delimiters.Mid(2)),
      m_bThrow(throws) {
  Start(m_strOwn.View());
}

CParser::CParser(const CString& text, const char* delimiters, bool throws)
    : m_strOwn(text), m_bThrow(throws) {
  SetDelimiters(delimiters);
  Start(m_strOwn.View());
}

CParser::CParser(InPlace text, const char* delimiters, bool throws) : m_bThrow(throws) {
  SetDelimiters(delimiters);
  Start(text.text);
}

void CParser::SetDelimiters(const char* delimiters) {
  m_cFirst = m_cSecond = static_cast<unsigned char>(delimiters[0]);
  if (m_cFirst == 0 || delimiters[1] == 0) return;
  m_cSecond = static_cast<unsigned char>(delimiters[1]);
  if (delimiters[2] != 0) m_strMore = delimiters + 2;
}

void CParser::SetString(CString text) {
  m_strOwn = std::move(text);
  Start(m_strOwn.View());
}

// To the first field. An empty text has none.
void CParser::Start(std::u16string_view text) {
  m_Text = text;
  m_pNext = text.data();
  m_pEnd = text.data() + text.size();
  m_bMore = !text.empty();
  MarkBlock(text.data());
}

// Marks the delimiters of the block that begins at `start`.
void CParser::MarkBlock(const WCHAR* start) {
  const std::u16string_view block(start, static_cast<std::size_t>(m_pEnd - start));
  m_pBlock = start;
  m_Marks = textscan::MatchBits(block, m_cFirst, m_cSecond);
  if (m_strMore.IsEmpty()) return;
  for (const WCHAR c : m_strMore.View()) m_Marks |= textscan::MatchBits(block, c, c);
}

CString CParser::GetRemainingBuffer() const {
  return CString(m_Text.substr(static_cast<std::size_t>(m_pNext - m_Text.data())));
}

// Every field takes the mark of the delimiter that ends it.
inline bool CParser::NextField(std::u16string_view& field) {
  if (m_Marks == 0) return FieldBeyondBlock(field);
  const WCHAR* const end = m_pBlock + std::countr_zero(m_Marks);
  m_Marks &= m_Marks - 1;
  field = {m_pNext, static_cast<std::size_t>(end - m_pNext)};
  m_pNext = end + 1;
  return true;
}

// A field that no mark of the current block ends. The last one ends with the text.
bool CParser::FieldBeyondBlock(std::u16string_view& field) {
  if (!m_bMore) return false;
  while (m_Marks == 0 && m_pEnd - m_pBlock > textscan::kBlock) MarkBlock(m_pBlock + textscan::kBlock);
  if (m_Marks != 0) return NextField(field);
  field = {m_pNext, static_cast<std::size_t>(m_pEnd - m_pNext)};
  m_pNext = m_pEnd;
  m_bMore = false;
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

bool CParser::GetField(std::u16string_view& field) {
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
  if (textscan::ReadShortNumber(field, m_pEnd, out)) return true;
  return ParseInt(field, &out) || Fail();
}

bool CParser::GetDouble(double& out) {
  std::u16string_view field;
  if (!NextField(field)) return Fail();
  if (ParseShortDecimal(field, m_Text.data(), out)) return true;
  double value = 0.0;
  int remaining = 0;
  if (!ParseDouble(field, value, remaining)) return Fail();
  out = value;
  return true;
}
