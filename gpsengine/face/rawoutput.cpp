#include "gpsengine/face/rawoutput.h"

#include <cmath>

#include "gpsengine/drivers/gsr2650lb.h"
#include "gpsengine/drivers/sokkiaaxis3.h"
#include "gpsengine/face/error.h"
#include "gpsengine/face/models.h"
#include "gpsengine/face/words.h"

namespace gps {

namespace {

// The longest interval that a whole number of seconds is taken for.
constexpr double kLongest = 86'400.0;

/// Intervals in seconds that a language has.
struct Intervals {
  const char* text;
  bool (*has)(double seconds);
  /// What the library takes for one of them.
  double (*value)(double seconds);
};

double AsItIs(double seconds) {
  return seconds;
}

// Receivers of the $J language are given a rate: 5 is 5 a second, any other number 1 a second.
constexpr Intervals kRates = {"0.2 or 1", [](double seconds) { return seconds == 0.2 || seconds == 1.0; },
                              [](double seconds) { return seconds == 0.2 ? 5.0 : 1.0; }};
constexpr Intervals kWhole = {
    "whole numbers from 1 to 86400",
    [](double seconds) { return seconds >= 1.0 && seconds <= kLongest && seconds == std::floor(seconds); },
    AsItIs};
constexpr Intervals kAny = {"numbers from 0.25 to 86400",
                            [](double seconds) { return seconds >= 0.25 && seconds <= kLongest; }, AsItIs};

const Intervals& IntervalsOf(CGPSReceiver& receiver) {
  if (dynamic_cast<CSokkiaAxis3*>(&receiver) != nullptr) return kRates;
  return dynamic_cast<Cgsr2650lb*>(&receiver) != nullptr ? kWhole : kAny;
}

}  // namespace

void CheckRawInterval(CGPSReceiver& receiver, double seconds) {
  const Intervals& intervals = IntervalsOf(receiver);
  if (intervals.has(seconds)) return;
  throw Error(ErrorCode::usage,
              "the model " + receiver.GetName().ToUtf8() +
                  Print(" does not send raw data every %g s; its intervals in seconds are ", seconds) +
                  intervals.text);
}

bool SetRawInterval(CGPSReceiver& receiver, double seconds) {
  const Intervals& intervals = IntervalsOf(receiver);
  return intervals.has(seconds) && receiver.SetRawDataOutputInterval(intervals.value(seconds));
}

// The interval of the $J language is the command that switches the output on.
bool StartRawData(CGPSReceiver& receiver, double seconds) {
  if (seconds > 0.0 && &IntervalsOf(receiver) == &kRates) return SetRawInterval(receiver, seconds);
  return receiver.EnablePostProcessing(true) && (seconds <= 0.0 || SetRawInterval(receiver, seconds));
}

double OutputIntervalFor(CGPSReceiver& receiver, double seconds) {
  // Intervals are tenths of a second: what is less is how numbers are written.
  constexpr double kExact = 1e-6;
  const Intervals& intervals = IntervalsOf(receiver);
  for (const double candidate : {seconds, 1.0, 0.2}) {
    if (intervals.has(candidate) && std::fabs(std::remainder(seconds, candidate)) < kExact) return candidate;
  }
  return seconds;
}

bool IsHiddenBySentences(CGPSReceiver& receiver) {
  return receiver.HasRawData() && &IntervalsOf(receiver) == &kAny;
}

CString SentenceSwitch(const char* sentence, bool on) {
  CString command;
  command.Format("$PASHS,NME,%s,A,%s", sentence, on ? "ON" : "OFF");
  return command;
}

std::string WhyNoRawData(const std::string& model) {
  CGPSReceiver& receiver = FindModel(model);
  if (&IntervalsOf(receiver) != &kAny) {
    return "the model " + model +
           " sends measurements in blocks once \"post-processing on\" asks for them, and no good one came";
  }
  const std::string beside = "beside GSA and GSV sentences raw data are passed over";
  if (receiver.HasRawData()) return beside + ": the operation gga-only ends them";
  return "the model has no raw data that could be logged; with others, " + beside;
}

}  // namespace gps
