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
  CParser(const CParser&) = delete;
  CParser& operator=(const CParser&) = delete;

  /// The next field as it stands.
  bool GetNextString(CString& out);
  /// The next field as ParseInt reads it: text behind the number is passed over.
  bool GetInt(int& out);
  /// The next field as ParseDouble reads it.
  bool GetDouble(double& out);
  /// What the reads to come do when they cannot give a value.
  void SetExceptionThrowing(bool bThrow) { m_bThrow = bThrow; }
  /// Starts over on a new text with the same delimiters.
  void SetString(CString strText);
  /// The text behind the delimiter that ended the last field read.
  CString GetRemainingBuffer() const;

  /// Passes over the next field. False, or an exception, if there is none.
  bool SkipField();

 private:
  bool NextField(std::u16string_view& field);
  bool Fail() const;
  void Rewind();
  void MarkBlock(int nBlock);

  CString m_strText;
  std::u16string_view m_Text;  // of m_strText
  WCHAR m_cFirst = 0;          // the delimiters; one alone stands in both
  WCHAR m_cSecond = 0;
  CString m_strMore;          // those beyond the second
  std::uint64_t m_Marks = 0;  // where delimiters still to come stand in the block at hand, a bit a character
  int m_nBlock = 0;           // start of that block
  int m_nNext = 0;            // start of the next field; behind the end when there is none
  bool m_bThrow;
};

#pragma GCC visibility pop
