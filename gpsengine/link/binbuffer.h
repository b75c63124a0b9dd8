#pragma once

#include <string_view>
#include <vector>

#include "gpsengine/platform/cstring.h"

#pragma GCC visibility push(default)

/// Finds whole messages in a receiver's byte stream, and keeps an unfinished one for the next read. A stream
/// may mix text sentences ("$…", "#…"), Ashtech and $BIN records and OEM binary messages (AA 44 12); bytes
/// that belong to none of them are passed over.
///
/// A consumer appends with +=, calls GetCurrentMessage, takes a message and calls Next as long as there is
/// one, and then calls Resize once. No operation reports more than its bool; false from the walk means that
/// more bytes are needed. One object belongs to one thread at a time.
class CBinBuffer {
 public:
  /// An empty buffer.
  CBinBuffer() = default;
  /// A copy of the bytes, with no current message.
  CBinBuffer(const char* pData, int nLength) { Set(pData, nLength, 0); }
  /// One byte per character of `text`, the low byte of each.
  CBinBuffer(const CString& text);

  /// Replaces the content; `nMessageLength` bytes from its start are the current message. False, with the
  /// buffer cleared, if there are no bytes.
  bool Set(const char* pData, int nLength, int nMessageLength);
  /// Appends, and leaves the walk where it is.
  ///@{
  const CBinBuffer& operator+=(const CBinBuffer& other);
  void Append(const char* pData, int nLength);
  ///@}
  /// Empties the buffer and starts the walk over.
  void Clear();

  bool First();  ///< To the first message of the buffer.
  bool Next();   ///< Over the current message, to the one after it.
  /// Finds the message at or after the current place.
  bool GetCurrentMessage();
  /// The walk stands on a whole message.
  bool HasMessage() const { return m_nMessageLength > 0; }
  /// Drops everything before the current place.
  void Resize();
  /// What the message at or after the current place begins with: its first field and, where there is one,
  /// its second. An OEM binary message, which has no text, gives "Axis4OEMBinaryTagPlaceHolder". Moves on
  /// over noise. False if more bytes are needed.
  bool GetTag(CString& tag, CString& subTag);

  /// The current message as text, as Mid gives it; empty if there is none.
  CString GetMessageW() const;
  /// The same in a new object that the caller deletes.
  CString* GetMessageAsPtr() const;
  /// The current message's bytes, good until the buffer changes. Null, with `nLength` untouched, if there is
  /// none.
  const char* GetMessageBin(int& nLength) const;
  /// Text from `nCount` bytes at `nStart` up to the first zero byte, with "\n" appended. All the rest if
  /// `nCount` is below 1 or reaches the end; empty if `nStart` is out of range.
  CString Mid(int nStart, int nCount) const;
  CString* Mid2(int nStart, int nCount) const;  ///< The same in a new object that the caller deletes.
  /// Index of the first `c` at or after `nStart`, or -1.
  int Find(char c, int nStart) const;
  /// Bytes in the buffer.
  ///@{
  int GetLength() const { return m_nLength; }
  int GetSize() const { return m_nLength; }
  ///@}
  /// The bytes, good until the buffer changes.
  const char* GetData() const { return m_Bytes.data(); }
  /// Cuts the buffer or adds zero bytes, and leaves the walk where it is; below 0 counts as 0. What a current
  /// message loses it is shorter by.
  void SetSize(int nSize);
  /// One byte. An index out of range throws std::out_of_range.
  ///@{
  char GetAt(int nIndex) const { return m_Bytes.at(static_cast<std::size_t>(nIndex)); }
  char operator[](int nIndex) const { return GetAt(nIndex); }
  char& operator[](int nIndex);
  ///@}

 private:
  // What the current message begins with, as it lies in the buffer.
  struct Head {
    bool bOem = false;
    bool bBin = false;
    std::string_view tag;
    std::string_view subTag;
  };

  bool FindHead(Head& head);
  bool SkipNoise();
  bool FindOem();
  const char* FirstComma();
  int BinaryLength(const Head& head) const;
  int TextLength() const;
  const char* GetPtr(int nIndex) const { return m_Bytes.data() + nIndex; }
  bool IsOemSync(int nIndex) const;
  int BytesLeft() const { return m_nLength - m_nCurrent; }

  std::vector<char> m_Bytes;
  int m_nCurrent = 0;        // first byte of the current message; how far the scan has got
  int m_nMessageLength = 0;  // 0: no current message
  int m_nLength = 0;         // bytes in the buffer
  int m_nNoComma = 0;        // from here on there is no comma
  int m_nNoCommaEnd = 0;     // up to here
};

#pragma GCC visibility pop
