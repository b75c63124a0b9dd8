#include "gpsengine/face/exchange.h"

#include <chrono>

#include "gpsengine/face/error.h"
#include "gpsengine/platform/clock.h"

namespace gps {

namespace {

// So long a silence ends an answer of several reports.
constexpr double kPause = 0.3;

DWORD Milliseconds(double seconds) {
  return static_cast<DWORD>(seconds * 1000.0);
}

std::string Lines(int count) {
  return std::to_string(count) + (count == 1 ? " line" : " lines");
}

}  // namespace

void Exchange::Begin() {
  const Monitor::Lock lock = monitor_.Enter();
  answers_ = AnswerReader();
  asked_ = reports_ = 0;
}

void Exchange::OnWritten(std::string_view line) {
  const Monitor::Lock lock = monitor_.Enter();
  asked_ += AnswerReader::IsDueTo(line) ? 1 : 0;
}

void Exchange::OnRead(std::string_view bytes) {
  const Monitor::Lock lock = monitor_.Enter();
  answers_.Feed(bytes);
  monitor_.Announce();
  finder_.Feed(bytes, [this](std::string_view text) {
    if (receiver_ == nullptr || !IsParameterLine(text)) return;
    CString line(text.data(), static_cast<int>(text.size() - 2));  // less its end
    receiver_->Parse(line);
  });
}

void Exchange::OnReport() {
  const Monitor::Lock lock = monitor_.Enter();
  ++reports_;
  monitor_.Announce();
}

void Exchange::End() {
  const Monitor::Lock lock = monitor_.Enter();
  receiver_ = nullptr;
  monitor_.Announce();
}

void Exchange::Await(const Operation& operation, const std::string& model, const std::stop_token& stop) {
  Monitor::Lock lock = monitor_.Enter();
  if (operation.kind == Operation::Kind::asks) {
    AwaitReports(lock, operation.name, model, stop);
  } else {
    AwaitWords(lock, operation.name, model, stop);
  }
}

// By the clock of this thread, as all that blocks on it.
template <class Ready>
bool Exchange::Wait(Monitor::Lock& lock, const std::stop_token& stop, double seconds, Ready ready) {
  return CurrentClock().Wait(WaitKind::line, Milliseconds(seconds), [&](DWORD ms) {
    return monitor_.Wait(lock, stop, std::chrono::milliseconds(ms),
                         [&] { return ready() || receiver_ == nullptr; });
  });
}

void Exchange::AwaitReports(Monitor::Lock& lock, const std::string& name, const std::string& model,
                            const std::stop_token& stop) {
  Clock& clock = CurrentClock();
  const auto end = clock.Milliseconds() + Milliseconds(AnswerReader::kForReports);
  int seen = 0;
  while (clock.Milliseconds() < end &&
         Wait(lock, stop, seen == 0 ? AnswerReader::kForReports : kPause, [&] { return reports_ > seen; }) &&
         receiver_ != nullptr)
    seen = reports_;
  if (seen > 0 || receiver_ == nullptr || stop.stop_requested()) return;
  throw Error(ErrorCode::refused,
              "no report answered " + name + ": is it the model " + model + ", and its baud rate right?");
}

void Exchange::AwaitWords(Monitor::Lock& lock, const std::string& name, const std::string& model,
                          const std::stop_token& stop) {
  const auto said = [&] { return answers_.Taken() + answers_.Refused(); };
  Wait(lock, stop, AnswerReader::kForWord, [&] { return said() >= asked_; });
  if (receiver_ == nullptr || stop.stop_requested()) return;
  if (answers_.Refused() > 0) {
    throw Error(ErrorCode::refused, name + ": the receiver took " + Lines(answers_.Taken()) +
                                        " and refused " + std::to_string(answers_.Refused()) +
                                        ", the last one with " + answers_.Refusal());
  }
  if (said() >= asked_) return;
  throw Error(ErrorCode::refused, name + ": the receiver answered " + std::to_string(said()) + " of " +
                                      Lines(asked_) + ": is it the model " + model +
                                      ", and its baud rate right?");
}

}  // namespace gps
