#pragma once

#include <mutex>
#include <vector>

#include "gpsengine/platform/serial.h"
#include "gpsengine/platform/shared.h"

#pragma GCC visibility push(default)

/// The one serial line to the receiver: its settings, and synchronous reads and writes. A change of a setting
/// takes effect at once on an open port.
///
/// One thread opens, closes and sets; another may read on the handle meanwhile, and both may write. Nothing
/// is thrown: results and trace texts are all there is.
class CSerialPort {
 public:
  CSerialPort() = default;
  virtual ~CSerialPort() = default;  ///< Leaves the port open: its owner closes it.
  CSerialPort(const CSerialPort&) = delete;
  CSerialPort& operator=(const CSerialPort&) = delete;

  void SetPortNumber(int n);        ///< Takes effect at the next Open.
  void SetBaudRate(int n);          ///< Kept as it was if `n` is not above 0.
  void SetFlowControl(BYTE flags);  ///< Bit 0 DSR/DTR, bit 1 CTS/RTS, bit 2 XON/XOFF.
  void SetParity(int code);         ///< As DCB::Parity.
  void SetStopBits(BYTE code);      ///< As DCB::StopBits.
  void SetDataBits(BYTE n);         ///< 0: 8 without parity, 7 with.
  void SetTimeout(int ms);          ///< For the read operations; at least 10.
  /// Milliseconds.
  int GetTimeout() const { return m_nTimeout; }
  /// As set; with 0, what that stands for under the present parity.
  int GetDataBits() const;

  /// Bytes waiting. 0 if the port is closed, or if the line had an error since the last call, which this call
  /// clears.
  virtual int GetBytesAvailable();
  /// True if the port is open now; at once if it was.
  virtual bool Open();
  bool Close();  ///< False if the port was not open.
  /// Gives the settings to an open port. The Set operations do so by themselves.
  void ApplySettings();
  /// Whether Open has given true and Close has not been called since; a device that has gone away leaves the
  /// port open.
  bool IsOpen() const { return m_hPort != INVALID_HANDLE_VALUE; }
  /// For the calls of platform/serial.h; INVALID_HANDLE_VALUE on a closed port.
  HANDLE GetHandle() const { return m_hPort; }
  /// Throws away what has arrived and was not read. False on a closed port.
  bool PurgeInput();
  /// The break condition on or off. False if the line has none, such as a pseudo-terminal, or on a closed
  /// port.
  ///@{
  bool SetBreak();
  bool ClearBreak();
  ///@}
  /// The name under which it was last opened, "COM1:".
  CString GetPortName() const;

  /// The longest text, or array, that a write takes, in characters.
  static constexpr int kMaxText = 200;

  /// A write is one write to the line, and true only if all of it went out. A text, or an array, of more than
  /// kMaxText characters is refused, and so is a text with a character that has no byte; a text ends at its
  /// first zero. Plain bytes may be of any number. False on a closed port.
  ///@{
  virtual bool Write(CString text);
  virtual bool Write(const std::vector<BYTE>& bytes);
  virtual bool Write(char c);
  virtual bool Write(const void* pData, int nLength);
  ///@}

  // Reads for a caller that needs a reply at once, on a line that no reader thread is reading. A true
  // `bCancel` makes them return false without reading; ReadUntilAny looks at it between its reads too. What
  // one read gives as text ends at its first zero.

  /// What comes within the timeout, up to a pause of the line. False, with nothing read, if that is nothing.
  bool Read(CString& text, bool& bCancel);
  /// The same for bytes.
  bool ReadBytes(std::vector<BYTE>& bytes, bool& bCancel);
  /// The byte that is there or follows at once; false without one.
  bool ReadByte(char* pByte);
  /// At most `nMax` bytes; `*pRead` is their count. True at once for `nMax` 0.
  bool ReadBlock(void* pData, int nMax, int* pRead, bool& bCancel);
  /// Discards everything up to `c`; false when `ms` have passed without it.
  bool WaitForByte(char c, DWORD ms);
  /// The first byte that comes, signed, having read on to `c` if that is not 0; 0 if none came. A line that
  /// keeps talking extends the wait, up to the greater of `ms` and 10 seconds.
  int ReadFirstByte(char c, DWORD ms);
  /// Reads until `text` holds one of `terminators`.
  bool ReadUntilAny(CString& text, bool& bCancel, CString terminators);
  /// Reads until `text` holds `pattern` or `altPattern` and one of `terminators` behind it. True if a pattern
  /// came, with or without its terminator.
  bool ReadReply(CString& text, bool& bCancel, CString terminators, CString pattern, CString altPattern);

 private:
  void SetReadTimeouts(DWORD msFirstByte);
  int ReadSome(char* pData, int nMax);
  DCB Settings(const DCB& base) const;

  mutable std::mutex m_Mutex;  // the settings and the name; never held over a read, a write or a wait
  DCB m_DCB;
  int m_nBaudRate = 4800;
  BYTE m_nFlowControl = 0;
  int m_nPort = 1;
  int m_nParity = 0;
  BYTE m_nStopBits = 0;
  BYTE m_nDataBits = 0;
  CShared<HANDLE> m_hPort = INVALID_HANDLE_VALUE;
  CShared<int> m_nTimeout = 1000;
  CString m_strPortName;
};

#pragma GCC visibility pop
