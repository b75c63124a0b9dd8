#include "gpsengine/platform/cstring.h"

#include <algorithm>
#include <cstdarg>
#include <cstring>

#include "gpsengine/platform/system.h"
#include "gpsengine/platform/textscan.h"

namespace {

WCHAR Upper(WCHAR c) {
  return c >= u'a' && c <= u'z' ? static_cast<WCHAR>(c - u'a' + u'A') : c;
}

int Length(const WCHAR* psz) {
  return psz == nullptr ? 0 : static_cast<int>(std::u16string_view(psz).size());
}

void CopyText(WCHAR* to, const WCHAR* from, int length) {
  if (length > 0) std::memcpy(to, from, static_cast<std::size_t>(length) * sizeof(WCHAR));
}

}  // namespace

CString::CString(const char* psz) : CString(psz, psz == nullptr ? 0 : static_cast<int>(std::strlen(psz))) {}

CString::CString(const WCHAR* psz) : CString(psz, Length(psz)) {}

CString::CString(const char* p, int length) : CString() {
  if (p == nullptr || length <= 0) return;
  WCHAR* text = GetBuffer(length);
  textscan::WidenText(p, length, text);
  ReleaseBuffer(length);
}

CString::CString(const WCHAR* p, int length) : CString() {
  Append(p, length);
}

CString::CString(WCHAR c, int repeat) : CString() {
  if (repeat <= 0) return;
  std::fill_n(GetBuffer(repeat), repeat, c);
  ReleaseBuffer(repeat);
}

void CString::CopyFrom(const CString& other) {
  if (other.IsLong()) {
    Append(other.m_Store.pLong, other.m_nLength);
  } else {
    CopyText(m_Store.szInPlace, other.m_Store.szInPlace, other.m_nLength + 1);
    m_nLength = other.m_nLength;
  }
}

void CString::TakeFrom(CString& other) noexcept {
  m_nLength = other.m_nLength;
  m_nCapacity = other.m_nCapacity;
  if (IsLong()) {
    m_Store.pLong = other.m_Store.pLong;
  } else {
    CopyText(m_Store.szInPlace, other.m_Store.szInPlace, m_nLength + 1);
  }
  other.m_nCapacity = kInPlace;
  other.m_nLength = 0;
  other.m_Store.szInPlace[0] = 0;
}

void CString::Empty() noexcept {
  Release();
  m_nCapacity = kInPlace;
  m_nLength = 0;
  m_Store.szInPlace[0] = 0;
}

void CString::SetAt(int at, WCHAR c) {
  if (at < 0 || at >= m_nLength) return;
  GetBuffer(m_nLength)[at] = c;
}

WCHAR* CString::GetBuffer(int least) {
  const int needed = std::max(least, m_nLength);
  if (needed <= m_nCapacity) return IsLong() ? m_Store.pLong : m_Store.szInPlace;
  // Half as much again, so that a text that grows by appending is copied a few times only.
  const int capacity = needed + needed / 2;
  auto* const text = new WCHAR[static_cast<std::size_t>(capacity) + 1];
  CopyText(text, GetString(), m_nLength + 1);
  Release();
  m_Store.pLong = text;
  m_nCapacity = capacity;
  return text;
}

void CString::ReleaseBuffer(int new_length) {
  WCHAR* text = IsLong() ? m_Store.pLong : m_Store.szInPlace;
  text[m_nCapacity] = 0;
  m_nLength = new_length < 0 ? Length(text) : std::min(new_length, m_nCapacity);
  text[m_nLength] = 0;
}

void CString::AssignLong(std::u16string_view text) {
  Empty();
  Append(text.data(), static_cast<int>(text.size()));
}

CString& CString::Append(const WCHAR* p, int length) {
  if (p == nullptr || length <= 0) return *this;
  if (p >= GetString() && p <= GetString() + m_nLength) {
    const CString own(*this);  // keeps the text that is appended to itself
    return Append(own.GetString() + (p - GetString()), length);
  }
  WCHAR* const end = GetBuffer(m_nLength + length) + m_nLength;
  CopyText(end, p, length);
  end[length] = 0;
  m_nLength += length;
  return *this;
}

CString CString::Left(int wanted) const {
  return Mid(0, wanted);
}

CString CString::Right(int wanted) const {
  const int count = std::clamp(wanted, 0, m_nLength);
  return Mid(m_nLength - count, count);
}

CString CString::Mid(int from, int wanted) const {
  const int first = std::clamp(from, 0, m_nLength);
  const int count = std::clamp(wanted, 0, m_nLength - first);
  if (count == m_nLength) return *this;
  return CString(GetString() + first, count);
}

int CString::Find(WCHAR c, int start) const noexcept {
  // A negative start becomes one beyond any end, where nothing is found.
  const auto index = View().find(c, static_cast<std::size_t>(start));
  return index == std::u16string_view::npos ? -1 : static_cast<int>(index);
}

int CString::Find(const CString& text, int start) const noexcept {
  const auto index = View().find(text.View(), static_cast<std::size_t>(start));
  return index == std::u16string_view::npos ? -1 : static_cast<int>(index);
}

int CString::FindOneOf(const CString& characters) const noexcept {
  const auto index = View().find_first_of(characters.View());
  return index == std::u16string_view::npos ? -1 : static_cast<int>(index);
}

bool CString::StartsWith(std::string_view text) const noexcept {
  if (text.size() > static_cast<std::size_t>(m_nLength)) return false;
  const WCHAR* own = GetString();
  return std::equal(text.begin(), text.end(), own,
                    [](char a, WCHAR b) { return static_cast<unsigned char>(a) == b; });
}

void CString::MakeUpper() {
  WCHAR* text = GetBuffer(m_nLength);
  std::transform(text, text + m_nLength, text, Upper);
}

int CString::Insert(int at, const CString& text) {
  const int index = std::clamp(at, 0, m_nLength);
  *this = Left(index) + text + Mid(index);
  return m_nLength;
}

int CString::Remove(WCHAR c) {
  const int length = m_nLength;
  WCHAR* text = GetBuffer(length);
  const int kept = static_cast<int>(std::remove(text, text + length, c) - text);
  ReleaseBuffer(kept);
  return length - kept;
}

int CString::Replace(const CString& old_text, const CString& new_text) {
  if (old_text.IsEmpty()) return 0;
  int count = 0;
  int from = 0;
  CString result;
  for (int at = Find(old_text); at >= 0; at = Find(old_text, from)) {
    result.Append(GetString() + from, at - from);
    result += new_text;
    from = at + old_text.m_nLength;
    ++count;
  }
  if (count == 0) return 0;
  result.Append(GetString() + from, m_nLength - from);
  *this = std::move(result);
  return count;
}

int CString::CompareNoCase(const CString& other) const noexcept {
  const WCHAR* a = GetString();
  const WCHAR* b = other.GetString();
  const int common = std::min(m_nLength, other.m_nLength);
  for (int i = 0; i < common; ++i) {
    if (Upper(a[i]) != Upper(b[i])) return Upper(a[i]) < Upper(b[i]) ? -1 : 1;
  }
  return m_nLength == other.m_nLength ? 0 : m_nLength < other.m_nLength ? -1 : 1;
}

bool CString::ToBytes(std::string& bytes) const {
  bytes.resize(View().size());
  if (ToBytes(bytes.data())) return true;
  bytes.clear();
  return false;
}

bool CString::ToBytes(char* bytes) const {
  return textscan::Narrow(View(), bytes);
}

namespace {

constexpr char32_t kReplacement = 0xFFFD;

void AppendUtf8(std::string& out, char32_t c) {
  const auto byte = [&](char32_t value) { out += static_cast<char>(value); };
  if (c < 0x80) {
    byte(c);
  } else if (c < 0x800) {
    byte(0xC0 | c >> 6);
    byte(0x80 | (c & 0x3F));
  } else if (c < 0x10000) {
    byte(0xE0 | c >> 12);
    byte(0x80 | (c >> 6 & 0x3F));
    byte(0x80 | (c & 0x3F));
  } else {
    byte(0xF0 | c >> 18);
    byte(0x80 | (c >> 12 & 0x3F));
    byte(0x80 | (c >> 6 & 0x3F));
    byte(0x80 | (c & 0x3F));
  }
}

// Takes one character off the head of `text`.
char32_t TakeUtf8(std::string_view& text) {
  const auto first = static_cast<unsigned char>(text.front());
  text.remove_prefix(1);
  if (first < 0x80) return first;
  const int following = first >= 0xF0 && first < 0xF5 ? 3 : first >= 0xE0 ? 2 : first >= 0xC2 ? 1 : 0;
  if (following == 0 || first >= 0xF5) return kReplacement;
  char32_t c = first & (0x3Fu >> following);
  for (int i = 0; i < following; ++i) {
    if (text.empty() || (static_cast<unsigned char>(text.front()) & 0xC0) != 0x80) return kReplacement;
    c = c << 6 | (static_cast<unsigned char>(text.front()) & 0x3F);
    text.remove_prefix(1);
  }
  constexpr char32_t kLeast[] = {0, 0x80, 0x800, 0x10000};
  const bool surrogate = c >= 0xD800 && c < 0xE000;
  return c < kLeast[following] || c > 0x10FFFF || surrogate ? kReplacement : c;
}

}  // namespace

std::string CString::ToUtf8() const {
  std::string out;
  out.reserve(static_cast<std::size_t>(m_nLength));
  const auto text = View();
  for (std::size_t i = 0; i < text.size(); ++i) {
    char32_t c = text[i];
    const bool high = c >= 0xD800 && c < 0xDC00;
    if (high && i + 1 < text.size() && text[i + 1] >= 0xDC00 && text[i + 1] < 0xE000) {
      c = 0x10000 + ((c - 0xD800) << 10) + (text[++i] - 0xDC00u);
    } else if (c >= 0xD800 && c < 0xE000) {
      c = kReplacement;
    }
    AppendUtf8(out, c);
  }
  return out;
}

CString CString::FromUtf8(std::string_view text) {
  CString out;
  while (!text.empty()) {
    const char32_t c = TakeUtf8(text);
    if (c < 0x10000) {
      out += static_cast<WCHAR>(c);
    } else {
      out += static_cast<WCHAR>(0xD800 + ((c - 0x10000) >> 10));
      out += static_cast<WCHAR>(0xDC00 + ((c - 0x10000) & 0x3FF));
    }
  }
  return out;
}

void CString::Format(const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  *this = FromUtf8(PrintPlain(format, arguments));
  va_end(arguments);
}
