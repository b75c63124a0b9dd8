#include "gpsengine/platform/serial.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <map>
#include <mutex>
#include <utility>

#include "gpsengine/platform/clock.h"
#include "gpsengine/platform/event.h"
#include "gpsengine/platform/file.h"
#include "gpsengine/platform/system.h"
#include "gpsengine/platform/waitable.h"

namespace {

struct PortMap {
  std::mutex mutex;
  std::map<int, CString> devices;
  std::map<int, SerialLineFactory> lines;
};

PortMap& Ports() {
  static auto* const ports = new PortMap;
  return *ports;
}

// The object behind the handle of an open port.
class OpenPort : public KernelObject {
 public:
  explicit OpenPort(std::unique_ptr<SerialLine> line) : m_pLine(std::move(line)) {}

  void OnClose() override { m_pLine->Cancel(); }
  SerialLine& Line() { return *m_pLine; }
  void SetTimeouts(const COMMTIMEOUTS& timeouts) {
    const std::lock_guard lock(m_Mutex);
    m_Timeouts = timeouts;
  }
  COMMTIMEOUTS Timeouts() const {
    const std::lock_guard lock(m_Mutex);
    return m_Timeouts;
  }

 private:
  mutable std::mutex m_Mutex;
  COMMTIMEOUTS m_Timeouts;
  const std::unique_ptr<SerialLine> m_pLine;
};

// The number in "COM<n>:", or -1.
int PortNumber(const CString& name) {
  if (!name.StartsWith("COM") || name.Right(1) != CString(":")) return -1;
  const std::string digits = name.Mid(3, name.GetLength() - 4).ToUtf8();
  int number = -1;
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
  return error == std::errc() && end == digits.data() + digits.size() ? number : -1;
}

std::unique_ptr<SerialLine> OpenNumber(int nPort) {
  SerialLineFactory factory;
  if (nPort > 0) {
    PortMap& ports = Ports();
    const std::lock_guard lock(ports.mutex);
    if (const auto line = ports.lines.find(nPort); line != ports.lines.end()) factory = line->second;
  }
  if (factory) return factory();
  const CString device = nPort > 0 ? GetComPortDevice(nPort) : CString();
  if (device.IsEmpty()) {
    SetLastError(ENODEV);
    return nullptr;
  }
  return OpenSerialDevice(device);
}

DWORD Sum(DWORD nConstant, DWORD nMultiplier, DWORD nCount) {
  const std::uint64_t total = nConstant + static_cast<std::uint64_t>(nMultiplier) * nCount;
  return static_cast<DWORD>(std::min<std::uint64_t>(total, MAXDWORD - 1));
}

// Reads until the count is reached, the line pauses, or the time is up.
int ReadBlock(SerialLine& line, char* pData, int nCount, const COMMTIMEOUTS& timeouts) {
  const DWORD total =
      Sum(timeouts.ReadTotalTimeoutConstant, timeouts.ReadTotalTimeoutMultiplier, static_cast<DWORD>(nCount));
  const std::uint64_t start = CurrentClock().Milliseconds();
  int count = 0;
  while (count < nCount) {
    const std::uint64_t passed = CurrentClock().Milliseconds() - start;
    if (passed >= total) break;
    auto limit = static_cast<DWORD>(total - passed);
    if (count > 0 && timeouts.ReadIntervalTimeout > 0) limit = std::min(limit, timeouts.ReadIntervalTimeout);
    const int more = line.Read(pData + count, nCount - count, limit);
    if (more <= 0) break;
    count += more;
  }
  return count;
}

}  // namespace

void MapComPort(int nPort, const CString& device) {
  PortMap& ports = Ports();
  const std::lock_guard lock(ports.mutex);
  ports.lines.erase(nPort);
  ports.devices[nPort] = device;
}

SerialLineFactory MapComPort(int nPort, SerialLineFactory factory) {
  PortMap& ports = Ports();
  const std::lock_guard lock(ports.mutex);
  return std::exchange(ports.lines[nPort], std::move(factory));
}

CString GetComPortDevice(int nPort) {
  PortMap& ports = Ports();
  const std::lock_guard lock(ports.mutex);
  if (const auto line = ports.lines.find(nPort); line != ports.lines.end() && line->second) return {};
  if (const auto device = ports.devices.find(nPort); device != ports.devices.end()) return device->second;
  return nPort > 0 ? CString::FromUtf8(StandardPort(nPort)) : CString();
}

HANDLE CreateFileW(const WCHAR* pszName, DWORD, DWORD, DWORD, DWORD) {
  auto line = OpenNumber(PortNumber(CString(pszName)));
  if (line == nullptr) return INVALID_HANDLE_VALUE;
  return AddHandle(std::make_shared<OpenPort>(std::move(line)));
}

bool GetCommState(HANDLE hPort, DCB* pDcb) {
  const auto port = FindObject<OpenPort>(hPort);
  return port && port->Line().GetState(*pDcb);
}

bool SetCommState(HANDLE hPort, const DCB* pDcb) {
  const auto port = FindObject<OpenPort>(hPort);
  return port && port->Line().SetState(*pDcb);
}

bool SetCommMask(HANDLE hPort, DWORD) {
  return FindObject<OpenPort>(hPort) != nullptr;
}

bool SetupComm(HANDLE hPort, DWORD, DWORD) {
  return FindObject<OpenPort>(hPort) != nullptr;
}

bool PurgeComm(HANDLE hPort, DWORD nFlags) {
  const auto port = FindObject<OpenPort>(hPort);
  return port && ((nFlags & PURGE_RXCLEAR) == 0 || port->Line().PurgeInput());
}

bool SetCommTimeouts(HANDLE hPort, const COMMTIMEOUTS* pTimeouts) {
  const auto port = FindObject<OpenPort>(hPort);
  if (port) port->SetTimeouts(*pTimeouts);
  return port != nullptr;
}

bool ClearCommError(HANDLE hPort, DWORD* pErrors, COMSTAT* pStat) {
  const auto port = FindObject<OpenPort>(hPort);
  if (!port) return false;
  pStat->cbInQue = static_cast<DWORD>(port->Line().BytesWaiting(*pErrors));
  return true;
}

bool SetCommBreak(HANDLE hPort) {
  const auto port = FindObject<OpenPort>(hPort);
  return port && port->Line().SetBreak(true);
}

bool ClearCommBreak(HANDLE hPort) {
  const auto port = FindObject<OpenPort>(hPort);
  return port && port->Line().SetBreak(false);
}

bool ReadFile(HANDLE hPort, void* pData, DWORD nCount, DWORD* pRead) {
  *pRead = 0;
  const auto port = FindObject<OpenPort>(hPort);
  if (!port) return false;
  const COMMTIMEOUTS timeouts = port->Timeouts();
  const int count = static_cast<int>(nCount);
  const bool atOnce =
      timeouts.ReadIntervalTimeout == MAXDWORD && timeouts.ReadTotalTimeoutMultiplier == MAXDWORD;
  const int read = atOnce ? port->Line().Read(pData, count, timeouts.ReadTotalTimeoutConstant)
                          : ReadBlock(port->Line(), static_cast<char*>(pData), count, timeouts);
  // A host's line may report a failure by a negative count.
  *pRead = static_cast<DWORD>(std::max(read, 0));
  return true;
}

bool CancelRead(HANDLE hPort) {
  const auto port = FindObject<OpenPort>(hPort);
  if (port) port->Line().WakeReader();
  return port != nullptr;
}

bool WriteFile(HANDLE hPort, const void* pData, DWORD nCount, DWORD* pWritten) {
  *pWritten = 0;
  const auto port = FindObject<OpenPort>(hPort);
  if (!port) return false;
  const int written = port->Line().Write(pData, static_cast<int>(nCount), kWriteLimit);
  *pWritten = static_cast<DWORD>(std::max(written, 0));
  return *pWritten == nCount;
}
