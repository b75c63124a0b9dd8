#pragma once

#include <compare>
#include <string>
#include <string_view>

#include "gpsengine/platform/types.h"

#pragma GCC visibility push(default)

/// Text of 16-bit characters, of which up to kInPlace are stored in the object itself. An index or count out
/// of range is clamped. 8-bit text is widened byte by byte, unsigned, so bytes from the wire keep their
/// value. One object belongs to one thread at a time; copies of it may go to others.
class CString {
 public:
  /// Long enough for any NMEA sentence, so that sentences need no heap allocation.
  static constexpr int kInPlace = 119;

  /// An empty text.
  CString() noexcept : m_nLength(0), m_nCapacity(kInPlace) { m_Store.szInPlace[0] = 0; }
  /// A copy of the characters, or the source's own, which is empty then.
  ///@{
  CString(const CString& other) : CString() { CopyFrom(other); }
  CString(CString&& other) noexcept : m_nLength(0), m_nCapacity(kInPlace) { TakeFrom(other); }
  ///@}
  CString(const char* psz);   ///< Null gives an empty text.
  CString(const WCHAR* psz);  ///< Null gives an empty text.
  /// `nLength` characters, which may include zeroes.
  ///@{
  CString(const char* p, int nLength);
  CString(const WCHAR* p, int nLength);
  ///@}
  /// A copy of the characters.
  explicit CString(std::u16string_view text) : CString() { Assign(text); }
  /// The character, `nRepeat` times.
  explicit CString(WCHAR c, int nRepeat = 1);
  ~CString() { Release(); }

  /// As the constructors do.
  ///@{
  CString& operator=(const CString& other) {
    if (this != &other) {
      Empty();
      CopyFrom(other);
    }
    return *this;
  }
  CString& operator=(CString&& other) noexcept {
    if (this != &other) {
      Release();
      TakeFrom(other);
    }
    return *this;
  }
  ///@}

  /// The number of characters, and whether it is 0.
  ///@{
  int GetLength() const noexcept { return m_nLength; }
  bool IsEmpty() const noexcept { return m_nLength == 0; }
  ///@}
  /// Clears the text and frees the memory of a long one.
  void Empty() noexcept;
  /// The characters with a terminating zero; valid until the text changes.
  const WCHAR* GetString() const noexcept { return IsLong() ? m_Store.pLong : m_Store.szInPlace; }
  /// The characters; valid until the text changes.
  std::u16string_view View() const noexcept { return {GetString(), static_cast<std::size_t>(m_nLength)}; }
  /// One character; 0 for an index out of range.
  ///@{
  WCHAR GetAt(int nIndex) const noexcept {
    return nIndex >= 0 && nIndex < m_nLength ? GetString()[nIndex] : WCHAR{0};
  }
  WCHAR operator[](int nIndex) const noexcept { return GetAt(nIndex); }
  ///@}
  /// Replaces one character; nothing happens for an index out of range.
  void SetAt(int nIndex, WCHAR c);

  /// Room for at least `nMinLength` characters that the caller may write; ReleaseBuffer must follow.
  WCHAR* GetBuffer(int nMinLength);
  /// Ends a GetBuffer; -1 keeps the text up to its first zero.
  void ReleaseBuffer(int nNewLength = -1);

  /// Replaces the text. The argument must not alias this text.
  void Assign(std::u16string_view text) {
    if (IsLong() || text.size() > kInPlace) {
      AssignLong(text);
      return;
    }
    std::char_traits<WCHAR>::copy(m_Store.szInPlace, text.data(), text.size());
    m_Store.szInPlace[text.size()] = 0;
    m_nLength = static_cast<int>(text.size());
  }
  /// Appends. The argument may alias this text.
  ///@{
  CString& operator+=(const CString& other) { return Append(other.GetString(), other.m_nLength); }
  CString& operator+=(const char* psz) { return *this += CString(psz); }
  CString& operator+=(WCHAR c) { return Append(&c, 1); }
  CString& Append(const WCHAR* p, int nLength);
  ///@}

  /// The first `nCount` characters.
  CString Left(int nCount) const;
  /// The last `nCount` characters.
  CString Right(int nCount) const;
  /// `nCount` characters from index `nFirst`, or all from there.
  ///@{
  CString Mid(int nFirst) const { return Mid(nFirst, m_nLength); }
  CString Mid(int nFirst, int nCount) const;
  ///@}

  /// Index of the first match at or after `nStart`, or -1.
  ///@{
  int Find(WCHAR c, int nStart = 0) const noexcept;
  int Find(const CString& text, int nStart = 0) const noexcept;
  ///@}
  /// Index of the first character that is one of `characters`, or -1.
  int FindOneOf(const CString& characters) const noexcept;
  /// Whether the text begins with these ASCII characters.
  bool StartsWith(std::string_view text) const noexcept;

  void MakeUpper();                             ///< ASCII letters only.
  int Insert(int nIndex, const CString& text);  ///< Returns the new length.
  int Remove(WCHAR c);                          ///< Returns the number of characters removed.
  int Replace(const CString& oldText,
              const CString& newText);  ///< One pass from the left; returns the count.

  /// Negative, 0 or positive, by character value.
  int Compare(const CString& other) const noexcept { return View().compare(other.View()); }
  int CompareNoCase(const CString& other) const noexcept;  ///< ASCII letters only.
  /// By character value.
  ///@{
  friend bool operator==(const CString& a, const CString& b) noexcept { return a.View() == b.View(); }
  friend auto operator<=>(const CString& a, const CString& b) noexcept { return a.View() <=> b.View(); }
  ///@}
  /// Concatenates.
  friend CString operator+(CString a, const CString& b) { return std::move(a += b); }

  /// Replaces the text, as printf does it in the C locale, so that a decimal point is a point whatever the
  /// host has made of its own. Texts among the arguments are UTF-8.
  [[gnu::format(printf, 2, 3)]] void Format(const char* pszFormat, ...);

  /// The text as 8-bit bytes for the wire. False, with `bytes` empty, if a character is above 255.
  bool ToBytes(std::string& bytes) const;
  /// The same into room for as many bytes as the text has characters, where anything stands if it is false.
  bool ToBytes(char* bytes) const;
  std::string ToUtf8() const;  ///< For paths and terminals; a lone surrogate becomes U+FFFD.
  static CString FromUtf8(std::string_view text);  ///< A malformed sequence becomes U+FFFD.

 private:
  void AssignLong(std::u16string_view text);
  void CopyFrom(const CString& other);
  void TakeFrom(CString& other) noexcept;
  bool IsLong() const noexcept { return m_nCapacity > kInPlace; }
  void Release() noexcept {
    if (IsLong()) delete[] m_Store.pLong;
  }

  int m_nLength;
  int m_nCapacity;  // kInPlace, or more on the heap
  union {
    WCHAR szInPlace[kInPlace + 1];
    WCHAR* pLong;
  } m_Store;
};

/// Compares with 8-bit text, widened.
inline bool operator==(const CString& a, const char* b) noexcept {
  return a == CString(b);
}

#pragma GCC visibility pop
