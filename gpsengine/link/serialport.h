#pragma once

#include <mutex>
#include <vector>

#include "gpsengine/platform/serial.h"
#include "gpsengine/platform/shared.h"

#pragma GCC visibility push(default)

/// The one serial line to the receiver: its settings, and synchronous reads and writes. Changed settings take
/// effect at once on an open port.
///
/// One thread opens, closes and sets; another may read on the handle meanwhile, and both may write. Never
/// throws; errors are reported by results and trace texts.
class CSerialPort {
 public:
  CSerialPort() = default;
  virtual ~CSerialPort() = default;  ///< Does not close the port.
  CSerialPort(const CSerialPort&) = delete;
  CSerialPort& operator=(const CSerialPort&) = delete;

  void SetPortNumber(int n);        ///< Takes effect at the next Open.
  void SetBaudRate(int n);          ///< Ignored unless `n` is positive.
  void SetFlowControl(BYTE flags);  ///< Bit 0 DSR/DTR, bit 1 CTS/RTS, bit 2 XON/XOFF.
  void SetParity(int code);         ///< As DCB::Parity.
  void SetStopBits(BYTE code);      ///< As DCB::StopBits.
  void SetDataBits(BYTE n);         ///< 0: 8 without parity, 7 with.
  void SetTimeout(int ms);          ///< For the read operations; at least 10.
  /// Milliseconds.
  int GetTimeout() const { return m_nTimeout; }
  /// As set; for 0, the number that results from the parity.
  int GetDataBits() const;

  /// Number of unread bytes. 0 if the port is closed, or if there was a line error since the last call, which
  /// this call clears.
  virtual int GetBytesAvailable();
  /// Opens the port; true if it is open already.
  virtual bool Open();
  bool Close();  ///< False if the port was not open.
  /// Applies the settings to an open port. The Set operations call this.
  void ApplySettings();
  /// True from a successful Open until Close, even if the device has disappeared.
  bool IsOpen() const { return m_hPort != INVALID_HANDLE_VALUE; }
  /// For the calls of platform/serial.h; INVALID_HANDLE_VALUE on a closed port.
  HANDLE GetHandle() const { return m_hPort; }
  /// Discards unread input. False on a closed port.
  bool PurgeInput();
  /// Switches the break condition. False if the line has none, as a pseudo-terminal, or if the port is
  /// closed.
  ///@{
  bool SetBreak();
  bool ClearBreak();
  ///@}
  /// The name under which it was last opened, "COM1:".
  CString GetPortName() const;

  /// Maximum length of a text or array to write, in characters.
  static constexpr int kMaxText = 200;

  /// Writes in one go; true only if everything was written. A text or array of more than kMaxText characters
  /// is refused, as is a text with characters above 255; a text ends at its first zero. Plain bytes may have
  /// any length. False on a closed port.
  ///@{
  virtual bool Write(CString text);
  virtual bool Write(const std::vector<BYTE>& bytes);
  virtual bool Write(char c);
  virtual bool Write(const void* pData, int nLength);
  ///@}

  // Synchronous reads, for use while no reader thread is reading. If `bCancel` is true they return false
  // without reading; ReadUntilAny also checks it between reads. Text from one read ends at its first zero.

  /// Reads what arrives within the timeout, up to a pause of the line. False if nothing arrives.
  bool Read(CString& text, bool& bCancel);
  /// The same for bytes.
  bool ReadBytes(std::vector<BYTE>& bytes, bool& bCancel);
  /// Reads a byte that is available or follows at once; false if there is none.
  bool ReadByte(char* pByte);
  /// Reads at most `nMax` bytes; `*pRead` is the count. True at once if `nMax` is 0.
  bool ReadBlock(void* pData, int nMax, int* pRead, bool& bCancel);
  /// Discards input up to and including `c`; false if it does not arrive within `ms`.
  bool WaitForByte(char c, DWORD ms);
  /// Returns the first byte received, signed, after reading on to `c` if that is not 0; 0 if none arrives.
  /// Each byte extends the wait, up to the greater of `ms` and 10 seconds.
  int ReadFirstByte(char c, DWORD ms);
  /// Reads until `text` contains one of `terminators`.
  bool ReadUntilAny(CString& text, bool& bCancel, CString terminators);
  /// Reads until `text` contains `pattern` or `altPattern`, followed by one of `terminators`. True if a
  /// pattern was received, with or without its terminator.
  bool ReadReply(CString& text, bool& bCancel, CString terminators, CString pattern, CString altPattern);

 private:
  int ReadSome(char* pData, int nMax);

  mutable std::mutex m_Mutex;  // the settings and the name; not held during I/O or waits
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
