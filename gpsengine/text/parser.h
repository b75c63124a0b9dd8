#pragma once

#include <cstdint>

#include "gpsengine/platform/cstring.h"

#pragma GCC visibility push(default)

/// Takes a sentence apart, field by field. Any one of the delimiters, which are ASCII characters, ends a
/// field, so that two in a row have an empty field between them; an empty text has no field at all.
///
/// Every read moves on by one field, good or bad. A read that cannot give a value throws a CUserException if
/// throwing is on, else it gives false; either way its output keeps its value. An empty field is a text, but
/// no number.
class CParser {
 public:
  /// Before the first field. The text is copied. With `bThrow` a read that cannot give a value throws.
  ///@{
  CParser(const CString& strText, const CString& strDelimiters, bool bThrow);
  CParser(const CString& strText, const char* pszDelimiters, bool bThrow);
  ///@}
  /// A text that is read where it lies, without a copy: it outlives the parser and stays as it is meanwhile.
  struct InPlace {
    /// Of this text.
    explicit InPlace(const CString& strText) : text(strText.View()) {}
    explicit InPlace(const CString&&) = delete;
    std::u16string_view text;  ///< What is read.
  };
  /// Before the first field of that text.
  CParser(InPlace text, const char* pszDelimiters, bool bThrow);
  CParser(const CParser&) = delete;
  CParser& operator=(const CParser&) = delete;

  /// The next field as it stands.
  bool GetNextString(CString& out);
  /// The same without a copy; good as long as the parser's text.
  bool GetField(std::u16string_view& field);
  /// The next field as ParseInt reads it: text after the number is passed over.
  bool GetInt(int& out);
  /// The next field as ParseDouble reads it.
  bool GetDouble(double& out);
  /// What the reads to come do when they cannot give a value.
  void SetExceptionThrowing(bool bThrow) { m_bThrow = bThrow; }
  /// Starts over on a new text with the same delimiters.
  void SetString(CString strText);
  /// The text after the delimiter that ended the last field read.
  CString GetRemainingBuffer() const;

  /// Passes over the next field. False, or an exception, if there is none.
  bool SkipField();

 private:
  bool HasField() { return m_Marks != 0 || HasFieldBeyondBlock(); }
  std::u16string_view TakeField();
  bool HasFieldBeyondBlock();
  template <class Number>
  [[gnu::noinline]] bool GetBeyondBlock(bool (CParser::*get)(Number&), Number& out);
  [[gnu::noinline]] bool IntOf(std::u16string_view field, int& out) const;
  [[gnu::noinline]] bool DoubleOf(std::u16string_view field, double& out) const;
  bool Fail() const;
  void SetDelimiters(const char* pszDelimiters);
  void Start(std::u16string_view text);
  void MarkBlock(const WCHAR* pBlock);

  CString m_strOwn;                 // the text, unless it is read where it lies
  std::u16string_view m_Text;       // what is read
  const WCHAR* m_pNext = nullptr;   // start of the next field
  const WCHAR* m_pEnd = nullptr;    // of the text
  const WCHAR* m_pBlock = nullptr;  // start of the block whose delimiters are marked
  std::uint64_t m_Marks = 0;        // ends of fields in that block which are still to come, a bit a character
  WCHAR m_cFirst = 0;               // the delimiters; one alone stands in both
  WCHAR m_cSecond = 0;
  CString m_strMore;  // those beyond the second
  bool m_bThrow;
};

#pragma GCC visibility pop
