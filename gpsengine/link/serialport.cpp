#include "gpsengine/link/serialport.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <utility>

#include "gpsengine/link/ticks.h"
#include "gpsengine/platform/clock.h"
#include "gpsengine/platform/event.h"
#include "gpsengine/platform/file.h"
#include "gpsengine/platform/trace.h"

namespace {

constexpr int kShortestTimeout = 10;
constexpr DWORD kQueueSize = 4096;
constexpr DWORD kSettleTime = 10;
constexpr int kReadMax = 4096;
constexpr DWORD kFollowTime = 10;  // the rest of a burst follows a byte within this time

std::string LastErrorText() {
  WCHAR text[256];
  return CString(text, static_cast<int>(FormatMessageW(GetLastError(), text, 256))).ToUtf8();
}

// The bytes as text, which ends at the first zero.
CString TextOf(const char* bytes, int length) {
  return CString(bytes, static_cast<int>(strnlen(bytes, static_cast<std::size_t>(length))));
}

bool HoldsOneOf(const CString& text, int from, const CString& characters) {
  return text.Mid(from).FindOneOf(characters) >= 0;
}

// Whether `text` contains the pattern; `complete` is set if a terminator follows it.
bool HoldsReply(const CString& text, const CString& pattern, const CString& terminators, bool& complete) {
  const int at = pattern.IsEmpty() ? -1 : text.Find(pattern);
  if (at < 0) return false;
  complete = complete || HoldsOneOf(text, at, terminators);
  return true;
}

// Changes one of a port's settings under their mutex.
template <class T>
void Store(std::mutex& mutex, T& setting, T value) {
  const std::lock_guard lock(mutex);
  setting = value;
}

}  // namespace

void CSerialPort::SetPortNumber(int n) {
  Store(m_Mutex, m_nPort, n);
}

void CSerialPort::SetBaudRate(int n) {
  if (n > 0) Store(m_Mutex, m_nBaudRate, n);
  ApplySettings();
}

void CSerialPort::SetFlowControl(BYTE flags) {
  Store(m_Mutex, m_nFlowControl, flags);
  ApplySettings();
}

void CSerialPort::SetParity(int code) {
  Store(m_Mutex, m_nParity, code);
  ApplySettings();
}

void CSerialPort::SetStopBits(BYTE code) {
  Store(m_Mutex, m_nStopBits, code);
  ApplySettings();
}

void CSerialPort::SetDataBits(BYTE n) {
  Store(m_Mutex, m_nDataBits, n);
  ApplySettings();
}

void CSerialPort::SetTimeout(int ms) {
  // A negative time becomes a very long one.
  const auto time = std::max(static_cast<unsigned>(ms), static_cast<unsigned>(kShortestTimeout));
  m_nTimeout = static_cast<int>(time);
}

int CSerialPort::GetDataBits() const {
  const std::lock_guard lock(m_Mutex);
  if (m_nDataBits != 0) return m_nDataBits;
  return m_nParity == 0 ? 8 : 7;
}

CString CSerialPort::GetPortName() const {
  const std::lock_guard lock(m_Mutex);
  return m_strPortName;
}

int CSerialPort::GetBytesAvailable() {
  if (!IsOpen()) return 0;
  DWORD errors = 0;
  COMSTAT stat;
  if (!ClearCommError(m_hPort, &errors, &stat)) return 0;
  if (errors != 0) {
    Trace("A situation requires the discarding of the data...\n");
    return 0;
  }
  return static_cast<int>(stat.cbInQue);
}

bool CSerialPort::Open() {
  if (IsOpen()) return true;
  CString name;
  int number = 0;
  {
    const std::lock_guard lock(m_Mutex);
    m_strPortName.Format("COM%d:", m_nPort);
    name = m_strPortName;
    number = m_nPort;
  }
  Trace("Opening COM%d...", number);
  const HANDLE port =
      CreateFileW(name.GetString(), GENERIC_READ_WRITE, 0, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL);
  if (port == INVALID_HANDLE_VALUE) {
    Trace("Unable to open %s. %s\n", name.ToUtf8().c_str(), LastErrorText().c_str());
    return false;
  }
  m_hPort = port;
  Trace("Port %s opened!\n", name.ToUtf8().c_str());
  ApplySettings();
  SetCommMask(port, EV_RXCHAR_TXEMPTY);
  SetupComm(port, kQueueSize, kQueueSize);
  Sleep(kSettleTime);
  PurgeInput();
  return true;
}

bool CSerialPort::Close() {
  const HANDLE port = m_hPort;
  CString name;
  {
    const std::lock_guard lock(m_Mutex);
    std::swap(name, m_strPortName);
  }
  if (port == INVALID_HANDLE_VALUE) return false;
  if (!CloseHandle(port)) {
    Trace("Unable to close %s. %s\n", name.ToUtf8().c_str(), LastErrorText().c_str());
    return false;
  }
  m_hPort = INVALID_HANDLE_VALUE;
  Trace("Closed %s.\n", name.ToUtf8().c_str());
  return true;
}

void CSerialPort::ApplySettings() {
  if (!IsOpen()) return;
  const int data_bits = GetDataBits();
  const std::lock_guard lock(m_Mutex);
  const bool dsr = (m_nFlowControl & 1) != 0;
  const bool cts = (m_nFlowControl & 2) != 0;
  const bool xon = (m_nFlowControl & 4) != 0;
  m_DCB.DCBlength = sizeof m_DCB;
  GetCommState(m_hPort, &m_DCB);
  m_DCB.BaudRate = static_cast<DWORD>(m_nBaudRate);
  m_DCB.ByteSize = static_cast<BYTE>(data_bits);
  m_DCB.Parity = static_cast<BYTE>(m_nParity);
  m_DCB.StopBits = m_nStopBits;
  m_DCB.fBinary = 1;
  m_DCB.fParity = m_nParity != 0 ? 1 : 0;
  m_DCB.fOutxDsrFlow = dsr;
  m_DCB.fDtrControl = dsr ? 2 : 1;
  m_DCB.fOutxCtsFlow = cts;
  m_DCB.fRtsControl = cts ? 2 : 1;
  m_DCB.fOutX = m_DCB.fInX = xon;
  m_DCB.XonChar = 0x11;
  m_DCB.XoffChar = 0x13;
  m_DCB.XonLim = 128;
  m_DCB.XoffLim = 10;
  m_DCB.fNull = m_DCB.fDsrSensitivity = m_DCB.fErrorChar = m_DCB.fAbortOnError = 0;
  SetCommState(m_hPort, &m_DCB);
}

bool CSerialPort::PurgeInput() {
  return PurgeComm(m_hPort, PURGE_RXCLEAR);
}

bool CSerialPort::SetBreak() {
  return SetCommBreak(m_hPort);
}

bool CSerialPort::ClearBreak() {
  return ClearCommBreak(m_hPort);
}

bool CSerialPort::Write(CString text) {
  std::string bytes;
  if (!IsOpen() || text.GetLength() > kMaxText || !text.ToBytes(bytes)) return false;
  bytes.resize(std::min(bytes.find('\0'), bytes.size()));
  return Write(bytes.data(), static_cast<int>(bytes.size()));
}

bool CSerialPort::Write(const std::vector<BYTE>& bytes) {
  if (!IsOpen() || bytes.size() > kMaxText) return false;
  return Write(bytes.data(), static_cast<int>(bytes.size()));
}

bool CSerialPort::Write(char c) {
  return Write(&c, 1);
}

bool CSerialPort::Write(const void* bytes, int length) {
  if (!IsOpen() || length < 0) return false;
  DWORD written = 0;
  WriteFile(m_hPort, bytes, static_cast<DWORD>(length), &written);
  return written == static_cast<DWORD>(length);
}

int CSerialPort::ReadSome(char* bytes, int max) {
  DWORD count = 0;
  ReadFile(m_hPort, bytes, static_cast<DWORD>(max), &count);
  return static_cast<int>(count);
}

bool CSerialPort::Read(CString& text, bool& cancel) {
  std::vector<BYTE> bytes;
  if (!ReadBytes(bytes, cancel)) return false;
  text = TextOf(reinterpret_cast<const char*>(bytes.data()), static_cast<int>(bytes.size()));
  return true;
}

bool CSerialPort::ReadBytes(std::vector<BYTE>& bytes, bool& cancel) {
  if (cancel) return false;
  bytes.assign(1 + kReadMax, 0);
  char* data = reinterpret_cast<char*>(bytes.data());
  SetFirstByteTimeout(m_hPort, static_cast<DWORD>(m_nTimeout.Get()));
  int count = ReadSome(data, 1);
  if (count > 0) {
    SetFirstByteTimeout(m_hPort, kFollowTime);
    count += ReadSome(data + 1, kReadMax);
  }
  bytes.resize(static_cast<std::size_t>(count));
  return count > 0;
}

bool CSerialPort::ReadByte(char* byte) {
  SetFirstByteTimeout(m_hPort, kFollowTime);
  return ReadSome(byte, 1) == 1;
}

bool CSerialPort::ReadBlock(void* bytes, int max, int* read, bool& cancel) {
  *read = 0;
  if (cancel) return false;
  if (max <= 0) return max == 0;
  constexpr DWORD kTimePerByte = 10;
  const auto timeout = static_cast<DWORD>(m_nTimeout.Get());
  const COMMTIMEOUTS timeouts{timeout, kTimePerByte, timeout, 0, 0};
  SetCommTimeouts(m_hPort, &timeouts);
  auto* data = static_cast<char*>(bytes);
  int count = ReadSome(data, 1);
  if (count > 0 && max > 1) count += ReadSome(data + 1, max - 1);
  *read = count;
  return count > 0;
}

bool CSerialPort::WaitForByte(char c, DWORD ms) {
  CTicks ticks;
  const DWORD start = ticks.GetTicks();
  while (ticks.GetTicks() - start < ms) {
    char byte = 0;
    if (!ReadByte(&byte)) {
      Sleep(1);
    } else if (byte == c) {
      return true;
    }
  }
  return false;
}

int CSerialPort::ReadFirstByte(char c, DWORD ms) {
  constexpr DWORD kLongestWait = 10000;
  CTicks ticks;
  const DWORD start = ticks.GetTicks();
  const DWORD limit = std::max(ms, kLongestWait);
  DWORD deadline = ms;  // both relative to the start
  char first = 0;
  bool any = false;
  for (DWORD now = 0; now < deadline && now <= limit; now = ticks.GetTicks() - start) {
    char byte = 0;
    if (GetBytesAvailable() == 0) {
      Sleep(1);
    } else if (ReadByte(&byte)) {
      if (!any) first = byte;
      any = true;
      if (c == 0 || byte == c) break;
      deadline = ticks.GetTicks() - start + ms;
    }
  }
  return first;
}

bool CSerialPort::ReadUntilAny(CString& text, bool& cancel, CString terminators) {
  constexpr DWORD kNextByteTime = 100;
  text.Empty();
  const auto timeout = static_cast<DWORD>(m_nTimeout.Get());
  SetFirstByteTimeout(m_hPort, timeout);
  CTicks ticks;
  const DWORD start = ticks.GetTicks();
  for (bool first = true; !cancel;) {
    if (!first && ticks.GetTicks() - start > timeout + kNextByteTime) return false;
    char byte = 0;
    if (ReadSome(&byte, 1) != 1) {
      if (first) return false;
      Sleep(1);  // reads of a lost line return at once: avoid spinning
      continue;
    }
    text += TextOf(&byte, 1);
    if (text.FindOneOf(terminators) >= 0) return true;
    if (std::exchange(first, false)) SetFirstByteTimeout(m_hPort, kNextByteTime);
  }
  return false;
}

bool CSerialPort::ReadReply(CString& text, bool& cancel, CString terminators, CString pattern,
                            CString alt_pattern) {
  if (pattern.IsEmpty()) return ReadUntilAny(text, cancel, terminators);
  text.Empty();
  if (cancel) return false;
  constexpr int kPiece = 409;
  constexpr DWORD kGrace = 500;
  char piece[kPiece];
  const auto timeout = static_cast<DWORD>(m_nTimeout.Get());
  SetFirstByteTimeout(m_hPort, timeout);
  if (ReadSome(piece, 1) != 1) return false;
  SetFirstByteTimeout(m_hPort, kFollowTime);
  text = TextOf(piece, 1);
  CTicks ticks;
  const DWORD start = ticks.GetTicks();
  for (;;) {
    const int count = ReadSome(piece, kPiece);
    if (count == 0) Sleep(1);
    text += TextOf(piece, count);
    bool complete = false;
    const bool main = HoldsReply(text, pattern, terminators, complete);
    const bool other = HoldsReply(text, alt_pattern, terminators, complete);
    if (complete || ticks.GetTicks() - start > timeout + kGrace) return main || other;
  }
}
