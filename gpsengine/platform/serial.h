#pragma once

#include <functional>
#include <memory>

#include "gpsengine/platform/cstring.h"

#pragma GCC visibility push(default)

// The serial calls. A port is opened by its number, as "COM1:"; a table maps the number to a device.

/// Settings of a line.
struct DCB {
  DWORD DCBlength = 0;        ///< Size of this structure.
  DWORD BaudRate = 9600;      ///< Bits a second.
  DWORD fBinary = 1;          ///< Always 1.
  DWORD fParity = 0;          ///< Parity is checked.
  DWORD fOutxCtsFlow = 0;     ///< Writing waits for CTS.
  DWORD fOutxDsrFlow = 0;     ///< Ignored: no DSR flow control on this system.
  DWORD fDtrControl = 1;      ///< 0 off, 1 on, 2 handshake.
  DWORD fDsrSensitivity = 0;  ///< Always 0.
  DWORD fOutX = 0;            ///< Writing stops at XOFF.
  DWORD fInX = 0;             ///< XOFF is sent when the input fills up.
  DWORD fErrorChar = 0;       ///< Always 0.
  DWORD fNull = 0;            ///< Always 0: zero bytes are data.
  DWORD fRtsControl = 1;      ///< 0 off, 1 on, 2 handshake.
  DWORD fAbortOnError = 0;    ///< Always 0.
  WORD XonLim = 0;            ///< Ignored: the system has its own limits.
  WORD XoffLim = 0;           ///< Ignored: the system has its own limits.
  BYTE ByteSize = 8;          ///< Data bits, 5 to 8.
  BYTE Parity = 0;            ///< 0 none, 1 odd, 2 even, 3 mark, 4 space.
  BYTE StopBits = 0;          ///< 0 one, 1 one and a half, 2 two.
  char XonChar = 0x11;        ///< Resumes the other side.
  char XoffChar = 0x13;       ///< Stops the other side.
};

/// Times in milliseconds. An interval and a multiplier of MAXDWORD make a read return at once with what has
/// arrived, or else wait up to the constant for a first byte. Otherwise a read ends when it is full, when the
/// line has been quiet for the interval, or when constant + multiplier × bytes have passed.
struct COMMTIMEOUTS {
  DWORD ReadIntervalTimeout = 0;          ///< Longest pause between two bytes; 0: no limit.
  DWORD ReadTotalTimeoutMultiplier = 0;   ///< For each byte asked for.
  DWORD ReadTotalTimeoutConstant = 0;     ///< For the whole read.
  DWORD WriteTotalTimeoutMultiplier = 0;  ///< Ignored: kWriteLimit applies to every write.
  DWORD WriteTotalTimeoutConstant = 0;    ///< Ignored: kWriteLimit applies to every write.
};

/// Pending input of a line.
struct COMSTAT {
  DWORD cbInQue = 0;  ///< Bytes received and not yet read.
};

constexpr DWORD GENERIC_READ_WRITE = 0xC0000000;  ///< For CreateFileW.
constexpr DWORD OPEN_EXISTING = 3;                ///< For CreateFileW.
constexpr DWORD PURGE_RXCLEAR = 8;                ///< For PurgeComm: discard the input.
constexpr DWORD EV_RXCHAR_TXEMPTY = 5;            ///< For SetCommMask.

/// A write fails when the peer has accepted nothing for this many milliseconds. As long as bytes are
/// accepted, however slowly, it continues.
constexpr DWORD kWriteLimit = 2000;

/// An open line: a serial device of the system, or something that a host supplies, such as a network
/// connection. Reads and writes may run at the same time, on different threads.
class SerialLine {
 public:
  virtual ~SerialLine() = default;
  /// Speed, framing and flow control. Fields that do not apply to the line are ignored. False if the line
  /// failed.
  ///@{
  virtual bool GetState(DCB& dcb) = 0;
  virtual bool SetState(const DCB& dcb) = 0;
  ///@}
  /// Waits up to `ms` for a first byte, then returns what is available, at most `nMax` bytes. Returns 0 on
  /// timeout and soon after Cancel. A negative result, without waiting, means that the line is gone for good;
  /// the library treats it as silence.
  virtual int Read(void* pData, int nMax, DWORD ms) = 0;
  /// Writes until the other side has accepted no byte for `ms`. Returns the number of bytes written.
  virtual int Write(const void* pData, int nLength, DWORD ms) = 0;
  /// Releases blocked calls of Read and Write, and makes later ones return at once. From any thread.
  virtual void Cancel() = 0;
  /// Makes the blocked Read, or else the next one, return what is available. From any thread.
  virtual void WakeReader() = 0;
  /// Discards unread input.
  virtual bool PurgeInput() = 0;
  /// Returns the number of unread bytes; sets `errors` to the line errors since the last call.
  virtual int BytesWaiting(DWORD& errors) = 0;
  /// Switches the break condition. False if not supported.
  virtual bool SetBreak(bool bOn) = 0;
};

/// Opens a line; null on failure, with the reason in GetLastError.
using SerialLineFactory = std::function<std::unique_ptr<SerialLine>()>;

/// Maps port number `nPort` to a device of the system, or to a line of the host's own; an empty factory
/// removes the latter. Returns the previous factory, which may be empty. Unmapped numbers are COM1 for
/// /dev/ttyS0, COM2 for /dev/ttyS1 and so on. Open ports are not affected. Numbers below 1 never open.
///@{
void MapComPort(int nPort, const CString& device);
SerialLineFactory MapComPort(int nPort, SerialLineFactory factory);
///@}
/// Opens a device of the system exclusively, with DTR and RTS on; for example for a line of the host's own
/// that observes a device. Null on failure, with the reason in GetLastError: ENOTTY if it is not a terminal,
/// EBUSY if another program has it open.
std::unique_ptr<SerialLine> OpenSerialDevice(const CString& device);
/// The device that a port number maps to; empty for a line of the host's own.
CString GetComPortDevice(int nPort);

/// Opens "COM<n>:" exclusively. INVALID_HANDLE_VALUE on failure, with the reason in GetLastError. The other
/// arguments are those of a serial line: read and write, no sharing, existing, normal.
HANDLE CreateFileW(const WCHAR* pszName, DWORD nAccess, DWORD nShare, DWORD nDisposition, DWORD nAttributes);
/// Speed, framing and flow control. False if the handle is not an open port or the device refuses.
///@{
bool GetCommState(HANDLE hPort, DCB* pDcb);
bool SetCommState(HANDLE hPort, const DCB* pDcb);
///@}
bool SetCommMask(HANDLE hPort, DWORD nMask);  ///< No effect; true if open.
bool SetupComm(HANDLE hPort, DWORD nInQueue,
               DWORD nOutQueue);  ///< No effect; true if open.
/// With PURGE_RXCLEAR, discards unread input. False if the handle is not an open port.
bool PurgeComm(HANDLE hPort, DWORD nFlags);
/// Applies to later reads. False if the handle is not an open port.
bool SetCommTimeouts(HANDLE hPort, const COMMTIMEOUTS* pTimeouts);
/// Later reads return at once with what has arrived, or else wait up to `ms` for a first byte.
void SetFirstByteTimeout(HANDLE hPort, DWORD ms);
/// Reports unread bytes, and the line errors since the last call. False if the handle is not an open port.
bool ClearCommError(HANDLE hPort, DWORD* pErrors, COMSTAT* pStat);
/// Switches the break condition. False if not supported.
///@{
bool SetCommBreak(HANDLE hPort);
bool ClearCommBreak(HANDLE hPort);
///@}
/// Reads with the current timeouts. `*pRead` is the count: 0 on timeout, on failure, or when the handle is
/// closed meanwhile.
bool ReadFile(HANDLE hPort, void* pData, DWORD nCount, DWORD* pRead);
/// Makes the blocked read, or else the next one, return early.
bool CancelRead(HANDLE hPort);
/// Writes, limited by kWriteLimit; `*pWritten` is the count. False if not everything was written.
bool WriteFile(HANDLE hPort, const void* pData, DWORD nCount, DWORD* pWritten);

#pragma GCC visibility pop
