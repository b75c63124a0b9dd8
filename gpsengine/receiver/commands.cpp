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
  std::optional<CNoStop> goesOn;
  for (const CGPSCommand& command : commands) {
    if (IsStopping()) return;
    if (command.then == CGPSCommand::Then::goOn) goesOn.emplace();
    write(command);
    if (command.then == CGPSCommand::Then::mayStop) goesOn.reset();
  }
}

}  // namespace

bool CGPSReceiver::EnablePostProcessing(bool bOn) {
  if (!m_Port.IsOpen()) return false;
  if (!HasRawData()) return true;
  // Half a set of raw messages is of no use, so that here a failed write ends the sequence.
  for (const CGPSCommand& command : bOn ? kRawOn : kRawOff) {
    if (IsStopping() || !m_Port.Write(command.pszLine)) return false;
    Sleep(command.nWait);
  }
  return true;
}

bool CGPSReceiver::SetRawDataOutputInterval(double dInterval) {
  m_dRawDataInterval = dInterval;
  if (!HasRawData() || IsRtkReceiver() || !(dInterval >= kShortestRawInterval)) return false;
  CString strLine;
  strLine.Format("$PASHS,RCI,%-f\r\n", dInterval);
  if (!std::isfinite(dInterval) || strLine.GetLength() > CSerialPort::kMaxText) return false;
  Write(strLine, 200);
  return true;
}

void CGPSReceiver::Send(const CString& strCommand) {
  if (!m_Port.IsOpen()) return;
  m_Port.Write(strCommand + "\r\n");
}

bool CGPSReceiver::SendBinary(const unsigned char* pData, unsigned short nLength) {
  if (pData == nullptr || nLength == 0) return false;
  return m_Port.Write(pData, nLength);
}

bool CGPSReceiver::WriteAck(const CString& strCommand, bool bWait, int nTime) {
  if (IsStopping()) return false;
  const CWaitCursor cursor;
  if (!bWait) {
    if (!m_Port.Write(strCommand)) return false;
    Sleep(static_cast<DWORD>(nTime));
    return true;
  }
  CAck ack;  // armed before the write, so that no answer is too quick for it
  return m_Port.Write(strCommand) && ack.Create() && ack.Wait(nTime);
}

bool CGPSReceiver::WriteAck(CGPSDriver::Commands commands, bool bWait) {
  bool bAllWritten = true;
  ForEach(commands, [&](const CGPSCommand& command) {
    if (*command.pszLine == '\0') return Sleep(command.nWait);
    bAllWritten &= WriteAck(command.pszLine, bWait, static_cast<int>(command.nWait));
  });
  return bAllWritten && !IsStopping();
}

bool CGPSReceiver::Write(CGPSDriver::Commands commands) {
  if (!m_Port.IsOpen() || IsStopping()) return false;
  WriteRegardless(commands);
  return true;
}

bool CGPSReceiver::Write(const CString& strLine, DWORD nWait) {
  if (!m_Port.IsOpen() || IsStopping()) return false;
  m_Port.Write(strLine);
  if (nWait > 0) Sleep(nWait);
  return true;
}

void CGPSReceiver::WriteRegardless(CGPSDriver::Commands commands) {
  ForEach(commands, [](const CGPSCommand& command) {
    if (*command.pszLine != '\0') m_Port.Write(command.pszLine);
    if (command.nWait > 0) Sleep(command.nWait);
  });
}

void CGPSReceiver::SetBeacon(BEACON_MODE_TYPE mode, CString strFrequency, CString strBitRate) {
  if (GetDriver().queryBeacon.empty()) return;
  if (mode == BEACON_MODE_AUTO) {
    Write(kAutoBeacon);
    return;
  }
  CString strLine;
  strLine.Format("$GPMSK,%s,M,%s,%s,0\r\n", strFrequency, strBitRate, strBitRate.IsEmpty() ? "A" : "M");
  Write(strLine, 200);
}

void CGPSReceiver::SetSatElevMask(int nDegrees) {
  CString strDegrees;
  strDegrees.Format("%d", nDegrees);
  for (const CGPSCommand& command : GetDriver().setElevMask) {
    CString strLine = command.pszLine;
    strLine.Replace("#", strDegrees);
    Write(strLine, command.nWait);
  }
}
