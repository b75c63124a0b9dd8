#pragma once

#include "gpsengine/platform/cstring.h"

#pragma GCC visibility push(default)

constexpr WCHAR kPathSeparator = u'/';                 ///< Between the folders of a path.
constexpr DWORD INVALID_FILE_ATTRIBUTES = 0xFFFFFFFF;  ///< There is nothing of that name.
constexpr DWORD FILE_ATTRIBUTE_DIRECTORY = 0x10;       ///< It is a folder.
constexpr DWORD FILE_ATTRIBUTE_NORMAL = 0x80;          ///< It is anything but a folder.

/// What a failed file operation has to say.
struct CFileException {
  CString m_strReason;  ///< The system's text.
};

/// A file of bytes. One object belongs to one thread at a time.
class CFile {
 public:
  static constexpr UINT modeRead = 0x0000;    ///< For reading.
  static constexpr UINT modeWrite = 0x0001;   ///< For writing.
  static constexpr UINT modeCreate = 0x1000;  ///< Makes the file, or empties the one of that name.
  static constexpr UINT typeText = 0x4000;    ///< Taken and without effect: CTextFile splits lines by itself.

  CFile() = default;
  virtual ~CFile();
  CFile(const CFile&) = delete;
  CFile& operator=(const CFile&) = delete;

  /// Not 0 means opened. A folder does not open. `pError`, if given, gets the reason of a failure.
  virtual int Open(const WCHAR* pszPath, UINT nFlags, CFileException* pError = nullptr);
  virtual void Close();  ///< No effect on a closed file.
  /// From an Open that succeeded until Close.
  bool IsOpen() const { return m_nFile >= 0; }
  /// Bytes read; 0 at the end of the file or if it cannot be read.
  UINT Read(void* pBuffer, UINT nCount);
  /// True only if every byte was written.
  bool Write(const void* pBuffer, UINT nCount);
  /// The next Read starts at the first byte again.
  void SeekToBegin();

 private:
  int m_nFile = -1;
};

/// FILE_ATTRIBUTE_DIRECTORY or FILE_ATTRIBUTE_NORMAL, or INVALID_FILE_ATTRIBUTES if nothing of that name
/// exists.
DWORD GetFileAttributesW(const WCHAR* pszPath);
/// The full path of the host's executable, cut to `nBuffer` - 1 characters; gives its length, 0 if unknown.
DWORD GetModuleFileNameW(WCHAR* pBuffer, DWORD nBuffer);
/// The last failure of a platform call on this thread, as the system's error number, and its text.
///@{
DWORD GetLastError();
void SetLastError(DWORD nError);
///@}
/// The system's text for an error, cut to `nBuffer` - 1 characters; gives its length, 0 if there is none.
DWORD FormatMessageW(DWORD nError, WCHAR* pBuffer, DWORD nBuffer);

#pragma GCC visibility pop
