#include "gpsengine/engine/readerthread.h"

#include "gpsengine/platform/clock.h"
#include "gpsengine/platform/messagebox.h"
#include "gpsengine/platform/resource.h"
#include "gpsengine/platform/serial.h"

namespace {

constexpr int kBulk = 16392;            // bytes of a bulk read at most
constexpr DWORD kFirstByteTime = 1000;  // a line that is silent for so long gets a keep-alive
constexpr DWORD kBulkTime = 1;
constexpr DWORD kPace = 100;  // a burst of sentences is read in one go
// Milliseconds without a record, after which old fixes say nothing of the speed. By the clock that nobody
// sets.
constexpr std::uint64_t kSilenceLimit = 10000;
constexpr UINT kCannotRecordText = 11;

void SetReadTimeouts(HANDLE hPort, DWORD msFirstByte) {
  const COMMTIMEOUTS timeouts{MAXDWORD, MAXDWORD, msFirstByte, 0, 0};
  SetCommTimeouts(hPort, &timeouts);
}

int ReadWithin(HANDLE hPort, char* pData, int nMax, DWORD ms) {
  SetReadTimeouts(hPort, ms);
  DWORD count = 0;
  ReadFile(hPort, pData, static_cast<DWORD>(nMax), &count);
  return static_cast<int>(count);
}

}  // namespace

CReaderThread::CReaderThread(std::shared_ptr<CEngineLease> lease, std::shared_ptr<CRun> run, bool bEmulation)
    : m_pLease(std::move(lease)), m_pRun(std::move(run)), m_bEmulation(bEmulation) {}

std::unique_ptr<CWinThread> CReaderThread::Begin(std::shared_ptr<CEngineLease> lease,
                                                 std::shared_ptr<CRun> run, bool bEmulation) {
  std::unique_ptr<CReaderThread> reader(new CReaderThread(std::move(lease), std::move(run), bEmulation));
  auto thread = AfxBeginThread(&CReaderThread::ThreadMain, reader.get());
  if (thread != nullptr) static_cast<void>(reader.release());  // the thread's own now
  return thread;
}

unsigned CReaderThread::ThreadMain(void* pParam) {
  const std::unique_ptr<CReaderThread> reader(static_cast<CReaderThread*>(pParam));
  reader->Run();
  SetEvent(reader->m_pRun->DoneEvent());
  return 0;
}

void CReaderThread::Run() {
  const auto clearStream = [](CGPSEngine& engine) { engine.m_Buffer.Clear(); };
  WithEngine(clearStream);  // a run that was abandoned has left its last bytes
  if (m_bEmulation) {
    PlayRecording();
  } else {
    ReadPort();
  }
  m_Recording.Close();
  WithEngine(clearStream);
}

bool CReaderThread::WithEngine(const std::function<void(CGPSEngine&)>& step) {
  const std::lock_guard lock(m_pLease->Mutex());
  CGPSEngine* engine = m_pLease->Engine();
  if (engine == nullptr || m_pRun->IsAbandoned()) return false;
  step(*engine);
  return true;
}

bool CReaderThread::WithReceiver(const std::function<void(CGPSReceiver&)>& step) {
  bool done = false;
  WithEngine([&](CGPSEngine& engine) {
    CGPSReceiver* const receiver = engine.m_pReceiver;
    done = receiver != nullptr;
    if (done) step(*receiver);
  });
  return done;
}

bool CReaderThread::Pause(DWORD ms) {
  return WaitForSingleObject(m_pRun->StopEvent(), ms) == WAIT_TIMEOUT;
}

void CReaderThread::ReadPort() {
  HANDLE port = INVALID_HANDLE_VALUE;
  WithReceiver([&port](CGPSReceiver& receiver) { port = receiver.GetPortHandle(); });
  m_nLastData = CurrentClock().Milliseconds();
  while (ReadPass(port) && Pause(kPace)) {
  }
}

// One pass over the line. A port that has failed or gone away is a silent line. False if the run is to end.
bool CReaderThread::ReadPass(HANDLE hPort) {
  char bytes[1 + kBulk];
  ResetAfterSilence();
  if (ReadWithin(hPort, bytes, 1, kFirstByteTime) == 0) {
    if (m_pRun->IsStopping()) return false;
    return WithReceiver([](CGPSReceiver& receiver) { receiver.KeepAlive(); });
  }
  const int count = 1 + ReadWithin(hPort, bytes + 1, kBulk, kBulkTime);
  Record(bytes, count);
  Take(bytes, count);
  return true;
}

void CReaderThread::ResetAfterSilence() {
  const std::uint64_t now = CurrentClock().Milliseconds();
  if (now - m_nLastData < kSilenceLimit) return;
  m_nLastData = now;
  WithReceiver([](CGPSReceiver& receiver) { receiver.ResetSpeedEngine(); });
}

void CReaderThread::Take(const char* pData, int nLength) {
  WithEngine([&](CGPSEngine& engine) {
    if (!engine.UpdateGPSBuffer(pData, nLength)) return;
    m_nLastData = CurrentClock().Milliseconds();
    engine.m_bGotData = true;
  });
}

// Writes the bytes of a pass if the host wants them recorded.
void CReaderThread::Record(const char* pData, int nLength) {
  bool wanted = false;
  WithEngine([&wanted](CGPSEngine& engine) { wanted = engine.m_bRecordRaw; });
  if (wanted && !m_bRecording) OpenRecording();
  if (!wanted && m_bRecording) {
    m_Recording.Close();
    m_bRecording = false;
  }
  if (!m_bRecording || m_Recording.Write(pData, static_cast<UINT>(nLength))) return;
  // A full disk, say. What was written stays; the run goes on without a recording.
  m_Recording.Close();
  m_bRecording = false;
  WithEngine([](CGPSEngine& engine) { engine.m_bRecordRaw = false; });
  AfxMessageBox("Recording has stopped: the file cannot be written any further.");
}

void CReaderThread::OpenRecording() {
  CString path;
  WithEngine([&path](CGPSEngine& engine) { path = engine.m_strRecordFile; });
  m_bRecording = m_Recording.Open(path.GetString(), CFile::modeCreate | CFile::modeWrite) != 0;
  if (m_bRecording) return;
  WithEngine([](CGPSEngine& engine) { engine.m_bRecordRaw = false; });
  WCHAR text[128];
  AfxMessageBox(CString(text, LoadStringW(kCannotRecordText, text, 128)));
}
