#include "gpsengine/platform/rehearsal.h"

#include <algorithm>
#include <cerrno>
#include <mutex>

#include "gpsengine/platform/file.h"

struct CRehearsal::State {
  struct Arrival {
    std::uint64_t nTime;
    std::string bytes;
  };

  std::mutex mutex;
  std::vector<Step> steps;
  std::function<void(const Step&)> handler;
  std::uint64_t nNow = 1'000'000;
  std::uint64_t nStop = UINT64_MAX;
  std::int64_t nUnixStart = 1'700'000'000;
  std::vector<Arrival> arrivals;  // in the order of their times
  std::string input;
  DWORD nErrors = 0;
  int nWriteLimit = -1;
  DCB dcb;

  // Notes a step and tells of it.
  void Add(Step step) {
    std::unique_lock lock(mutex);
    steps.push_back(step);
    const auto told = handler;
    lock.unlock();
    if (told) told(step);
  }

  // Moves what has arrived by now to the input.
  void Arrive() {
    while (!arrivals.empty() && arrivals.front().nTime <= nNow) {
      input += arrivals.front().bytes;
      arrivals.erase(arrivals.begin());
    }
  }
};

// The line that the port number maps to. In an open port it may outlive the rehearsal; it is then silent.
class CRehearsal::Line : public SerialLine {
 public:
  explicit Line(std::shared_ptr<State> state) : m_pState(std::move(state)) {}

  bool GetState(DCB& dcb) override {
    const std::lock_guard lock(m_pState->mutex);
    const DWORD length = dcb.DCBlength;
    dcb = m_pState->dcb;
    dcb.DCBlength = length;
    return true;
  }
  bool SetState(const DCB& dcb) override {
    const std::lock_guard lock(m_pState->mutex);
    m_pState->dcb = dcb;
    return true;
  }
  int Read(void* data, int max, DWORD ms) override {
    CurrentClock().Wait(WaitKind::line, ms, [this](DWORD) {
      const std::lock_guard lock(m_pState->mutex);
      m_pState->Arrive();
      return !m_pState->input.empty();
    });
    const std::lock_guard lock(m_pState->mutex);
    std::string& input = m_pState->input;
    const auto count = std::min(static_cast<std::size_t>(std::max(max, 0)), input.size());
    std::copy_n(input.begin(), count, static_cast<char*>(data));
    input.erase(0, count);
    return static_cast<int>(count);
  }
  int Write(const void* data, int length, DWORD) override {
    const int count = m_pState->nWriteLimit < 0 ? length : std::min(length, m_pState->nWriteLimit);
    m_pState->Add(
        {StepKind::write, std::string(static_cast<const char*>(data), static_cast<std::size_t>(count)), 0});
    return count;
  }
  void Cancel() override {}
  void WakeReader() override {}
  bool PurgeInput() override {
    const std::lock_guard lock(m_pState->mutex);
    m_pState->Arrive();
    m_pState->input.clear();
    return true;
  }
  int BytesWaiting(DWORD& errors) override {
    const std::lock_guard lock(m_pState->mutex);
    m_pState->Arrive();
    errors = m_pState->nErrors;
    m_pState->nErrors = 0;
    return static_cast<int>(m_pState->input.size());
  }
  bool SetBreak(bool) override { return true; }

 private:
  std::shared_ptr<State> m_pState;
};

CRehearsal::CRehearsal(int port, bool port_opens)
    : m_nPort(port),
      m_LineBefore(MapComPort(port, SerialLineFactory())),
      m_pClockBefore(SetClock(this)),
      m_pState(std::make_shared<State>()) {
  MapComPort(port, [state = m_pState, port_opens]() -> std::unique_ptr<SerialLine> {
    if (port_opens) return std::make_unique<Line>(state);
    SetLastError(ENODEV);
    return nullptr;
  });
}

CRehearsal::~CRehearsal() {
  SetClock(m_pClockBefore);
  MapComPort(m_nPort, m_LineBefore);
}

void CRehearsal::SetStepHandler(std::function<void(const Step&)> handler) {
  const std::lock_guard lock(m_pState->mutex);
  m_pState->handler = std::move(handler);
}

const std::vector<CRehearsal::Step>& CRehearsal::GetSteps() const {
  return m_pState->steps;
}

void CRehearsal::ForgetSteps() {
  m_pState->steps.clear();
}

std::string CRehearsal::Transcript() const {
  std::string text;
  for (const Step& step : m_pState->steps) {
    if (!text.empty()) text += "; ";
    text += Describe(step);
  }
  return text;
}

namespace {

bool IsText(std::string_view bytes) {
  return std::all_of(bytes.begin(), bytes.end(),
                     [](char c) { return (c >= ' ' && c <= '~') || c == '\r' || c == '\n' || c == '\t'; });
}

std::string Escaped(std::string_view bytes) {
  constexpr std::string_view kEscaped = "\r\n\t\"\\", kNames = "rnt\"\\";
  std::string text;
  for (const char c : bytes) {
    const auto at = kEscaped.find(c);
    if (at != kEscaped.npos) text += '\\';
    text += at != kEscaped.npos ? kNames[at] : c;
  }
  return text;
}

std::string Hexadecimal(std::string_view bytes) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  std::string text;
  for (const char c : bytes) {
    text += kDigits[static_cast<unsigned char>(c) >> 4];
    text += kDigits[static_cast<unsigned char>(c) & 15];
  }
  return text;
}

}  // namespace

std::string CRehearsal::Describe(const Step& step) {
  switch (step.kind) {
    case StepKind::write:
      return IsText(step.bytes) ? "write \"" + Escaped(step.bytes) + '"'
                                : "write-hex " + Hexadecimal(step.bytes);
    case StepKind::sleep:
      return "wait " + std::to_string(step.ms);
    case StepKind::waitForMessage:
      return "wait-ack " + std::to_string(step.ms);
  }
  return {};
}

void CRehearsal::Feed(std::string_view bytes, DWORD ms_from_now) {
  const std::lock_guard lock(m_pState->mutex);
  auto& arrivals = m_pState->arrivals;
  const std::uint64_t time = m_pState->nNow + ms_from_now;
  const auto behind = std::find_if(arrivals.begin(), arrivals.end(),
                                   [time](const State::Arrival& arrival) { return arrival.nTime > time; });
  arrivals.insert(behind, {time, std::string(bytes)});
}

void CRehearsal::SetLineErrors(DWORD errors) {
  m_pState->nErrors = errors;
}

void CRehearsal::LimitWrites(int bytes) {
  m_pState->nWriteLimit = bytes;
}

void CRehearsal::StopAfter(DWORD ms) {
  const std::lock_guard lock(m_pState->mutex);
  m_pState->nStop = m_pState->nNow + ms;
}

bool CRehearsal::WantsStop() {
  const std::lock_guard lock(m_pState->mutex);
  return m_pState->nNow >= m_pState->nStop;
}

void CRehearsal::Advance(DWORD ms) {
  const std::lock_guard lock(m_pState->mutex);
  m_pState->nNow += ms;
}

void CRehearsal::SetUnixSeconds(std::int64_t seconds) {
  const std::lock_guard lock(m_pState->mutex);
  m_pState->nUnixStart = seconds - static_cast<std::int64_t>(m_pState->nNow / 1000);
}

std::uint64_t CRehearsal::Milliseconds() {
  const std::lock_guard lock(m_pState->mutex);
  return m_pState->nNow;
}

std::int64_t CRehearsal::UnixSeconds() {
  const std::lock_guard lock(m_pState->mutex);
  return m_pState->nUnixStart + static_cast<std::int64_t>(m_pState->nNow / 1000);
}

void CRehearsal::Sleep(DWORD ms) {
  if (ms > 0) m_pState->Add({StepKind::sleep, {}, ms});
  Advance(ms);
}

// With no other thread involved, the wait is satisfied already, or by the passing of time, or never.
bool CRehearsal::Wait(WaitKind kind, DWORD ms, const std::function<bool(DWORD)>& block) {
  if (kind == WaitKind::message) m_pState->Add({StepKind::waitForMessage, {}, ms});
  if (block(0)) return true;
  if (kind == WaitKind::event) m_pState->Add({StepKind::sleep, {}, ms});
  if (kind == WaitKind::line) {
    const std::lock_guard lock(m_pState->mutex);
    const std::uint64_t end = m_pState->nNow + ms;
    if (!m_pState->arrivals.empty() && m_pState->arrivals.front().nTime <= end) {
      m_pState->nNow = m_pState->arrivals.front().nTime;
    } else {
      m_pState->nNow = end;
    }
  } else {
    Advance(ms);
  }
  return block(0);
}
