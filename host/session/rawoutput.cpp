#include "host/session/rawoutput.h"

#include "gpsengine/face/models.h"
#include "gpsengine/face/rawoutput.h"
#include "gpsengine/face/rehearse.h"
#include "gpsengine/platform/clock.h"
#include "host/run/face.h"
#include "host/run/failure.h"

namespace host {

namespace {

// Milliseconds that a receiver is listened to for its sentences, beside what the commands take, and that it
// gets for each command.
constexpr DWORD kListen = 700, kCommand = 200;

/// Steps after the first `from` of them.
std::string StepsFrom(const Transcript& transcript, std::size_t from) {
  std::string text;
  for (std::size_t i = from; i < transcript.steps.size(); ++i)
    text += "  " + CRehearsal::Describe(transcript.steps[i]) + '\n';
  return text;
}

}  // namespace

RawOutput::RawOutput(CGPSReceiver& receiver, double interval) : receiver_(receiver), interval_(interval) {
  if (!receiver.HasRawData()) {
    throw Failure(ExitCode::usage, "the model " + receiver.GetName().ToUtf8() + " has no raw data to log");
  }
  if (interval > 0.0) CheckRawInterval(receiver, OutputIntervalFor(receiver, interval));
  if (IsHiddenBySentences(receiver)) {
    hiding_ = {{GPS_STRING_GSA, "GSA", false}, {GPS_STRING_GSV, "GSV", false}};
  }
}

void RawOutput::OnEvent(RunEvent event) {
  if (event == RunEvent::starting) receiver_.MonitorNmea(true);
  if (event == RunEvent::over) PutBack();
}

void RawOutput::Start() {
  const double interval = interval_ > 0.0 ? OutputIntervalFor(receiver_, interval_) : 0.0;
  if (!StartRawData(receiver_, interval)) {
    CString every;
    if (interval > 0.0) every.Format(" every %g s", interval);
    throw Failure(ExitCode::refused,
                  "the receiver did not take the command to send raw data" + every.ToUtf8());
  }
  if (!hiding_.empty()) Silence();
}

/// What the receiver sends is seen for a second before that: no more than that is switched on again.
void RawOutput::Silence() {
  Sleep(kListen);
  NoteSentences();
  silenced_ = true;
  for (const Hiding& sentence : hiding_) {
    receiver_.Send(SentenceSwitch(sentence.name, false));
    Sleep(kCommand);
  }
  NoteSentences();
}

// What was under way when the sentences were switched off still comes, and would hide the reports until the
// receiver's next start.
void RawOutput::Step() {
  if (silenced_) receiver_.ForgetSatelliteSentences();
}

void RawOutput::NoteSentences() {
  for (Hiding& sentence : hiding_)
    sentence.has_come = sentence.has_come || receiver_.HaveGotNmea(sentence.type);
}

void RawOutput::PutBack() {
  receiver_.MonitorNmea(false);
  if (!silenced_) return;
  silenced_ = false;
  for (const Hiding& sentence : hiding_) {
    if (!sentence.has_come) continue;
    receiver_.Send(SentenceSwitch(sentence.name, true));
    Sleep(kCommand);
  }
}

std::string RawOutput::Explain(const std::string& model, double interval) {
  std::size_t begun = 0;
  const auto rehearse = [&](bool ends) {
    return Rehearse(model, [&](CGPSReceiver& receiver) {
      RawOutput output(receiver, interval);
      output.Start();
      for (Hiding& sentence : output.hiding_) sentence.has_come = ends;
      output.PutBack();
      if (ends) receiver.Suspend();
      return Result::yes;
    });
  };
  const Transcript start = rehearse(false), whole = rehearse(true);
  begun = start.steps.size();
  std::string text = "at the start:\n" + StepsFrom(start, 0);
  text += "at the end:\n" + StepsFrom(whole, begun);
  if (IsHiddenBySentences(FindModel(model)))
    text += "GSA and GSV are switched on again as far as they had come before that.\n";
  return text;
}

}  // namespace host
