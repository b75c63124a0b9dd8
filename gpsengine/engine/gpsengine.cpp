#include "gpsengine/engine/gpsengine.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "gpsengine/drivers/receivers.h"
#include "gpsengine/engine/lease.h"
#include "gpsengine/engine/readerthread.h"
#include "gpsengine/engine/run.h"
#include "gpsengine/platform/clock.h"
#include "gpsengine/platform/resource.h"
#include "gpsengine/platform/trace.h"
#include "gpsengine/receiver/post.h"
#include "gpsengine/receiver/updatescope.h"

namespace {

// A stream that reaches this length without a whole message is garbage.
constexpr int kStreamLimit = 16392;
constexpr DWORD kLongestStop = 1000;

constexpr UINT kFirstErrorText = 14;
constexpr UINT kUnknownErrorText = 18;

// Receivers that a host callback still has to return into, at an unknown time: never deleted.
void KeepForGood(std::vector<std::unique_ptr<CGPSReceiver>> receivers) {
  static auto* const kept = new std::vector<std::unique_ptr<CGPSReceiver>>;
  static auto* const mutex = new std::mutex;
  const std::lock_guard lock(*mutex);
  std::move(receivers.begin(), receivers.end(), std::back_inserter(*kept));
}

}  // namespace

CGPSEngine::CGPSEngine() : m_Receivers(MakeReceivers()), m_pLease(std::make_shared<CEngineLease>(this)) {}

CGPSEngine::~CGPSEngine() {
  m_pLease->BeginLeaving();
  Stop();
  if (!m_pLease->Withdraw()) KeepForGood(std::move(m_Receivers));
}

bool CGPSEngine::AddReceiver(CGPSReceiver* new_receiver) {
  const CString name = new_receiver->GetName();
  const bool taken = std::any_of(m_Receivers.begin(), m_Receivers.end(),
                                 [&name](const auto& receiver) { return receiver->GetName() == name; });
  if (taken) return false;
  const auto tail = m_Receivers.empty() ? m_Receivers.end() : m_Receivers.end() - 1;
  m_Receivers.insert(tail, std::unique_ptr<CGPSReceiver>(new_receiver));
  return true;
}

CGPSReceiver* CGPSEngine::FindReceiver(CString name) {
  const auto found = std::find_if(m_Receivers.begin(), m_Receivers.end(),
                                  [&name](const auto& receiver) { return receiver->GetName() == name; });
  if (found != m_Receivers.end()) return found->get();
  return m_Receivers.empty() ? nullptr : m_Receivers.back().get();
}

void CGPSEngine::InitReceivers() {
  for (const auto& receiver : m_Receivers) receiver->SetProperties();
  m_bReceiversInitialized = true;
}

void CGPSEngine::SetReceiver(CGPSReceiver* new_receiver) {
  Stop();
  m_pReceiver = new_receiver;
}

bool CGPSEngine::Start() {
  Stop();
  if (!m_bReceiversInitialized) InitReceivers();
  CGPSReceiver* const receiver = m_pReceiver;
  if (receiver == nullptr) {
    m_nLastError = GPS_ENGINE_NO_RECEIVER;
    return false;
  }
  if (!m_bEmulation && !receiver->Initialize()) {
    m_nLastError = GPS_ENGINE_INIT_FAILED;
    return false;
  }
  auto run = std::make_shared<CRun>(m_pLease->Ends());
  {
    // The thread may stop the run at once, if there is no file to play.
    const std::lock_guard lock(m_RunMutex);
    m_pRun = run;
    m_hStopEvent = run->StopEvent();
    run->m_pThread = CReaderThread::Begin(m_pLease, run, m_bEmulation);
    m_pThread = run->m_pThread.get();
  }
  if (run->m_pThread == nullptr) {
    TakeRun();
    m_hStopEvent = nullptr;
    receiver->Suspend();
    m_nLastError = GPS_ENGINE_THREAD_FAILED;
    return false;
  }
  m_nLastError = GPS_ENGINE_OK;
  return true;
}

void CGPSEngine::Stop() {
  EndRun();
  if (CGPSReceiver* const receiver = m_pReceiver) receiver->Suspend();
}

// Detaches the run, so that only one thread ends it.
std::shared_ptr<CRun> CGPSEngine::TakeRun() {
  const std::lock_guard lock(m_RunMutex);
  return std::exchange(m_pRun, nullptr);
}

void CGPSEngine::EndRun() {
  const std::shared_ptr<CRun> run = TakeRun();
  if (run == nullptr) return;
  SetEvent(run->StopEvent());
  // Do not wait in a callback: the run's thread is waiting for the callback.
  bool done = false;
  if (!run->m_pThread->IsCurrent() && !m_pLease->IsHeldHere()) {
    if (const CGPSReceiver* const receiver = m_pReceiver) CancelRead(receiver->GetPortHandle());
    done = WaitForSingleObject(run->DoneEvent(), kLongestStop) == WAIT_OBJECT_0;
  }
  if (done) {
    run->m_pThread->Join();
  } else {
    m_pLease->EndRun(run->Ends());
  }
  const std::lock_guard lock(m_RunMutex);
  if (m_pRun != nullptr) return;  // a callback has started a new run
  m_hStopEvent = nullptr;
  m_pThread = nullptr;
}

CString CGPSEngine::GetLastErrorString() const {
  const bool known = m_nLastError >= GPS_ENGINE_OK && m_nLastError <= GPS_ENGINE_THREAD_FAILED;
  return LoadText(known ? kFirstErrorText + static_cast<UINT>(m_nLastError) : kUnknownErrorText);
}

// The scope of an update: prevents nested updates, and leaves the stream ready for the next bytes on every
// exit.
class CGPSEngine::Update {
 public:
  Update(CGPSEngine& engine, CEngineLease& lease) : m_Engine(engine), m_Lease(lease) {
    engine.m_bUpdating = true;
  }
  ~Update() {
    if (!m_Lease.IsEngineThere()) return;
    m_Engine.m_bUpdating = false;
    m_Engine.m_Buffer.Resize();
  }
  Update(const Update&) = delete;
  Update& operator=(const Update&) = delete;

 private:
  CGPSEngine& m_Engine;
  CEngineLease& m_Lease;
};

bool CGPSEngine::UpdateGPSBuffer(CBinBuffer& data) {
  return UpdateGPSBuffer(data.GetData(), data.GetLength(), m_pLease->Ends());
}

// `ends` identifies the run that the bytes belong to.
bool CGPSEngine::UpdateGPSBuffer(const char* data, int length, int ends) {
  const std::shared_ptr<CEngineLease> lease = m_pLease;  // a callback may destroy the engine
  const CEngineLease::Hold hold(*lease);
  const CUpdateScope scope(lease->Ends(), ends);
  CGPSReceiver* const receiver = m_pReceiver;
  if (scope.IsOver() || receiver == nullptr || m_bUpdating || !Append(data, length, ends)) return false;
  const Update update(*this, *lease);
  bool published = false;
  try {
    // The receiver may change: in a callback, or on the host's thread while a callback blocks this one.
    bool more = m_Buffer.GetCurrentMessage();
    while (more && m_Buffer.HasMessage() && m_pReceiver == receiver) {
      CString message = TakeMessage(*receiver, more);
      {
        const CEngineLease::Outside outside(*lease);
        if (receiver->Parse(message)) published = true;
      }
      if (!lease->IsEngineThere() || scope.IsOver()) return false;
      Forward(message);
    }
  } catch (const RunIsOver&) {
    return false;
  }
  return published;
}

// Appends to the stream. False, with the stream cleared, if it has grown too long.
bool CGPSEngine::Append(const char* data, int length, int ends) {
  if (std::exchange(m_nStreamEnds, ends) != ends) m_Buffer.Clear();  // left over from an ended run
  m_Buffer.Append(data, length);
  if (m_Buffer.GetLength() < kStreamLimit) return true;
  Trace("\nGPS data dropped: string too long!");
  ++m_nDroppedBuffers;
  m_Buffer.Clear();
  return false;
}

// Removes the current message from the stream and attaches its bytes. `more` is set if another one follows.
CString CGPSEngine::TakeMessage(CGPSReceiver& receiver, bool& more) {
  CString message = m_Buffer.GetMessageW();
  m_nMessages.Count();  // under the lease
  if (m_bAttachRawData) {
    int length = 0;
    const char* bytes = m_Buffer.GetMessageBin(length);
    m_bAttached = receiver.AttachRawData(bytes, length);
  } else if (std::exchange(m_bAttached, false)) {
    // A decoder must not see the bytes of an earlier message.
    receiver.AttachRawData(nullptr, 0);
  }
  more = m_Buffer.Next();
  return message;
}

// Forwards a decoded message to a host that captures texts.
void CGPSEngine::Forward(CString& message) {
  if (m_ComBuffer.m_bPaused) return;
  m_ComBuffer.OnRawData(&message);
  PostObject(WM_GPS_NEW_STRING, std::make_unique<CString>(std::move(message)));
}
