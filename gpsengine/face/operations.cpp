#include "gpsengine/face/operations.h"

#include <algorithm>
#include <iterator>
#include <sstream>
#include <string_view>
#include <type_traits>
#include <utility>

#include "gpsengine/face/argumentreader.h"
#include "gpsengine/face/rawoutput.h"
#include "gpsengine/face/report.h"

namespace gps {

namespace {

// The longest line that a port takes, with the line end that is written after it.
constexpr std::size_t kLongestText = 198;

/// An action with the result of what it calls, if that has one.
template <class Call>
Action ActionOf(Call call) {
  return [call](CGPSReceiver& receiver) {
    if constexpr (std::is_void_v<std::invoke_result_t<Call, CGPSReceiver&>>) {
      call(receiver);
      return Result::none;
    } else {
      return call(receiver) ? Result::yes : Result::no;
    }
  };
}

template <auto method>
Action Call(ArgumentReader&) {
  return ActionOf([](CGPSReceiver& receiver) { return (receiver.*method)(); });
}

/// A call with the one value that `read` reads.
template <auto call, auto read>
Action CallWith(ArgumentReader& words) {
  return ActionOf([value = std::invoke(read, words)](CGPSReceiver& receiver) {
    return std::invoke(call, receiver, value);
  });
}

double Megahertz(ArgumentReader& words) {
  return words.Number("MHz");
}

double Seconds(ArgumentReader& words) {
  return words.Number("seconds");
}

Action SetElevationMask(ArgumentReader& words) {
  const int degrees = words.Whole("degrees");
  if (degrees < 0 || degrees > 90) Refuse(std::to_string(degrees), "an elevation from 0 to 90 degrees");
  return ActionOf([degrees](CGPSReceiver& receiver) { receiver.SetSatElevMask(degrees); });
}

// The band of the beacons, in kHz, and the bit rates that they send at.
constexpr double kFirstBeacon = 283.5, kLastBeacon = 325.0;
constexpr double kBeaconBitRates[] = {25, 50, 100, 200};

Action SetBeacon(ArgumentReader& words) {
  if (words.Takes("auto"))
    return ActionOf([](CGPSReceiver& receiver) { receiver.SetBeacon(BEACON_MODE_AUTO, "", ""); });
  const CString frequency =
      words.Digits("\"auto\", nor a beacon's frequency from 283.5 to 325 kHz",
                   [](double khz) { return khz >= kFirstBeacon && khz <= kLastBeacon; });
  CString bit_rate;
  if (!words.AtEnd()) {
    bit_rate = words.Digits("a beacon's bit rate: 25, 50, 100 or 200", [](double rate) {
      return std::ranges::find(kBeaconBitRates, rate) != std::end(kBeaconBitRates);
    });
  }
  return ActionOf(
      [=](CGPSReceiver& receiver) { receiver.SetBeacon(BEACON_MODE_MANUAL, frequency, bit_rate); });
}

Action SetDgps(ArgumentReader& words) {
  const std::string& source = words.Word("the source");
  for (int mode = DGPS_MODE_NONE; mode <= DGPS_MODE_OMNISTAR; ++mode) {
    if (source != NameOf(static_cast<DgpsMode>(mode))) continue;
    return ActionOf([mode](CGPSReceiver& receiver) { receiver.SetDgpsMode(static_cast<DgpsMode>(mode)); });
  }
  Refuse(source, "none, beacon, lband, waas, cdgps or omnistar");
}

Action SetLband(ArgumentReader& words) {
  const double frequency = Megahertz(words);
  const int bit_rate = words.Whole("bits a second");
  return ActionOf([=](CGPSReceiver& receiver) { receiver.SetLbandFrequency(frequency, bit_rate); });
}

void CheckInterval(CGPSReceiver& receiver, const Arguments& arguments) {
  ArgumentReader words(arguments);
  CheckRawInterval(receiver, Seconds(words));
}

constexpr auto kReset = CallWith<&CGPSReceiver::ResetAll, &ArgumentReader::Wait>;

Action Send(ArgumentReader& words) {
  const std::string& word = words.Word("the text");
  const CString text = CString::FromUtf8(word);
  std::string bytes;
  const auto is_control = [](char c) { return static_cast<unsigned char>(c) < ' ' || c == 0x7F; };
  if (!text.ToBytes(bytes) || std::any_of(bytes.begin(), bytes.end(), is_control)) {
    throw Error(ErrorCode::usage, "the text has characters that a line to a receiver cannot hold");
  }
  if (bytes.size() > kLongestText) {
    throw Error(ErrorCode::usage, "the text is longer than " + std::to_string(kLongestText) + " characters");
  }
  return ActionOf([text](CGPSReceiver& receiver) { receiver.Send(text); });
}

#define OPENED_BY(answer) #answer, [](CGPSReceiver & receiver) -> bool { return receiver.answer(); }
#define ALWAYS_OPEN nullptr, nullptr

using enum Operation::Kind;

constexpr Operation kOperations[] = {
    {"start", "", "what the start of a run writes", starts, ALWAYS_OPEN, Call<&CGPSReceiver::Initialize>, ""},
    {"default-nmea", "", "the full set of NMEA sentences", sets, OPENED_BY(ImplementsSetNmea),
     Call<&CGPSReceiver::SetDefaultNMEA>, ""},
    {"gga-only", "", "positions alone", sets, OPENED_BY(ImplementsSetNmea),
     Call<&CGPSReceiver::SetGgaOnlyNMEA>, ""},
    {"query-nmea", "", "which sentences are on", asks, OPENED_BY(ImplementsQueryNmea),
     Call<&CGPSReceiver::QueryNmeaActive>, ""},
    {"query-settings", "", "the receiver's settings", asks, OPENED_BY(ImplementsQueryGpsSettings),
     Call<&CGPSReceiver::QueryGpsSettings>, ""},
    {"set-elevation-mask", "DEGREES", "the least elevation of a satellite", sets,
     OPENED_BY(ImplementsSetElevMask), SetElevationMask, "10"},
    {"query-elevation-mask", "", "that elevation", asks, OPENED_BY(ImplementsSetElevMask),
     Call<&CGPSReceiver::QuerySatElevMask>, ""},
    {"set-beacon", "auto | KHZ [BITRATE]", "the beacon to listen to", sets, OPENED_BY(ImplementsBeacon),
     SetBeacon, "auto|304.5 200"},
    {"query-beacon", "", "the beacon and its signal", asks, OPENED_BY(ImplementsBeacon),
     Call<&CGPSReceiver::QueryBeacon>, ""},
    {"set-dgps", "none|beacon|lband|waas|cdgps|omnistar", "the source of differential corrections", sets,
     OPENED_BY(HasDGPSSupport), SetDgps, "none|beacon|lband|waas|cdgps|omnistar"},
    {"query-dgps", "", "that source", asks, OPENED_BY(HasDGPSSupport), Call<&CGPSReceiver::QueryDgpsMode>,
     ""},
    {"query-omnistar", "", "the Omnistar subscription", asks, OPENED_BY(HasDGPSSupport),
     Call<&CGPSReceiver::QueryOmniStar>, ""},
    {"query-waas", "", "the WAAS reception", asks, OPENED_BY(HasDGPSSupport), Call<&CGPSReceiver::QueryWAAS>,
     ""},
    {"query-lband-satellites", "", "the L-band satellites", asks, OPENED_BY(HasDGPSSupport),
     Call<&CGPSReceiver::QueryLbandSatellites>, ""},
    {"set-lband", "MHZ BITRATE", "the L-band satellite to listen to, 0 for the receiver's choice", sets,
     OPENED_BY(HasDGPSSupport), SetLband, "0 1200|1557.845 1200"},
    {"set-cdgps-frequency", "MHZ", "the CDGPS satellite to listen to", sets, OPENED_BY(HasDGPSSupport),
     CallWith<&CGPSReceiver::ChangeCDGPS_Freq, Megahertz>, "1547"},
    {"dgps-status", "on|off", "messages on the state of the corrections", sets, OPENED_BY(HasDGPSSupport),
     CallWith<&CGPSReceiver::DgpsStatusMsg, &ArgumentReader::OnOff>, "on|off"},
    {"send-correction", "", "the datum of the corrections", sets, OPENED_BY(HasDGPSSupport),
     Call<&CGPSReceiver::SendCorrection>, ""},
    {"post-processing", "on|off", "raw measurements and ephemerides, until the end of the run", sets,
     OPENED_BY(HasRawData), CallWith<&CGPSReceiver::EnablePostProcessing, &ArgumentReader::OnOff>, "on|off"},
    {"raw-interval", "SECONDS", "the interval of raw measurements", sets, OPENED_BY(HasRawData),
     CallWith<SetRawInterval, Seconds>, "1|0.2|5", CheckInterval},
    {"reset", "[--wait]", "a known configuration; --wait: and see that it acknowledges", sets,
     OPENED_BY(ImplementsResetAll), kReset, "|--wait"},
    {"send", "TEXT", "a line of your own", sets, ALWAYS_OPEN, Send, nullptr},
    {"keep-alive", "", "what a silent line is sent", sets, ALWAYS_OPEN, Call<&CGPSReceiver::KeepAlive>, ""},
    {"suspend", "", "what the end of a run writes", ends, ALWAYS_OPEN, Call<&CGPSReceiver::Suspend>, ""},
};

#undef OPENED_BY
#undef ALWAYS_OPEN

}  // namespace

Arguments ArgumentsOf(const std::vector<std::string>& words) {
  Arguments arguments;
  for (const std::string& word : words) {
    if (word == "--wait") {
      arguments.wait = true;
    } else {
      arguments.words.push_back(word);
    }
  }
  return arguments;
}

Arguments ReadArguments(const std::string& text) {
  std::istringstream stream(text);
  std::vector<std::string> words;
  for (std::string word; stream >> word;) words.push_back(word);
  return ArgumentsOf(words);
}

std::vector<Arguments> ExamplesOf(const Operation& operation) {
  std::vector<Arguments> examples;
  if (operation.examples == nullptr) return examples;
  for (std::string_view left = operation.examples;;) {
    const auto end = std::min(left.find('|'), left.size());
    examples.push_back(ReadArguments(std::string(left.substr(0, end))));
    if (end == left.size()) return examples;
    left.remove_prefix(end + 1);
  }
}

std::span<const Operation> Operations() {
  return kOperations;
}

const Operation& FindOperation(const std::string& name) {
  const auto operations = Operations();
  const auto found = std::find_if(operations.begin(), operations.end(),
                                  [&](const Operation& operation) { return operation.name == name; });
  if (found != operations.end()) return *found;
  std::vector<std::string> names;
  for (const auto& operation : operations) names.push_back(operation.name);
  throw NoSuch("operation", name, names);
}

bool IsOffered(const Operation& operation, CGPSReceiver& receiver) {
  return operation.is_open == nullptr || operation.is_open(receiver);
}

bool TakeWait(const Operation& operation, Arguments& arguments) {
  return operation.prepare != kReset && std::exchange(arguments.wait, false);
}

Action Prepare(const Operation& operation, const Arguments& arguments) {
  if (arguments.wait && operation.prepare != kReset)
    throw Error(ErrorCode::usage, "--wait belongs to the operation reset");
  ArgumentReader words(arguments);
  const Action action = operation.prepare(words);
  words.End();
  return action;
}

Action Prepare(const Operation& operation, const Arguments& arguments, CGPSReceiver& receiver) {
  Action action = Prepare(operation, arguments);
  if (operation.check != nullptr) operation.check(receiver, arguments);
  return action;
}

void CheckResult(const Operation& operation, const Arguments& arguments, Result result) {
  if (result != Result::no) return;
  throw Error(ErrorCode::refused,
              operation.name + std::string(arguments.wait
                                               ? " was not acknowledged in time"
                                               : " did not work: the receiver's port did not take it, or the "
                                                 "model does not take these arguments"));
}

std::string CallText(const Operation& operation, const Arguments& arguments) {
  std::string text = operation.name;
  for (const auto& word : arguments.words) text += ' ' + word;
  return arguments.wait ? text + " --wait" : text;
}

}  // namespace gps
