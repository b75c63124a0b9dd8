#include <cmath>
#include <optional>

#include "gpsengine/link/ack.h"
#include "gpsengine/platform/application.h"
#include "gpsengine/platform/clock.h"
#include "gpsengine/receiver/gpsreceiver.h"

// Raw output is commanded in the Ashtech language; a make with another language overrides both operations.

namespace {

constexpr CGPSCommand kRawOn[] = {
    {"$PASHS,RAW,MBN,A,ON\r\n", 200},
    {"$PASHS,RAW,PBN,A,ON\r\n", 200},
    {"$PASHS,RAW,SNV,A,ON\r\n", 200},
};
constexpr CGPSCommand kRawOff[] = {
    {"$PASHS,RAW,MBN,A,OFF\r\n", 200},
    {"$PASHS,RAW,PBN,A,OFF\r\n", 200},
    {"$PASHS,RAW,SNV,A,OFF\r\n", 200},
};
constexpr CGPSCommand kAutoBeacon[] = {{"$GPMSK,,A,,A,0\r\n", 200}};

constexpr double kShortestRawInterval = 0.25;

// Calls `write` for each command, up to a stop.
template <class Write>
void ForEach(CGPSDriver::Commands commands, Write write) {
  std::optional<CNoStop> goes_on;
  for (const CGPSCommand& command : commands) {
    if (IsStopping()) return;
    if (command.then == CGPSCommand::Then::goOn) goes_on.emplace();
    write(command);
    if (command.then == CGPSCommand::Then::mayStop) goes_on.reset();
  }
}

}  // namespace

bool CGPSReceiver::EnablePostProcessing(bool on) {
  if (!m_Port.IsOpen()) return false;
  if (!HasRawData()) return true;
  // Half a set of raw messages is of no use, so that here a failed write ends the sequence.
  for (const CGPSCommand& command : on ? kRawOn : kRawOff) {
    if (IsStopping() || !m_Port.Write(command.pszLine)) return false;
    Sleep(command.nWait);
  }
  return true;
}

bool CGPSReceiver::SetRawDataOutputInterval(double interval) {
  m_dRawDataInterval = interval;
  if (!HasRawData() || IsRtkReceiver() || !(interval >= kShortestRawInterval)) return false;
  CString line;
  line.Format("$PASHS,RCI,%-f\r\n", interval);
  if (!std::isfinite(interval) || line.GetLength() > CSerialPort::kMaxText) return false;
  Write(line, 200);
  return true;
}

void CGPSReceiver::Send(const CString& command) {
  if (!m_Port.IsOpen()) return;
  m_Port.Write(command + "\r\n");
}

bool CGPSReceiver::SendBinary(const unsigned char* data, unsigned short length) {
  if (data == nullptr || length == 0) return false;
  return m_Port.Write(data, length);
}

bool CGPSReceiver::WriteAck(const CString& command, bool wait, int time) {
  if (IsStopping()) return false;
  const CWaitCursor cursor;
  if (!wait) {
    if (!m_Port.Write(command)) return false;
    Sleep(static_cast<DWORD>(time));
    return true;
  }
  CAck ack;  // armed before the write, so that no answer is too quick for it
  return m_Port.Write(command) && ack.Create() && ack.Wait(time);
}

bool CGPSReceiver::WriteAck(CGPSDriver::Commands commands, bool wait) {
  bool all_written = true;
  ForEach(commands, [&](const CGPSCommand& command) {
    if (*command.pszLine == '\0') return Sleep(command.nWait);
    all_written &= WriteAck(command.pszLine, wait, static_cast<int>(command.nWait));
  });
  return all_written && !IsStopping();
}

bool CGPSReceiver::Write(CGPSDriver::Commands commands) {
  if (!m_Port.IsOpen() || IsStopping()) return false;
  WriteRegardless(commands);
  return true;
}

bool CGPSReceiver::Write(const CString& line, DWORD wait) {
  if (!m_Port.IsOpen() || IsStopping()) return false;
  m_Port.Write(line);
  if (wait > 0) Sleep(wait);
  return true;
}

void CGPSReceiver::WriteRegardless(CGPSDriver::Commands commands) {
  ForEach(commands, [](const CGPSCommand& command) {
    if (*command.pszLine != '\0') m_Port.Write(command.pszLine);
    if (command.nWait > 0) Sleep(command.nWait);
  });
}

void CGPSReceiver::SetBeacon(BEACON_MODE_TYPE mode, CString frequency, CString bit_rate) {
  if (GetDriver().queryBeacon.empty()) return;
  if (mode == BEACON_MODE_AUTO) {
    Write(kAutoBeacon);
    return;
  }
  CString line;
  line.Format("$GPMSK,%s,M,%s,%s,0\r\n", frequency.ToUtf8().c_str(), bit_rate.ToUtf8().c_str(),
              bit_rate.IsEmpty() ? "A" : "M");
  Write(line, 200);
}

void CGPSReceiver::SetSatElevMask(int mask) {
  CString degrees;
  degrees.Format("%d", mask);
  for (const CGPSCommand& command : GetDriver().setElevMask) {
    CString line = command.pszLine;
    line.Replace("#", degrees);
    Write(line, command.nWait);
  }
}
