#pragma once

#include "gpsengine/platform/cstring.h"

#pragma GCC visibility push(default)

constexpr WCHAR kPathSeparator = u'/';                 ///< Between the folders of a path.
constexpr DWORD INVALID_FILE_ATTRIBUTES = 0xFFFFFFFF;  ///< No such file.
constexpr DWORD FILE_ATTRIBUTE_DIRECTORY = 0x10;       ///< A folder.
constexpr DWORD FILE_ATTRIBUTE_NORMAL = 0x80;          ///< Anything but a folder.

/// Why a file operation failed.
struct CFileException {
  CString m_strReason;  ///< The system's error message.
};

/// A file of bytes. One object belongs to one thread at a time.
class CFile {
 public:
  static constexpr UINT modeRead = 0x0000;    ///< For reading.
  static constexpr UINT modeWrite = 0x0001;   ///< For writing.
  static constexpr UINT modeCreate = 0x1000;  ///< Creates or truncates the file.
  static constexpr UINT typeText = 0x4000;    ///< Accepted and ignored: CTextFile splits lines itself.

  CFile() = default;
  virtual ~CFile();
  CFile(const CFile&) = delete;
  CFile& operator=(const CFile&) = delete;

  /// Nonzero on success. A folder does not open. On failure `pError`, if given, receives the reason.
  virtual int Open(const WCHAR* pszPath, UINT nFlags, CFileException* pError = nullptr);
  virtual void Close();  ///< No effect on a closed file.
  /// True from a successful Open until Close.
  bool IsOpen() const { return m_nFile >= 0; }
  /// Returns the number of bytes read; 0 at the end of the file or on error.
  UINT Read(void* pBuffer, UINT nCount);
  /// True only if every byte was written.
  bool Write(const void* pBuffer, UINT nCount);
  /// Rewinds to the first byte.
  void SeekToBegin();

 private:
  int m_nFile = -1;
};

/// FILE_ATTRIBUTE_DIRECTORY or FILE_ATTRIBUTE_NORMAL, or INVALID_FILE_ATTRIBUTES if nothing of that name
/// exists.
DWORD GetFileAttributesW(const WCHAR* pszPath);
/// The full path of the host's executable, truncated to `nBuffer` - 1 characters. Returns the length, 0 if
/// unknown.
DWORD GetModuleFileNameW(WCHAR* pBuffer, DWORD nBuffer);
/// The error number of the last port or handle on this thread that could not be opened or closed.
///@{
DWORD GetLastError();
void SetLastError(DWORD nError);
///@}
/// The system's message for an error, truncated to `nBuffer` - 1 characters. Returns the length, 0 if there
/// is none.
DWORD FormatMessageW(DWORD nError, WCHAR* pBuffer, DWORD nBuffer);

#pragma GCC visibility pop
