#include "gpsengine/link/binbuffer.h"

#include <algorithm>
#include <cstring>
#include <new>

#include "gpsengine/platform/textscan.h"
#include "gpsengine/platform/trace.h"

namespace {

constexpr char kTextEnd = '\r';
constexpr char kOemSync[] = {'\xAA', '\x44', '\x12'};
constexpr int kOemSyncLength = 3;
// From here on the lengths in an OEM header can be read.
constexpr int kOemLeast = 29;
constexpr int kOemCrc = 4;
constexpr std::string_view kOemTag = "Axis4OEMBinaryTagPlaceHolder";

// Messages of a fixed length, which may hold any byte.
struct FixedLength {
  std::string_view name;
  int nLength;
};
constexpr FixedLength kAshtechKinds[] = {{"MBN", 54}, {"MCA", 49}, {"PBN", 68}, {"SAL", 82}, {"SNV", 144}};

constexpr std::size_t kKindLength = 3;

struct BlockLength {
  char number;
  int nLength;
};
constexpr BlockLength kBinBlocks[] = {{95, 140}, {96, 312}};

char Upper(char c) {
  return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

bool EqualNoCase(std::string_view a, std::string_view b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [](char x, char y) { return Upper(x) == Upper(y); });
}

CString ToText(std::string_view bytes) {
  return CString(bytes.data(), static_cast<int>(bytes.size()));
}

bool IsBin(const char* start, const char* end) {
  return end - start > 3 && std::memcmp(start + 1, "BIN", 3) == 0;
}

}  // namespace

CBinBuffer::CBinBuffer(const CString& text) {
  const auto characters = text.View();
  m_Bytes.resize(characters.size());
  std::transform(characters.begin(), characters.end(), m_Bytes.begin(),
                 [](WCHAR c) { return static_cast<char>(c); });
  m_nLength = text.GetLength();
}

bool CBinBuffer::Set(const char* data, int length, int message_length) {
  Clear();
  if (data == nullptr || length < 1) return false;
  try {
    Append(data, length);
    m_nMessageLength = message_length;
  } catch (const std::bad_alloc&) {
    Trace("Can't set\n");
  }
  return true;
}

const CBinBuffer& CBinBuffer::operator+=(const CBinBuffer& other) {
  if (&other == this) {
    const CBinBuffer copy(other);
    return *this += copy;
  }
  Append(other.m_Bytes.data(), other.m_nLength);
  return *this;
}

void CBinBuffer::Append(const char* data, int length) {
  if (data == nullptr || length < 1) return;
  m_Bytes.insert(m_Bytes.end(), data, data + length);
  m_nLength = static_cast<int>(m_Bytes.size());
}

void CBinBuffer::Clear() {
  m_Bytes.clear();
  m_nCurrent = m_nMessageLength = m_nLength = 0;
  m_nNoComma = m_nNoCommaEnd = 0;
}

void CBinBuffer::SetSize(int size) {
  m_Bytes.resize(static_cast<std::size_t>(std::max(size, 0)));
  m_nLength = static_cast<int>(m_Bytes.size());
  m_nMessageLength = std::min(m_nMessageLength, std::max(BytesLeft(), 0));
  m_nNoComma = m_nNoCommaEnd = 0;
}

char& CBinBuffer::operator[](int index) {
  m_nNoComma = m_nNoCommaEnd = 0;  // the byte may become a comma
  return m_Bytes.at(static_cast<std::size_t>(index));
}

bool CBinBuffer::First() {
  m_nCurrent = m_nMessageLength = 0;
  return GetCurrentMessage();
}

bool CBinBuffer::Next() {
  if (m_nCurrent < m_nLength) {
    // After everything but "#" logs and OEM messages stands the line feed of a line end, or a byte that
    // takes its place.
    const bool alone = *GetPtr(m_nCurrent) == '#' || IsOemSync(m_nCurrent);
    m_nCurrent += alone ? m_nMessageLength : m_nMessageLength + 1;
  }
  return GetCurrentMessage();
}

bool CBinBuffer::GetCurrentMessage() {
  m_nMessageLength = 0;
  Head head;
  if (!FindHead(head)) return false;
  const int binary = head.bOem ? m_nMessageLength : BinaryLength(head);
  const int length = binary > 0 ? binary : TextLength();
  if (length > BytesLeft()) return false;
  m_nMessageLength = length;
  return length > 0;
}

void CBinBuffer::Resize() {
  if (m_nLength == 0 || m_nCurrent <= 0) return;
  if (BytesLeft() <= 0) {
    Clear();
    return;
  }
  m_Bytes.erase(m_Bytes.begin(), m_Bytes.begin() + m_nCurrent);
  m_nCurrent = m_nMessageLength = 0;
  m_nNoComma = m_nNoCommaEnd = 0;
  m_nLength = static_cast<int>(m_Bytes.size());
}

bool CBinBuffer::GetTag(CString& tag, CString& sub_tag) {
  Head head;
  if (!FindHead(head)) return false;
  tag = ToText(head.tag);
  if (!head.bOem) sub_tag = ToText(head.subTag);
  return true;
}

// Moves on to the next byte that can start a message. False at the end of the buffer.
bool CBinBuffer::SkipNoise() {
  for (; m_nCurrent < m_nLength; ++m_nCurrent) {
    const char c = *GetPtr(m_nCurrent);
    if (c == '$' || c == '#' || IsOemSync(m_nCurrent)) return true;
    const char* next = textscan::FindAny(GetPtr(m_nCurrent) + 1, GetPtr(m_nLength), '$', '#', kOemSync[0]);
    m_nCurrent = (next == nullptr ? m_nLength : static_cast<int>(next - m_Bytes.data())) - 1;
  }
  return false;
}

bool CBinBuffer::IsOemSync(int index) const {
  return index + kOemSyncLength <= m_nLength && std::memcmp(GetPtr(index), kOemSync, kOemSyncLength) == 0;
}

// Works out the length of an OEM message from its header. False until all of the message is there.
bool CBinBuffer::FindOem() {
  if (BytesLeft() < kOemLeast) return false;
  const auto* header = reinterpret_cast<const unsigned char*>(GetPtr(m_nCurrent));
  const int length = header[3] + (header[8] | header[9] << 8) + kOemCrc;
  if (length > BytesLeft()) return false;
  m_nMessageLength = length;
  return true;
}

// The first comma at or after the current place, or null. A stretch without one is looked through once,
// however many messages begin in it.
const char* CBinBuffer::FirstComma() {
  const bool known = m_nCurrent >= m_nNoComma && m_nCurrent < m_nNoCommaEnd;
  const int from = known ? m_nNoCommaEnd : m_nCurrent;
  const char* const comma = textscan::Find(GetPtr(from), GetPtr(m_nLength), ',');
  m_nNoComma = m_nCurrent;
  m_nNoCommaEnd = comma == nullptr ? m_nLength : static_cast<int>(comma - m_Bytes.data());
  return comma;
}

bool CBinBuffer::FindHead(Head& head) {
  if (!SkipNoise()) return false;
  if (IsOemSync(m_nCurrent)) {
    head.bOem = true;
    head.tag = kOemTag;
    return FindOem();
  }
  const char* const start = GetPtr(m_nCurrent);
  const char* const end = GetPtr(m_nLength);
  const char* const first = FirstComma();
  head.bBin = IsBin(start, first != nullptr ? first : end);
  if (first == nullptr || head.bBin) {
    head.tag = std::string_view(start, end).substr(0, 4);
    return BytesLeft() > 4;
  }
  // A sentence with a single comma waits for the next one, be it that of a later sentence: only then can it
  // be told from a binary record, whose kind is its second field.
  const char* const second = textscan::Find(first + 1, end, ',');
  if (second == nullptr) return false;
  head.tag = {start, first};
  head.subTag = {first + 1, second};
  return true;
}

// The length of a message of fixed length, or 0 if it is a text.
int CBinBuffer::BinaryLength(const Head& head) const {
  if (head.subTag.size() == kKindLength) {
    for (const FixedLength& kind : kAshtechKinds) {
      if (EqualNoCase(head.subTag, kind.name)) return kind.nLength;
    }
  }
  const char* const start = GetPtr(m_nCurrent);
  if (!head.bBin || *start != '$') return 0;
  for (const BlockLength& block : kBinBlocks) {
    if (start[4] == block.number) return block.nLength;
  }
  return 0;
}

// The length of the current text message, or 0 if its end has not come. A "#" log also ends before the next
// one.
int CBinBuffer::TextLength() const {
  const char* const start = GetPtr(m_nCurrent);
  const char* const buffer_end = GetPtr(m_nLength);
  const char* const end = *start == '#' ? textscan::FindAny(start + 1, buffer_end, '#', kTextEnd, kTextEnd)
                                        : textscan::Find(start, buffer_end, kTextEnd);
  if (end == nullptr) return 0;
  return static_cast<int>(end - start) + (*end == kTextEnd);
}

CString CBinBuffer::GetMessageW() const {
  return HasMessage() ? Mid(m_nCurrent, m_nMessageLength) : CString();
}

CString* CBinBuffer::GetMessageAsPtr() const {
  return new CString(GetMessageW());
}

const char* CBinBuffer::GetMessageBin(int& length) const {
  if (!HasMessage() || m_nCurrent >= m_nLength) return nullptr;
  length = m_nMessageLength;
  return GetPtr(m_nCurrent);
}

CString CBinBuffer::Mid(int start, int wanted) const {
  CString text;
  if (start < 0 || start >= m_nLength) return text;
  const int left = m_nLength - start;
  int count = wanted < 1 || wanted >= left ? left : wanted;
  WCHAR* to = text.GetBuffer(count + 1);
  count = textscan::WidenText(GetPtr(start), count, to);
  to[count] = u'\n';
  text.ReleaseBuffer(count + 1);
  return text;
}

CString* CBinBuffer::Mid2(int start, int wanted) const {
  return new CString(Mid(start, wanted));
}

int CBinBuffer::Find(char c, int start) const {
  if (start < 0 || start >= m_nLength) return -1;
  const char* found = textscan::Find(GetPtr(start), GetPtr(m_nLength), c);
  return found == nullptr ? -1 : static_cast<int>(found - m_Bytes.data());
}
