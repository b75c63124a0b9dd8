#include "gpsengine/engine/readerthread.h"

#include "gpsengine/platform/clock.h"
#include "gpsengine/platform/messagebox.h"
#include "gpsengine/platform/resource.h"
#include "gpsengine/platform/serial.h"
#include "gpsengine/platform/trace.h"

namespace {

constexpr int kBulk = 16392;            // bytes of a bulk read at most
constexpr DWORD kFirstByteTime = 1000;  // a keep-alive is sent after this much silence
constexpr DWORD kBulkTime = 1;
constexpr DWORD kPace = 100;  // so that a burst of sentences is read in one go
// After this many milliseconds without a record, old fixes are useless for the speed. By the monotonic clock.
constexpr std::uint64_t kSilenceLimit = 10000;
constexpr UINT kCannotRecordText = 11;

int ReadWithin(HANDLE port, char* data, int max, DWORD ms) {
  SetFirstByteTimeout(port, ms);
  DWORD count = 0;
  ReadFile(port, data, static_cast<DWORD>(max), &count);
  return static_cast<int>(count);
}

}  // namespace

CReaderThread::CReaderThread(std::shared_ptr<CEngineLease> lease, std::shared_ptr<CRun> run, bool emulation)
    : m_pLease(std::move(lease)), m_pRun(std::move(run)), m_bEmulation(emulation) {}

std::unique_ptr<CWinThread> CReaderThread::Begin(std::shared_ptr<CEngineLease> lease,
                                                 std::shared_ptr<CRun> run, bool emulation) {
  std::unique_ptr<CReaderThread> reader(new CReaderThread(std::move(lease), std::move(run), emulation));
  auto thread = AfxBeginThread(&CReaderThread::ThreadMain, reader.get());
  if (thread != nullptr) static_cast<void>(reader.release());  // now owned by the thread
  return thread;
}

unsigned CReaderThread::ThreadMain(void* param) {
  const std::unique_ptr<CReaderThread> reader(static_cast<CReaderThread*>(param));
  reader->Run();
  SetEvent(reader->m_pRun->DoneEvent());
  return 0;
}

void CReaderThread::Run() {
  if (m_bEmulation) {
    PlayRecording();
  } else {
    ReadPort();
  }
  m_Recording.Close();
  if (const Step step(*this); step) m_pLease->EndRun(m_pRun->Ends());
}

CReaderThread::Step::Step(const CReaderThread& reader)
    : m_Hold(*reader.m_pLease),
      m_pEngine(reader.m_pRun->Ends() == reader.m_pLease->Ends() ? reader.m_pLease->Engine() : nullptr) {}

CGPSReceiver* CReaderThread::Step::Receiver() const {
  return m_pEngine == nullptr ? nullptr : m_pEngine->m_pReceiver.Get();
}

bool CReaderThread::Pause(DWORD ms) {
  return WaitForSingleObject(m_pRun->StopEvent(), ms) == WAIT_TIMEOUT;
}

void CReaderThread::ReadPort() {
  HANDLE port = INVALID_HANDLE_VALUE;
  if (const Step step(*this); const CGPSReceiver* const receiver = step.Receiver())
    port = receiver->GetPortHandle();
  m_nLastData = CurrentClock().Milliseconds();
  while (ReadPass(port) && Pause(kPace)) {
  }
}

// One pass. A failed or missing port counts as silent. False if the run should end.
bool CReaderThread::ReadPass(HANDLE port) {
  char bytes[1 + kBulk];
  ResetAfterSilence();
  if (ReadWithin(port, bytes, 1, kFirstByteTime) == 0) return !m_pRun->IsStopping() && KeepAlive();
  const int count = 1 + ReadWithin(port, bytes + 1, kBulk, kBulkTime);
  Record(bytes, count);
  Take(bytes, count);
  return true;
}

bool CReaderThread::KeepAlive() {
  const Step step(*this);
  CGPSReceiver* const receiver = step.Receiver();
  if (receiver == nullptr) return false;
  const CEngineLease::Outside outside(*m_pLease);
  receiver->KeepAlive();
  return true;
}

void CReaderThread::ResetAfterSilence() {
  const std::uint64_t now = CurrentClock().Milliseconds();
  if (now - m_nLastData < kSilenceLimit) return;
  m_nLastData = now;
  const Step step(*this);
  if (CGPSReceiver* const receiver = step.Receiver()) receiver->ResetSpeedEngine();
}

void CReaderThread::Take(const char* data, int length) {
  const Step step(*this);
  if (!step || !step->UpdateGPSBuffer(data, length, m_pRun->Ends())) return;
  m_nLastData = CurrentClock().Milliseconds();
  step->m_bGotData = true;
}

// Records the bytes of a pass if the host wants that.
void CReaderThread::Record(const char* data, int length) {
  bool wanted = false;
  if (const Step step(*this); step) wanted = step->m_bRecordRaw;
  if (wanted && !m_bRecording) OpenRecording();
  if (!wanted && m_bRecording) {
    m_Recording.Close();
    m_bRecording = false;
  }
  if (!m_bRecording || m_Recording.Write(data, static_cast<UINT>(length))) return;
  // For example a full disk. What was written is kept; the run continues without recording.
  Trace("The recording cannot be written any further.\n");
  GiveUpRecording();
}

void CReaderThread::OpenRecording() {
  CString path;
  if (const Step step(*this); step) path = step->m_strRecordFile;
  m_bRecording = m_Recording.Open(path.GetString(), CFile::modeCreate | CFile::modeWrite) != 0;
  if (m_bRecording) return;
  AfxMessageBox(LoadText(kCannotRecordText));
  GiveUpRecording();
}

// Tells the host by the flag that recording has stopped.
void CReaderThread::GiveUpRecording() {
  if (const Step step(*this); step) step->m_bRecordRaw = false;
}
