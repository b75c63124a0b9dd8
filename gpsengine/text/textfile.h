#pragma once

#include <string>

#include "gpsengine/platform/file.h"

#pragma GCC visibility push(default)

/// A file read line by line. Bytes are widened without a sign; a line ends at "\n", "\r\n" or the end of the
/// file, however long it is.
class CTextFile : public CFile {
 public:
  /// Both arguments are kept for hosts that pass them and have no effect.
  CTextFile(bool = false, bool = false) {}

  /// The next line without its line end. False at the end of the file, with `out` untouched.
  virtual bool ReadString(CString& out);
  void Close() override;
  /// The next line is the first one again.
  void SeekToBegin();

 private:
  bool Fill();

  std::string m_strBuffer;   // read from the file and not handed out
  std::size_t m_nTaken = 0;  // characters at its head that were handed out
};

#pragma GCC visibility pop
