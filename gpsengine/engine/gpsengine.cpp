#include "gpsengine/engine/gpsengine.h"

#include <algorithm>
#include <utility>

#include "gpsengine/drivers/receivers.h"
#include "gpsengine/engine/readerthread.h"
#include "gpsengine/engine/run.h"
#include "gpsengine/platform/clock.h"
#include "gpsengine/platform/messagebox.h"
#include "gpsengine/platform/resource.h"
#include "gpsengine/platform/trace.h"
#include "gpsengine/receiver/post.h"

namespace {

// A stream that has grown to this length without a whole message is no stream of messages.
constexpr int kStreamLimit = 16392;
constexpr DWORD kLongestStop = 1000;

constexpr UINT kFirstErrorText = 14;
constexpr UINT kUnknownErrorText = 18;
constexpr int kTextBuffer = 128;

}  // namespace

CGPSEngine::CGPSEngine() : m_pLease(std::make_shared<CEngineLease>(this)), m_Receivers(MakeReceivers()) {}

CGPSEngine::~CGPSEngine() {
  Stop();
  m_pLease->Withdraw();
}

bool CGPSEngine::AddReceiver(CGPSReceiver* pReceiver) {
  const CString name = pReceiver->GetName();
  const bool taken = std::any_of(m_Receivers.begin(), m_Receivers.end(),
                                 [&name](const auto& receiver) { return receiver->GetName() == name; });
  if (taken) return false;
  const auto tail = m_Receivers.empty() ? m_Receivers.end() : m_Receivers.end() - 1;
  m_Receivers.insert(tail, std::unique_ptr<CGPSReceiver>(pReceiver));
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

void CGPSEngine::SetReceiver(CGPSReceiver* pReceiver) {
  Stop();
  m_pReceiver = pReceiver;
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
  auto run = std::make_shared<CRun>();
  {
    // The thread may stop the run as soon as it exists, when it finds no file to play.
    const std::lock_guard lock(m_RunMutex);
    m_pRun = run;
    m_hStopEvent = run->StopEvent();
    run->m_pThread = CReaderThread::Begin(m_pLease, run, m_bEmulation);
  }
  if (run->m_pThread == nullptr) {
    TakeRun();
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

// Takes the run out, so that whoever ends it does so alone.
std::shared_ptr<CRun> CGPSEngine::TakeRun() {
  const std::lock_guard lock(m_RunMutex);
  m_hStopEvent = nullptr;
  return std::exchange(m_pRun, nullptr);
}

void CGPSEngine::EndRun() {
  const std::shared_ptr<CRun> run = TakeRun();
  if (run == nullptr) return;
  SetEvent(run->StopEvent());
  if (run->m_pThread->IsCurrent())
    return;  // a callback stops its own run, which ends when the callback returns
  if (const CGPSReceiver* const receiver = m_pReceiver) CancelRead(receiver->GetPortHandle());
  if (WaitForSingleObject(run->DoneEvent(), kLongestStop) == WAIT_OBJECT_0) {
    run->m_pThread->Join();
  } else {
    run->Abandon();
  }
}

CString CGPSEngine::GetLastErrorString() const {
  const bool known = m_nLastError >= GPS_ENGINE_OK && m_nLastError <= GPS_ENGINE_THREAD_FAILED;
  WCHAR text[kTextBuffer];
  const int length = LoadStringW(
      known ? kFirstErrorText + static_cast<UINT>(m_nLastError) : kUnknownErrorText, text, kTextBuffer);
  if (length == 0) AfxMessageBox("Error loading resource string.");
  return CString(text, length);
}

bool CGPSEngine::UpdateGPSBuffer(CBinBuffer& data) {
  return UpdateGPSBuffer(data.GetLength() > 0 ? data.GetData() : nullptr, data.GetLength());
}

bool CGPSEngine::UpdateGPSBuffer(const char* pData, int nLength) {
  const std::lock_guard lock(m_pLease->Mutex());
  CGPSReceiver* const receiver = m_pReceiver;
  if (receiver == nullptr || m_bUpdating) return false;
  m_Buffer.Append(pData, nLength);
  if (m_Buffer.GetLength() >= kStreamLimit) {
    Trace("\nGPS data dropped: string too long!");
    ++m_nDroppedBuffers;
    m_Buffer.Clear();
    return false;
  }
  m_bUpdating = true;
  bool published = false;
  // A callback may select another receiver, and so may the host while a callback holds this thread up.
  for (bool more = m_Buffer.GetCurrentMessage(); more && m_Buffer.HasMessage() && m_pReceiver == receiver;
       more = m_Buffer.Next()) {
    if (TakeMessage(*receiver)) published = true;
  }
  m_bUpdating = false;
  m_Buffer.Resize();
  return published;
}

// Attaches, decodes and forwards the current message, in this order. True if it led to a record.
bool CGPSEngine::TakeMessage(CGPSReceiver& receiver) {
  CString message = m_Buffer.GetMessageW();
  m_nMessages.Count();  // behind the lease
  if (m_bAttachRawData) {
    int length = 0;
    const char* bytes = m_Buffer.GetMessageBin(length);
    m_bAttached = receiver.AttachRawData(bytes, length);
  } else if (std::exchange(m_bAttached, false)) {
    // A decoder must not take the bytes of an earlier message for this one's.
    receiver.AttachRawData(nullptr, 0);
  }
  const bool published = receiver.Parse(message);
  if (!m_ComBuffer.m_bPaused) {
    m_ComBuffer.OnRawData(&message);
    PostObject(WM_GPS_NEW_STRING, std::make_unique<CString>(std::move(message)));
  }
  return published;
}
