#pragma once

#include <array>
#include <compare>
#include <concepts>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>

#include "gpsengine/platform/types.h"

#pragma GCC visibility push(default)

class CString;

/// What CString::Format is built from: conversions of the printf kind whose arguments are checked when the
/// call compiles. Supported are %d %i %u %x %X %c (integers), %f %e %g (floating point), %s (text) and %%,
/// each with the usual flags, width and precision.
namespace textformat {

enum class Kind : char { none, integer, real, text };

struct Argument {
  Kind kind = Kind::none;
  long long integer = 0;
  double real = 0.0;
  std::u16string_view wide{};  // a text is in one of these two
  std::string_view narrow{};
};

template <class T>
consteval Kind KindOf() {
  using U = std::remove_cvref_t<T>;
  if constexpr (std::floating_point<U>) return Kind::real;
  if constexpr (std::integral<U> || std::is_enum_v<U>) return Kind::integer;
  if constexpr (std::same_as<U, CString> || std::convertible_to<T, std::u16string_view> ||
                std::convertible_to<T, std::string_view>)
    return Kind::text;
  return Kind::none;
}

constexpr Kind KindOfConversion(char c) {
  switch (c) {
    case 'd':
    case 'i':
    case 'u':
    case 'x':
    case 'X':
    case 'c':
      return Kind::integer;
    case 'f':
    case 'e':
    case 'g':
      return Kind::real;
    case 's':
      return Kind::text;
    default:
      return Kind::none;
  }
}

/// Whether the conversions of `format` are just those that `kinds` can serve, in number and in kind.
constexpr bool Fits(std::string_view format, std::span<const Kind> kinds) {
  std::size_t used = 0;
  for (std::size_t i = 0; i < format.size(); ++i) {
    if (format[i] != '%') continue;
    ++i;
    while (i < format.size() && std::string_view("-+ #0123456789.").find(format[i]) != std::string_view::npos)
      ++i;
    if (i == format.size()) return false;
    if (format[i] == '%') continue;
    const Kind wanted = KindOfConversion(format[i]);
    if (wanted == Kind::none || used == kinds.size() || kinds[used] != wanted) return false;
    ++used;
  }
  return used == kinds.size();
}

template <class... Args>
struct Checked {
  consteval Checked(const char* text) : m_Text(text) {  // NOLINT(google-explicit-constructor)
    constexpr std::array<Kind, sizeof...(Args) + 1> kinds{KindOf<Args>()..., Kind::none};
    if (!Fits(m_Text, std::span(kinds).first(sizeof...(Args)))) throw "the arguments do not fit the format";
  }
  std::string_view m_Text;
};

template <class T>
Argument MakeArgument(const T& value);

}  // namespace textformat

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

  /// Replaces the text, as the format and its arguments say. A wrong argument does not compile.
  template <class... Args>
  void Format(textformat::Checked<std::type_identity_t<Args>...> format, const Args&... args) {
    const std::array<textformat::Argument, sizeof...(Args) + 1> list{textformat::MakeArgument(args)..., {}};
    FormatArguments(format.m_Text, std::span(list).first(sizeof...(Args)));
  }
  /// The same for a format that is known only at run time, such as one from the string table: a conversion
  /// that does not fit its argument prints the argument in its plain form, one without an argument prints
  /// nothing.
  template <std::same_as<CString> Text, class... Args>
  void Format(const Text& format, const Args&... args) {
    const std::array<textformat::Argument, sizeof...(Args) + 1> list{textformat::MakeArgument(args)..., {}};
    FormatArguments(format.ToUtf8(), std::span(list).first(sizeof...(Args)));
  }

  /// The text as 8-bit bytes for the wire. False, with `bytes` untouched, if a character is above 255.
  bool ToBytes(std::string& bytes) const;
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
  void FormatArguments(std::string_view format, std::span<const textformat::Argument> arguments);

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

namespace textformat {

template <class T>
Argument MakeArgument(const T& value) {
  Argument argument;
  argument.kind = KindOf<const T&>();
  static_assert(KindOf<const T&>() != Kind::none, "this type cannot be formatted");
  if constexpr (KindOf<const T&>() == Kind::real) {
    argument.real = static_cast<double>(value);
  } else if constexpr (KindOf<const T&>() == Kind::integer) {
    argument.integer = static_cast<long long>(value);
  } else if constexpr (std::same_as<T, CString>) {
    argument.wide = value.View();
  } else if constexpr (std::convertible_to<const T&, std::u16string_view>) {
    argument.wide = value;
  } else {
    argument.narrow = value;
  }
  return argument;
}

}  // namespace textformat

#pragma GCC visibility pop
