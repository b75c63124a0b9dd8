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

std::unique_ptr<SerialLine> OpenNumber(int port) {
  SerialLineFactory factory;
  if (port > 0) {
    PortMap& ports = Ports();
    const std::lock_guard lock(ports.mutex);
    if (const auto line = ports.lines.find(port); line != ports.lines.end()) factory = line->second;
  }
  if (factory) return factory();
  const CString device = port > 0 ? GetComPortDevice(port) : CString();
  if (device.IsEmpty()) {
    SetLastError(ENODEV);
    return nullptr;
  }
  return OpenSerialDevice(device);
}

DWORD Sum(DWORD constant, DWORD multiplier, DWORD wanted) {
  const std::uint64_t total = constant + static_cast<std::uint64_t>(multiplier) * wanted;
  return static_cast<DWORD>(std::min<std::uint64_t>(total, MAXDWORD - 1));
}

// Reads until the count is reached, the line pauses, or the time is up.
int ReadBlock(SerialLine& line, char* data, int wanted, const COMMTIMEOUTS& timeouts) {
  const DWORD total =
      Sum(timeouts.ReadTotalTimeoutConstant, timeouts.ReadTotalTimeoutMultiplier, static_cast<DWORD>(wanted));
  const std::uint64_t start = CurrentClock().Milliseconds();
  int count = 0;
  while (count < wanted) {
    const std::uint64_t passed = CurrentClock().Milliseconds() - start;
    if (passed >= total) break;
    auto limit = static_cast<DWORD>(total - passed);
    if (count > 0 && timeouts.ReadIntervalTimeout > 0) limit = std::min(limit, timeouts.ReadIntervalTimeout);
    const int more = line.Read(data + count, wanted - count, limit);
    if (more <= 0) break;
    count += more;
  }
  return count;
}

}  // namespace

void MapComPort(int port, const CString& device) {
  PortMap& ports = Ports();
  const std::lock_guard lock(ports.mutex);
  ports.lines.erase(port);
  ports.devices[port] = device;
}

SerialLineFactory MapComPort(int port, SerialLineFactory factory) {
  PortMap& ports = Ports();
  const std::lock_guard lock(ports.mutex);
  return std::exchange(ports.lines[port], std::move(factory));
}

CString GetComPortDevice(int port) {
  PortMap& ports = Ports();
  const std::lock_guard lock(ports.mutex);
  if (const auto line = ports.lines.find(port); line != ports.lines.end() && line->second) return {};
  if (const auto device = ports.devices.find(port); device != ports.devices.end()) return device->second;
  return port > 0 ? CString::FromUtf8(StandardPort(port)) : CString();
}

HANDLE CreateFileW(const WCHAR* name, DWORD, DWORD, DWORD, DWORD) {
  auto line = OpenNumber(PortNumber(CString(name)));
  if (line == nullptr) return INVALID_HANDLE_VALUE;
  return AddHandle(std::make_shared<OpenPort>(std::move(line)));
}

bool GetCommState(HANDLE handle, DCB* dcb) {
  const auto port = FindObject<OpenPort>(handle);
  return port && port->Line().GetState(*dcb);
}

bool SetCommState(HANDLE handle, const DCB* dcb) {
  const auto port = FindObject<OpenPort>(handle);
  return port && port->Line().SetState(*dcb);
}

bool SetCommMask(HANDLE handle, DWORD) {
  return FindObject<OpenPort>(handle) != nullptr;
}

bool SetupComm(HANDLE handle, DWORD, DWORD) {
  return FindObject<OpenPort>(handle) != nullptr;
}

bool PurgeComm(HANDLE handle, DWORD flags) {
  const auto port = FindObject<OpenPort>(handle);
  return port && ((flags & PURGE_RXCLEAR) == 0 || port->Line().PurgeInput());
}

bool SetCommTimeouts(HANDLE handle, const COMMTIMEOUTS* timeouts) {
  const auto port = FindObject<OpenPort>(handle);
  if (port) port->SetTimeouts(*timeouts);
  return port != nullptr;
}

void SetFirstByteTimeout(HANDLE handle, DWORD ms) {
  const COMMTIMEOUTS timeouts{MAXDWORD, MAXDWORD, ms, 0, 0};
  SetCommTimeouts(handle, &timeouts);
}

bool ClearCommError(HANDLE handle, DWORD* errors, COMSTAT* stat) {
  const auto port = FindObject<OpenPort>(handle);
  if (!port) return false;
  stat->cbInQue = static_cast<DWORD>(port->Line().BytesWaiting(*errors));
  return true;
}

bool SetCommBreak(HANDLE handle) {
  const auto port = FindObject<OpenPort>(handle);
  return port && port->Line().SetBreak(true);
}

bool ClearCommBreak(HANDLE handle) {
  const auto port = FindObject<OpenPort>(handle);
  return port && port->Line().SetBreak(false);
}

bool ReadFile(HANDLE handle, void* data, DWORD wanted, DWORD* got) {
  *got = 0;
  const auto port = FindObject<OpenPort>(handle);
  if (!port) return false;
  const COMMTIMEOUTS timeouts = port->Timeouts();
  const int count = static_cast<int>(wanted);
  const bool at_once =
      timeouts.ReadIntervalTimeout == MAXDWORD && timeouts.ReadTotalTimeoutMultiplier == MAXDWORD;
  const int read = at_once ? port->Line().Read(data, count, timeouts.ReadTotalTimeoutConstant)
                           : ReadBlock(port->Line(), static_cast<char*>(data), count, timeouts);
  // A host's line may report a failure by a negative count.
  *got = static_cast<DWORD>(std::max(read, 0));
  return true;
}

bool CancelRead(HANDLE handle) {
  const auto port = FindObject<OpenPort>(handle);
  if (port) port->Line().WakeReader();
  return port != nullptr;
}

bool WriteFile(HANDLE handle, const void* data, DWORD wanted, DWORD* sent) {
  *sent = 0;
  const auto port = FindObject<OpenPort>(handle);
  if (!port) return false;
  const int written = port->Line().Write(data, static_cast<int>(wanted), kWriteLimit);
  *sent = static_cast<DWORD>(std::max(written, 0));
  return *sent == wanted;
}
