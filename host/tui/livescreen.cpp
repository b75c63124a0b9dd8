#include "host/tui/livescreen.h"

#include <unistd.h>

#include <utility>

#include "gpsengine/platform/application.h"
#include "gpsengine/platform/trace.h"
#include "host/run/failure.h"
#include "host/run/progress.h"
#include "host/tui/keys.h"

namespace host {

namespace {

constexpr std::chrono::milliseconds kLeastInterval{100};
constexpr std::chrono::seconds kTick{1};
constexpr std::chrono::seconds kStatusTime{20};
// Answers that no decoder takes are looked for as long as this after a request.
constexpr std::chrono::seconds kAnswerTime{10};
constexpr const char* kSection = "Monitor";
constexpr const char* kPositionEntry = "PositionFormat";

AngleFormat KeptAngles() {
  CWinApp* app = AfxGetApp();
  const int kept = app == nullptr ? 0 : app->GetProfileInt(kSection, kPositionEntry, 0);
  return kept > 0 && kept < kAngleFormats ? static_cast<AngleFormat>(kept) : AngleFormat::degrees;
}

}  // namespace

LiveScreen::LiveScreen(Session& session, Readings& readings, const Display& display)
    : session_(session),
      readings_(readings),
      menu_(session.Receiver()),
      start_time_(StartTimeOf(session.Receiver())),
      view_(readings) {
  session.GetBoxes().GiveUpKeyboard();
  view_.model = session.Options().model;
  view_.source = session.GetFeed().Description(session.Receiver().GetCurrentBaudrate());
  view_.display = display;
  if (!display.angles) view_.display.angles = KeptAngles();
  view_.geoid = session.Options().geoid;
  readings_.ShowAnswers(false);  // until something is asked
  view_.is_live = session.GetFeed().IsLive();
  SetComplaintHandler([this](const std::string& text) {
    const std::lock_guard lock(notices_mutex_);
    notices_.push_back(text);
  });
  // Traces that go to a file go on.
  silences_trace_ = IsTracing() && isatty(STDERR_FILENO) != 0;
  if (silences_trace_) SetTraceHandler([](const CString&) {});
}

void LiveScreen::Close() {
  SetComplaintHandler({});
  if (std::exchange(silences_trace_, false)) SetTraceHandler({});
  terminal_.Close();
}

void LiveScreen::OnEvent(RunEvent event) {
  if (event == RunEvent::starting && session_.GetFeed().IsLive()) {
    start_.emplace(*this, "starting the receiver", start_time_);
  }
  if (event == RunEvent::started) start_.reset();
  if (event == RunEvent::over) Close();
}

void LiveScreen::AddWaits(std::vector<pollfd>& waits) {
  waits.push_back({has_input_ ? terminal_.Descriptor() : -1, POLLIN, 0});
}

void LiveScreen::Handle(const std::vector<pollfd>& waits, std::size_t first) {
  if ((waits[first].revents & (POLLERR | POLLHUP | POLLNVAL)) != 0) has_input_ = false;
}

LiveScreen::Clock::time_point LiveScreen::NextAt() const {
  const bool news = dirty_ || readings_.Version() != drawn_version_;
  return drawn_at_ + (news ? Clock::duration(kLeastInterval) : Clock::duration(kTick));
}

void LiveScreen::Step() {
  while (const auto key = terminal_.ReadKey()) OnKey(*key);
  TakeNotices();
  if (busy_.empty() && answers_until_ && Clock::now() >= *answers_until_) answers_until_.reset();
  readings_.ShowAnswers(view_.sentences || answers_until_);
  if (terminal_.TakeChange()) drawn_at_ = {};
  if (Clock::now() >= NextAt()) Draw();
}

void LiveScreen::OnKey(int key) {
  drawn_at_ = {};  // at once
  if (key == key::kRedraw) return terminal_.Redraw();
  if (!busy_.empty()) {
    stop_ = stop_ || key == key::kEscape || key == 'q';
    quit_ = quit_ || key == 'q';
    return;
  }
  if (menu_.IsOpen()) {
    if (const auto order = menu_.OnKey(key)) Perform(*order);
    return;
  }
  if (std::exchange(help_, false)) return;
  if (key == 'q') quit_ = true;
  if (key == '?' || key == 'h' || key == key::kHelp) help_ = true;
  if (key == 'c') menu_.Open();
  if (key == 'p') NextAngles();
  if (key == 'r') view_.sentences = !view_.sentences;
  if (key == 's') view_.survey = !view_.survey;
  if (key == 'n' && view_.survey) readings_.survey.Clear();
  if (key == key::kEnter) session_.GetBoxes().GoOn();
}

void LiveScreen::NextAngles() {
  const int next = (static_cast<int>(view_.display.Angles()) + 1) % kAngleFormats;
  view_.display.angles = static_cast<AngleFormat>(next);
  if (CWinApp* app = AfxGetApp()) app->WriteProfileInt(kSection, kPositionEntry, next);
}

void LiveScreen::Perform(const CommandMenu::Order& order) {
  if (session_.Receiver().GetPortHandle() == INVALID_HANDLE_VALUE) {
    return Tell("no port is open: " + order.text + " has not been sent", Style::bad);
  }
  if (const Port* port = session_.GetFeed().GetPort(); port != nullptr && !port->TakesCommands()) {
    return Tell("nothing can be sent to " + port->Name() + ", which is only listened to", Style::bad);
  }
  const bool asks = order.operation->kind == Operation::Kind::asks;
  answers_until_ = Clock::now() + kAnswerTime;
  readings_.ShowAnswers(true);
  session_.PassOn();
  readings_.Log("> " + order.text, Style::label);
  Result result = Result::none;
  {
    const Busy busy(*this, order.text, order.time);
    result = order.action(session_.Receiver());
  }
  if (PacingClock::StoppedAt())
    return Tell("stopped: what was left of " + order.text + " has not been sent", Style::warn);
  if (result == Result::no) return Tell(order.text + " did not work, or was not acknowledged", Style::bad);
  Tell(order.text + (asks ? " was sent; what answers is among the reports" : " was sent"), Style::good);
}

LiveScreen::Busy::Busy(LiveScreen& screen, const std::string& label, long long time)
    : screen_(screen), sequence_(screen.session_.GetInterrupt(), [&screen](long long passed) {
        return screen.OnPassed(passed);
      }) {
  screen.stop_ = false;
  screen.busy_ = label;
  screen.busy_time_ = time;
  screen.busy_passed_ = 0;
  screen.Draw();
}

LiveScreen::Busy::~Busy() {
  if (screen_.answers_until_) screen_.answers_until_ = Clock::now() + kAnswerTime;
  screen_.busy_.clear();
  screen_.dirty_ = true;
}

bool LiveScreen::OnPassed(long long passed) {
  busy_passed_ = passed;
  dirty_ = true;
  session_.PassOn();
  Step();
  return !stop_;
}

void LiveScreen::TakeNotices() {
  std::vector<std::string> notices;
  {
    const std::lock_guard lock(notices_mutex_);
    notices.swap(notices_);
  }
  for (const std::string& notice : notices) {
    readings_.Log(notice, Style::warn);
    Tell(notice, Style::warn);
  }
}

void LiveScreen::Tell(const std::string& text, Style style) {
  view_.status = text;
  view_.status_style = style;
  status_until_ = Clock::now() + kStatusTime;
  dirty_ = true;
}

void LiveScreen::OnBytes(std::string_view bytes) {
  if (!answers_until_) return;
  answers_.Feed(bytes, [this](std::string_view text) {
    if (IsParameterLine(text))
      readings_.Log("answer: " + std::string(text.substr(0, text.size() - 2)), Style::normal);
  });
}

void LiveScreen::Draw() {
  if (status_until_ && Clock::now() >= *status_until_) {
    status_until_.reset();
    view_.status.clear();
  }
  view_.counters = TallyOf(session_.Engine());
  if (corrections_) view_.corrections = corrections_();
  Canvas canvas = terminal_.MakeCanvas();
  View view = view_;
  if (!busy_.empty()) {
    const double part =
        busy_time_ > 0 ? static_cast<double>(busy_passed_) / static_cast<double>(busy_time_) : 0.0;
    view.status = Progress::Render(busy_, part, canvas.Columns() - 14) + "  Esc stops";
    view.status_style = Style::warn;
  }
  DrawDashboard(canvas, view);
  if (menu_.IsOpen()) menu_.Draw(canvas);
  if (help_) DrawHelp(canvas);
  terminal_.Show(canvas);
  drawn_at_ = Clock::now();
  drawn_version_ = readings_.Version();
  dirty_ = false;
}

}  // namespace host
