#include "gpsengine/text/parser.h"

#include <algorithm>
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
  m_pBlock = m_pEnd;
  m_Marks = 0;
  if (!text.empty()) MarkBlock(text.data());
}

// Marks the delimiters of the block that begins at `start`, and the end of the text behind the last of them.
void CParser::MarkBlock(const WCHAR* start) {
  const std::u16string_view block(start, static_cast<std::size_t>(m_pEnd - start));
  m_pBlock = start;
  m_Marks = textscan::MatchBits(block, m_cFirst, m_cSecond);
  if (block.size() < textscan::kBlock) m_Marks |= std::uint64_t{1} << block.size();
  if (m_strMore.IsEmpty()) return;
  for (const WCHAR c : m_strMore.View()) m_Marks |= textscan::MatchBits(block, c, c);
}

CString CParser::GetRemainingBuffer() const {
  return CString(std::u16string_view(std::min(m_pNext, m_pEnd), m_pEnd));
}

// Every field takes the mark at its end.
inline std::u16string_view CParser::TakeField() {
  const WCHAR* const end = m_pBlock + std::countr_zero(m_Marks);
  m_Marks &= m_Marks - 1;
  return {std::exchange(m_pNext, end + 1), end};
}

// Whether a field ends in one of the blocks to come.
bool CParser::HasFieldBeyondBlock() {
  while (m_Marks == 0 && m_pEnd - m_pBlock >= textscan::kBlock) MarkBlock(m_pBlock + textscan::kBlock);
  return m_Marks != 0;
}

bool CParser::Fail() const {
  if (m_bThrow) AfxThrowUserException();
  return false;
}

bool CParser::SkipField() {
  if (!HasField()) return Fail();
  TakeField();
  return true;
}

bool CParser::GetField(std::u16string_view& field) {
  if (!HasField()) return Fail();
  field = TakeField();
  return true;
}

bool CParser::GetNextString(CString& out) {
  if (!HasField()) return Fail();
  out.Assign(TakeField());
  return true;
}

// Most numbers are short and plain. The others are calls of their own at the end, for which these save no
// registers.
bool CParser::GetInt(int& out) {
  if (m_Marks == 0) return GetBeyondBlock(&CParser::GetInt, out);
  const auto field = TakeField();
  return textscan::ReadShortNumber(field, m_pEnd, out) || IntOf(field, out);
}

bool CParser::GetDouble(double& out) {
  if (m_Marks == 0) return GetBeyondBlock(&CParser::GetDouble, out);
  const auto field = TakeField();
  return ParseShortDecimal(field, m_Text.data(), out) || DoubleOf(field, out);
}

template <class Number>
bool CParser::GetBeyondBlock(bool (CParser::*get)(Number&), Number& out) {
  return HasFieldBeyondBlock() ? (this->*get)(out) : Fail();
}

bool CParser::IntOf(std::u16string_view field, int& out) const {
  return ParseInt(field, &out) || Fail();
}

bool CParser::DoubleOf(std::u16string_view field, double& out) const {
  double value = 0.0;
  int remaining = 0;
  if (!ParseDouble(field, value, remaining)) return Fail();
  out = value;
  return true;
}
