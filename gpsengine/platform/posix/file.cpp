#include "gpsengine/platform/file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace {

thread_local DWORD t_nLastError = 0;

bool IsFolder(int file) {
  struct stat status;
  return fstat(file, &status) == 0 && S_ISDIR(status.st_mode);
}

// Copies a text with its terminator, truncated to the buffer. Returns the length copied.
DWORD Copy(const CString& text, WCHAR* buffer, DWORD size) {
  if (buffer == nullptr || size == 0) return 0;
  const DWORD length = std::min(static_cast<DWORD>(text.GetLength()), size - 1);
  std::copy_n(text.GetString(), length, buffer);
  buffer[length] = 0;
  return length;
}

}  // namespace

DWORD GetLastError() {
  return t_nLastError;
}

void SetLastError(DWORD error) {
  t_nLastError = error;
}

DWORD FormatMessageW(DWORD error, WCHAR* buffer, DWORD size) {
  char text[256];
  // The GNU version, which may return a static string instead of filling the buffer.
  return Copy(CString::FromUtf8(strerror_r(static_cast<int>(error), text, sizeof text)), buffer, size);
}

CFile::~CFile() {
  CFile::Close();
}

int CFile::Open(const WCHAR* path, UINT flags, CFileException* error) {
  Close();
  const bool create = (flags & modeCreate) != 0;
  const int access = (flags & modeWrite) != 0 ? O_WRONLY : O_RDONLY;
  m_nFile = open(CString(path).ToUtf8().c_str(), access | O_CLOEXEC | (create ? O_CREAT | O_TRUNC : 0), 0666);
  if (m_nFile >= 0 && IsFolder(m_nFile)) {
    Close();
    errno = EISDIR;
  }
  if (m_nFile >= 0) return 1;
  if (error != nullptr) error->m_strReason = CString::FromUtf8(std::strerror(errno));
  return 0;
}

void CFile::Close() {
  if (m_nFile >= 0) close(m_nFile);
  m_nFile = -1;
}

UINT CFile::Read(void* buffer, UINT wanted) {
  ssize_t count = 0;
  do {
    count = read(m_nFile, buffer, wanted);
  } while (count < 0 && errno == EINTR);
  return count < 0 ? 0 : static_cast<UINT>(count);
}

bool CFile::Write(const void* buffer, UINT wanted) {
  const char* from = static_cast<const char*>(buffer);
  while (wanted > 0) {
    const ssize_t count = write(m_nFile, from, wanted);
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return false;
    from += count;
    wanted -= static_cast<UINT>(count);
  }
  return true;
}

void CFile::SeekToBegin() {
  if (m_nFile >= 0) lseek(m_nFile, 0, SEEK_SET);
}

DWORD GetFileAttributesW(const WCHAR* path) {
  struct stat status;
  if (stat(CString(path).ToUtf8().c_str(), &status) != 0) return INVALID_FILE_ATTRIBUTES;
  return S_ISDIR(status.st_mode) ? FILE_ATTRIBUTE_DIRECTORY : FILE_ATTRIBUTE_NORMAL;
}

DWORD GetModuleFileNameW(WCHAR* buffer, DWORD size) {
  char path[4096];
  const ssize_t length = readlink("/proc/self/exe", path, sizeof path);
  if (length <= 0) return 0;
  return Copy(CString::FromUtf8(std::string_view(path, static_cast<std::size_t>(length))), buffer, size);
}
