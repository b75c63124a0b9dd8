// A host that logs raw measurements: a CDataLog for a format of its own, here lines of comma-separated
// values, and the few calls that make a receiver send what it is fed with. It ends after five epochs.
//   rawlog /dev/ttyUSB0 Ashtech drive        writes drive.csv
#include <cstdio>

#include "gpsengine/datalog/datalog.h"
#include "gpsengine/engine/gpsengine.h"
#include "gpsengine/platform/application.h"
#include "gpsengine/rawdata/rawdata.h"

// The settings are the base class's; the format, and what is due when, is the log's.
class CCsvLog : public CDataLog {
 public:
  CCsvLog() : CDataLog(nullptr) {}
  ~CCsvLog() override { CCsvLog::Close(); }

  bool Open() override {
    if (!IsReady() || IsOpen()) return Fail("the settings do not suffice");
    m_pFile = std::fopen(GetFilename().ToUtf8().c_str(), "w");
    if (m_pFile == nullptr) return Fail("the file cannot be made");
    std::fputs("receiver time,satellite,pseudorange m,carrier phase cycles,doppler Hz\n", m_pFile);
    return true;
  }
  void Close() override {
    if (m_pFile != nullptr) std::fclose(m_pFile);
    m_pFile = nullptr;
  }
  bool IsOpen() const override { return m_pFile != nullptr; }
  CString GetFileExtension() override { return ".csv"; }

  bool IsEpochDue(const CGPSDataRaw& epoch) const override {
    // Half an interval of play, since receivers step their clocks. Time goes back once a week.
    const double dPassed = epoch.m_dReceiverTime - m_dLastTime;
    return m_nEpochs == 0 || dPassed < 0.0 || dPassed > m_dLogInterval - m_dLogInterval / 2;
  }
  bool WriteEpoch(const CGPSDataRaw& epoch) override {
    if (!IsOpen()) return Fail("no log is open");
    CGPSSatelliteDataRaw satellite;
    for (int i = 0; epoch.GetSatelliteData(satellite, i); ++i) {
      std::fprintf(m_pFile, "%.3f,%d,%.3f,%.3f,%.4f\n", epoch.m_dReceiverTime, satellite.m_nPRN,
                   satellite.m_dPseudorange, satellite.m_dCarrierPhase, satellite.m_dDoppler);
    }
    m_dLastTime = epoch.m_dReceiverTime;
    ++m_nEpochs;
    return Flush();
  }
  bool WriteEphemeris(const CGPSDataEphemeris&) override { return true; }  // no room for them in this format
  bool WriteRemark(const CString&) override { return false; }
  bool Flush() override {
    return IsOpen() && (std::fflush(m_pFile) == 0 || Fail("the file cannot be written"));
  }
  int GetNumEphemerides() override { return 0; }
  int GetNumEpochs() override { return m_nEpochs; }
  CString GetFormatName() override { return "comma-separated values"; }
  CString GetLastErrorString() override { return m_strError; }

 private:
  bool Fail(const char* pszReason) {
    m_strError = pszReason;
    return false;
  }

  std::FILE* m_pFile = nullptr;
  double m_dLastTime = 0.0;
  int m_nEpochs = 0;
  CString m_strError;
};

class Window : public CGPSWindow {
 public:
  explicit Window(CDataLog& log) : m_Log(log) {}
  void ReadBlocksOf(const CGPSReceiver& receiver) { m_pReceiver = &receiver; }

 private:
  void OnNewRawData(const CGPSDataRaw& epoch) override { Write(epoch); }
  // Some makes send blocks that the library hands on unread.
  void OnNewBin() override {
    rawdata::ObservationEpoch signals;
    CGPSDataRaw epoch;
    if (rawdata::DecodeObservations(rawdata::WordsOf(m_pReceiver->m_BinWords), m_History, signals) &&
        rawdata::ToDataRaw(signals, epoch))
      Write(epoch);
  }
  void Write(const CGPSDataRaw& epoch) {
    if (m_Log.IsEpochDue(epoch) && !m_Log.WriteEpoch(epoch)) PostQuitMessage();
    if (m_Log.GetNumEpochs() == 5) PostQuitMessage();
  }

  CDataLog& m_Log;
  const CGPSReceiver* m_pReceiver = nullptr;
  rawdata::PhaseHistory m_History;
};

int Fail(const CString& reason) {
  std::fprintf(stderr, "%s\n", reason.ToUtf8().c_str());
  return 1;
}

int main(int argc, char** argv) {
  if (argc != 4) return std::fprintf(stderr, "usage: rawlog DEVICE MODEL NAME\n"), 2;
  CWinApp app("rawlog");
  CCsvLog log;
  Window window(log);
  window.Create();
  app.SetMainWnd(&window);

  log.SetFilename(argv[3]);
  log.SetLogInterval(1.0);
  log.Enable(true);
  if (!log.Open()) return Fail(log.GetLastErrorString());

  CGPSEngine engine;
  engine.m_bAttachRawData = true;  // raw data are binary: the engine is to keep each message's bytes
  MapComPort(1, argv[1]);
  CGPSReceiver* receiver = engine.FindReceiver(argv[2]);
  window.ReadBlocksOf(*receiver);
  if (!receiver->HasRawData()) return Fail("this model has no raw data");
  receiver->SetupReceiver(1, 0, 0.0, "", false);
  engine.SetReceiver(receiver);
  if (!engine.Start()) return Fail(engine.GetLastErrorString());

  // Beside GSA and GSV sentences raw data are passed over. A start forgets which sentences have come.
  if (receiver->ImplementsSetNmea()) {
    receiver->SetGgaOnlyNMEA();
    if (!engine.Start()) return Fail(engine.GetLastErrorString());
  }
  if (!receiver->EnablePostProcessing(true)) return Fail("the receiver does not take the command");
  app.Run();
  std::printf("%d epochs in %s\n", log.GetNumEpochs(), log.GetFilename().ToUtf8().c_str());
  return log.GetNumEpochs() > 0 ? 0 : Fail(log.GetLastErrorString());
}
