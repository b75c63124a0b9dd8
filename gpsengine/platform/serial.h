#pragma once

#include <functional>
#include <memory>

#include "gpsengine/platform/cstring.h"

#pragma GCC visibility push(default)

// The serial calls. A port is opened under its number's name, "COM1:", and a table says which device that is.

/// State of a line, with the fields that the callers set.
struct DCB {
  DWORD DCBlength = 0;        ///< Size of this structure.
  DWORD BaudRate = 9600;      ///< Bits a second.
  DWORD fBinary = 1;          ///< Always 1.
  DWORD fParity = 0;          ///< Parity is checked.
  DWORD fOutxCtsFlow = 0;     ///< Writing waits for CTS.
  DWORD fOutxDsrFlow = 0;     ///< Taken; this system has no flow control by DSR.
  DWORD fDtrControl = 1;      ///< 0 off, 1 on, 2 handshake.
  DWORD fDsrSensitivity = 0;  ///< Always 0.
  DWORD fOutX = 0;            ///< Writing stops at XOFF.
  DWORD fInX = 0;             ///< XOFF is sent when the input fills up.
  DWORD fErrorChar = 0;       ///< Always 0.
  DWORD fNull = 0;            ///< Always 0: zero bytes are data.
  DWORD fRtsControl = 1;      ///< 0 off, 1 on, 2 handshake.
  DWORD fAbortOnError = 0;    ///< Always 0.
  WORD XonLim = 0;            ///< Taken; the system has limits of its own.
  WORD XoffLim = 0;           ///< Taken; the system has limits of its own.
  BYTE ByteSize = 8;          ///< Data bits, 5 to 8.
  BYTE Parity = 0;            ///< 0 none, 1 odd, 2 even, 3 mark, 4 space.
  BYTE StopBits = 0;          ///< 0 one, 1 one and a half, 2 two.
  char XonChar = 0x11;        ///< Lets the other side go on.
  char XoffChar = 0x13;       ///< Stops the other side.
};

/// Times in milliseconds. An interval and a multiplier of MAXDWORD make a read return at once with what has
/// arrived, or else wait up to the constant for a first byte. Otherwise a read ends when it is full, when the
/// line has been quiet for the interval, or when constant + multiplier × bytes have passed.
struct COMMTIMEOUTS {
  DWORD ReadIntervalTimeout = 0;          ///< Longest pause between two bytes; 0: none counts.
  DWORD ReadTotalTimeoutMultiplier = 0;   ///< For each byte asked for.
  DWORD ReadTotalTimeoutConstant = 0;     ///< For the whole read.
  DWORD WriteTotalTimeoutMultiplier = 0;  ///< Taken; kWriteLimit holds for every write.
  DWORD WriteTotalTimeoutConstant = 0;    ///< Taken; kWriteLimit holds for every write.
};

/// What waits on a line.
struct COMSTAT {
  DWORD cbInQue = 0;  ///< Bytes that have arrived and are not read.
};

constexpr DWORD GENERIC_READ_WRITE = 0xC0000000;  ///< For CreateFileW.
constexpr DWORD OPEN_EXISTING = 3;                ///< For CreateFileW.
constexpr DWORD PURGE_RXCLEAR = 8;                ///< For PurgeComm: throw the input away.
constexpr DWORD EV_RXCHAR_TXEMPTY = 5;            ///< For SetCommMask.

/// A write gives up when the peer has taken nothing for this time, in milliseconds. As long as it takes
/// bytes, however slowly, the write goes on.
constexpr DWORD kWriteLimit = 2000;

/// An open line, whatever lies behind it. The serial devices of the system are one kind; a host may supply
/// another, such as a network connection. Reads and writes may run at the same time, on different threads.
class SerialLine {
 public:
  virtual ~SerialLine() = default;
  /// Speed, framing and flow control. A field that the line has no use for is passed over. False if the line
  /// failed.
  ///@{
  virtual bool GetState(DCB& dcb) = 0;
  virtual bool SetState(const DCB& dcb) = 0;
  ///@}
  /// Waits up to `ms` for a first byte, then gives what is there, at most `nMax` bytes. 0 when none came, and
  /// soon after Cancel. A negative count, at once, says that the line is gone and nothing will come any more;
  /// the library takes that for silence.
  virtual int Read(void* pData, int nMax, DWORD ms) = 0;
  /// Writes, and gives up once the other side has taken no byte for `ms`; gives the count of bytes written.
  virtual int Write(const void* pData, int nLength, DWORD ms) = 0;
  /// Releases who is blocked in Read or Write, and makes further ones return at once. From any thread.
  virtual void Cancel() = 0;
  /// Makes the read that is blocked now, or else the next one, return what is there. From any thread.
  virtual void WakeReader() = 0;
  /// Throws away what has arrived and was not read.
  virtual bool PurgeInput() = 0;
  /// Bytes waiting; sets `errors` to the line errors since the last call.
  virtual int BytesWaiting(DWORD& errors) = 0;
  /// The break condition on or off. False if the line has none.
  virtual bool SetBreak(bool bOn) = 0;
};

/// Opens a line; null on failure, with the reason left for GetLastError.
using SerialLineFactory = std::function<std::unique_ptr<SerialLine>()>;

/// What port number `nPort` stands for from now on: a device of the system, or a line of the host's own; an
/// empty factory for none. The latter gives the line before, or an empty factory.
/// Without an entry COM1 is /dev/ttyS0, COM2 /dev/ttyS1 and so on. An open port keeps its line. Numbers below
/// 1 never open, whatever they stand for.
///@{
void MapComPort(int nPort, const CString& device);
SerialLineFactory MapComPort(int nPort, SerialLineFactory factory);
///@}
/// Opens a device of the system for this program alone, DTR and RTS on, such as for a line of the host's own
/// that looks on at what a device sends. Null on failure, with the reason left for GetLastError: ENOTTY for
/// something that is no terminal, EBUSY for one that another program holds.
std::unique_ptr<SerialLine> OpenSerialDevice(const CString& device);
/// The device behind a port number, as text; empty for a line of the host's own.
CString GetComPortDevice(int nPort);

/// Opens "COM<n>:" for this program alone. INVALID_HANDLE_VALUE on failure, with the reason in GetLastError.
/// The other arguments are those of a serial line: read and write, no sharing, existing, normal.
HANDLE CreateFileW(const WCHAR* pszName, DWORD nAccess, DWORD nShare, DWORD nDisposition, DWORD nAttributes);
/// Speed, framing and flow control. False if the handle is no open port or the device refuses.
///@{
bool GetCommState(HANDLE hPort, DCB* pDcb);
bool SetCommState(HANDLE hPort, const DCB* pDcb);
///@}
bool SetCommMask(HANDLE hPort, DWORD nMask);  ///< Nothing here waits on line events; true if open.
bool SetupComm(HANDLE hPort, DWORD nInQueue,
               DWORD nOutQueue);  ///< The system sizes its queues; true if open.
/// With PURGE_RXCLEAR, throws away what has arrived and was not read. False if the handle is no open port.
bool PurgeComm(HANDLE hPort, DWORD nFlags);
/// For the reads and writes to come. False if the handle is no open port.
bool SetCommTimeouts(HANDLE hPort, const COMMTIMEOUTS* pTimeouts);
/// The bytes that wait, and the line errors since the last call, which it clears. False if the handle is no
/// open port.
bool ClearCommError(HANDLE hPort, DWORD* pErrors, COMSTAT* pStat);
/// The break condition on or off. False if the line has none.
///@{
bool SetCommBreak(HANDLE hPort);
bool ClearCommBreak(HANDLE hPort);
///@}
/// Reads under the timeouts last set. `*pRead` is the count, 0 on a timeout, a failure or a handle that gets
/// closed.
bool ReadFile(HANDLE hPort, void* pData, DWORD nCount, DWORD* pRead);
/// Ends the read that is blocked on the handle, if there is one, or else cuts the next one short.
bool CancelRead(HANDLE hPort);
/// Writes, and gives up as kWriteLimit says; `*pWritten` is the count. False if not all went out.
bool WriteFile(HANDLE hPort, const void* pData, DWORD nCount, DWORD* pWritten);

#pragma GCC visibility pop
