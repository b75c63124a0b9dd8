#include "host/commands/operations.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <iterator>
#include <optional>
#include <string_view>

#include "host/commands/rawdata.h"
#include "host/records/reports.h"
#include "host/run/failure.h"
#include "host/run/nearest.h"

namespace host {

namespace {

// The longest line that a port takes, with the line end that is written behind it.
constexpr std::size_t kLongestText = 198;

[[noreturn]] void Refuse(const std::string& word, const std::string& wanted) {
  throw Failure(ExitCode::usage, "\"" + word + "\" is not " + wanted);
}

template <class T>
std::optional<T> ReadNumber(const std::string& word) {
  T value{};
  const auto end = word.data() + word.size();
  const auto read = std::from_chars(word.data(), end, value);
  return read.ec == std::errc() && read.ptr == end ? std::optional(value) : std::nullopt;
}

/// Reads an operation's arguments one by one. A word that is none of what is asked for ends the command.
class Words {
 public:
  explicit Words(const Arguments& arguments) : words_(arguments.words) {}
  bool AtEnd() const { return next_ == words_.size(); }
  const std::string& Word(const char* what) {
    if (AtEnd()) throw Failure(ExitCode::usage, std::string("an argument is missing: ") + what);
    return words_[next_++];
  }
  int Whole(const char* what) {
    const std::string& word = Word(what);
    if (const auto value = ReadNumber<int>(word)) return *value;
    Refuse(word, std::string("a whole number of ") + what);
  }
  double Number(const char* what) {
    const std::string& word = Word(what);
    if (const auto value = ReadNumber<double>(word); value && std::isfinite(*value)) return *value;
    Refuse(word, std::string("a number of ") + what);
  }
  bool OnOff() {
    const std::string& word = Word("on or off");
    if (word != "on" && word != "off") Refuse(word, "on or off");
    return word == "on";
  }
  /// A number that fits, in the digits in which it is given.
  CString Digits(const char* what, bool (*fits)(double)) {
    const std::string& word = Word(what);
    const auto value = ReadNumber<double>(word);
    if (!value || word.find_first_not_of("0123456789.") != std::string::npos || !fits(*value))
      Refuse(word, what);
    return word.c_str();
  }
  void End() const {
    if (!AtEnd()) throw Failure(ExitCode::usage, "\"" + words_[next_] + "\" is one argument too many");
  }

 private:
  const std::vector<std::string>& words_;
  std::size_t next_ = 0;
};

template <void (CGPSReceiver::*method)()>
Action Call(const Arguments& arguments) {
  Words(arguments).End();
  return [](CGPSReceiver& receiver) {
    (receiver.*method)();
    return Result::none;
  };
}

Result ResultOf(bool worked) {
  return worked ? Result::yes : Result::no;
}

Action SetElevationMask(const Arguments& arguments) {
  Words words(arguments);
  const int degrees = words.Whole("degrees");
  words.End();
  if (degrees < 0 || degrees > 90) Refuse(arguments.words[0], "an elevation from 0 to 90 degrees");
  return [degrees](CGPSReceiver& receiver) {
    receiver.SetSatElevMask(degrees);
    return Result::none;
  };
}

// The band of the beacons, in kHz, and the bit rates that they send at.
constexpr double kFirstBeacon = 283.5, kLastBeacon = 325.0;
constexpr double kBeaconBitRates[] = {25, 50, 100, 200};

Action SetBeacon(const Arguments& arguments) {
  Words words(arguments);
  const bool automatic = !arguments.words.empty() && arguments.words[0] == "auto";
  if (automatic) words.Word("auto");
  const CString frequency =
      automatic ? CString()
                : words.Digits("\"auto\", nor a beacon's frequency from 283.5 to 325 kHz",
                               [](double khz) { return khz >= kFirstBeacon && khz <= kLastBeacon; });
  const CString bit_rate = automatic || words.AtEnd()
                               ? CString()
                               : words.Digits("a beacon's bit rate: 25, 50, 100 or 200", [](double rate) {
                                   return std::find(std::begin(kBeaconBitRates), std::end(kBeaconBitRates),
                                                    rate) != std::end(kBeaconBitRates);
                                 });
  words.End();
  return [=](CGPSReceiver& receiver) {
    receiver.SetBeacon(automatic ? BEACON_MODE_AUTO : BEACON_MODE_MANUAL, frequency, bit_rate);
    return Result::none;
  };
}

Action SetDgps(const Arguments& arguments) {
  Words words(arguments);
  const std::string& source = words.Word("the source");
  words.End();
  for (int mode = DGPS_MODE_NONE; mode <= DGPS_MODE_OMNISTAR; ++mode) {
    if (source != NameOf(static_cast<DgpsMode>(mode))) continue;
    return [mode](CGPSReceiver& receiver) {
      receiver.SetDgpsMode(static_cast<DgpsMode>(mode));
      return Result::none;
    };
  }
  Refuse(source, "none, beacon, lband, waas, cdgps or omnistar");
}

Action SetLband(const Arguments& arguments) {
  Words words(arguments);
  const double frequency = words.Number("MHz");
  const int bit_rate = words.Whole("bits a second");
  words.End();
  return [=](CGPSReceiver& receiver) {
    receiver.SetLbandFrequency(frequency, bit_rate);
    return Result::none;
  };
}

Action SetCdgpsFrequency(const Arguments& arguments) {
  Words words(arguments);
  const double frequency = words.Number("MHz");
  words.End();
  return [frequency](CGPSReceiver& receiver) {
    receiver.ChangeCDGPS_Freq(frequency);
    return Result::none;
  };
}

Action DgpsStatus(const Arguments& arguments) {
  Words words(arguments);
  const bool on = words.OnOff();
  words.End();
  return [on](CGPSReceiver& receiver) {
    receiver.DgpsStatusMsg(on);
    return Result::none;
  };
}

Action PostProcessing(const Arguments& arguments) {
  Words words(arguments);
  const bool on = words.OnOff();
  words.End();
  return [on](CGPSReceiver& receiver) { return ResultOf(receiver.EnablePostProcessing(on)); };
}

Action RawInterval(const Arguments& arguments) {
  Words words(arguments);
  const double seconds = words.Number("seconds");
  words.End();
  return [seconds](CGPSReceiver& receiver) { return ResultOf(SetRawInterval(receiver, seconds)); };
}

Action Reset(const Arguments& arguments) {
  Words(arguments).End();
  return [wait = arguments.wait](CGPSReceiver& receiver) { return ResultOf(receiver.ResetAll(wait)); };
}

Action Send(const Arguments& arguments) {
  Words words(arguments);
  const std::string& word = words.Word("the text");
  words.End();
  const CString text = CString::FromUtf8(word);
  std::string bytes;
  const auto is_control = [](char c) { return static_cast<unsigned char>(c) < ' ' || c == 0x7F; };
  if (!text.ToBytes(bytes) || std::any_of(bytes.begin(), bytes.end(), is_control)) {
    throw Failure(ExitCode::usage, "the text has characters that a line to a receiver cannot hold");
  }
  if (bytes.size() > kLongestText) {
    throw Failure(ExitCode::usage, "the text is longer than " + std::to_string(kLongestText) + " characters");
  }
  return [text](CGPSReceiver& receiver) {
    receiver.Send(text);
    return Result::none;
  };
}

Action Start(const Arguments& arguments) {
  Words(arguments).End();
  return [](CGPSReceiver& receiver) { return ResultOf(receiver.Initialize()); };
}

#define OPENED_BY(answer) #answer, [](CGPSReceiver & receiver) -> bool { return receiver.answer(); }
#define ALWAYS_OPEN nullptr, nullptr

std::vector<Operation> MakeOperations() {
  using enum Operation::Kind;
  const std::vector<Arguments> plain = {{}};
  const std::vector<Arguments> on_off = {{{"on"}}, {{"off"}}};
  return {
      {"start", "", "what the start of a run writes", starts, ALWAYS_OPEN, Start, plain},
      {"default-nmea", "", "the full set of NMEA sentences", sets, OPENED_BY(ImplementsSetNmea),
       Call<&CGPSReceiver::SetDefaultNMEA>, plain},
      {"gga-only", "", "positions alone", sets, OPENED_BY(ImplementsSetNmea),
       Call<&CGPSReceiver::SetGgaOnlyNMEA>, plain},
      {"query-nmea", "", "which sentences are on", asks, OPENED_BY(ImplementsQueryNmea),
       Call<&CGPSReceiver::QueryNmeaActive>, plain},
      {"query-settings", "", "the receiver's settings", asks, OPENED_BY(ImplementsQueryGpsSettings),
       Call<&CGPSReceiver::QueryGpsSettings>, plain},
      {"set-elevation-mask",
       "DEGREES",
       "the least elevation of a satellite",
       sets,
       OPENED_BY(ImplementsSetElevMask),
       SetElevationMask,
       {{{"10"}}}},
      {"query-elevation-mask", "", "that elevation", asks, OPENED_BY(ImplementsSetElevMask),
       Call<&CGPSReceiver::QuerySatElevMask>, plain},
      {"set-beacon",
       "auto | KHZ [BITRATE]",
       "the beacon to listen to",
       sets,
       OPENED_BY(ImplementsBeacon),
       SetBeacon,
       {{{"auto"}}, {{"304.5", "200"}}}},
      {"query-beacon", "", "the beacon and its signal", asks, OPENED_BY(ImplementsBeacon),
       Call<&CGPSReceiver::QueryBeacon>, plain},
      {"set-dgps",
       "none|beacon|lband|waas|cdgps|omnistar",
       "the source of differential corrections",
       sets,
       OPENED_BY(HasDGPSSupport),
       SetDgps,
       {{{"none"}}, {{"beacon"}}, {{"lband"}}, {{"waas"}}, {{"cdgps"}}, {{"omnistar"}}}},
      {"query-dgps", "", "that source", asks, OPENED_BY(HasDGPSSupport), Call<&CGPSReceiver::QueryDgpsMode>,
       plain},
      {"query-omnistar", "", "the Omnistar subscription", asks, OPENED_BY(HasDGPSSupport),
       Call<&CGPSReceiver::QueryOmniStar>, plain},
      {"query-waas", "", "the WAAS reception", asks, OPENED_BY(HasDGPSSupport),
       Call<&CGPSReceiver::QueryWAAS>, plain},
      {"query-lband-satellites", "", "the L-band satellites", asks, OPENED_BY(HasDGPSSupport),
       Call<&CGPSReceiver::QueryLbandSatellites>, plain},
      {"set-lband",
       "MHZ BITRATE",
       "the L-band satellite to listen to, 0 for the receiver's choice",
       sets,
       OPENED_BY(HasDGPSSupport),
       SetLband,
       {{{"0", "1200"}}, {{"1557.845", "1200"}}}},
      {"set-cdgps-frequency",
       "MHZ",
       "the CDGPS satellite to listen to",
       sets,
       OPENED_BY(HasDGPSSupport),
       SetCdgpsFrequency,
       {{{"1547"}}}},
      {"dgps-status", "on|off", "messages on the state of the corrections", sets, OPENED_BY(HasDGPSSupport),
       DgpsStatus, on_off},
      {"send-correction", "", "the datum of the corrections", sets, OPENED_BY(HasDGPSSupport),
       Call<&CGPSReceiver::SendCorrection>, plain},
      {"post-processing", "on|off", "raw measurements and ephemerides, until the end of the run", sets,
       OPENED_BY(HasRawData), PostProcessing, on_off},
      {"raw-interval",
       "SECONDS",
       "the interval of raw measurements",
       sets,
       OPENED_BY(HasRawData),
       RawInterval,
       {{{"1"}}, {{"0.2"}}, {{"5"}}},
       [](CGPSReceiver& receiver, const Arguments& arguments) {
         CheckRawInterval(receiver, Words(arguments).Number("seconds"));
       }},
      {"reset",
       "[--wait]",
       "a known configuration; --wait: and see that it acknowledges",
       sets,
       OPENED_BY(ImplementsResetAll),
       Reset,
       {{{}, false}, {{}, true}}},
      {"send", "TEXT", "a line of your own", sets, ALWAYS_OPEN, Send, {}},
      {"keep-alive", "", "what a silent line is sent", sets, ALWAYS_OPEN, Call<&CGPSReceiver::KeepAlive>,
       plain},
      {"suspend", "", "what the end of a run writes", ends, ALWAYS_OPEN, Call<&CGPSReceiver::Suspend>, plain},
  };
}

#undef OPENED_BY
#undef ALWAYS_OPEN

}  // namespace

std::span<const Operation> Operations() {
  static const std::vector<Operation> operations = MakeOperations();
  return operations;
}

const Operation& FindOperation(const std::string& name) {
  const auto operations = Operations();
  const auto found = std::find_if(operations.begin(), operations.end(),
                                  [&](const Operation& operation) { return operation.name == name; });
  if (found != operations.end()) return *found;
  std::vector<std::string> names;
  std::string list;
  for (const auto& operation : operations) {
    names.push_back(operation.name);
    list += (list.empty() ? "" : ", ") + names.back();
  }
  throw Failure(ExitCode::usage, "no operation is called \"" + name + '"' + DidYouMean(name, names) +
                                     "; the operations are " + list);
}

bool IsOffered(const Operation& operation, CGPSReceiver& receiver) {
  return operation.is_open == nullptr || operation.is_open(receiver);
}

Action Prepare(const Operation& operation, const Arguments& arguments) {
  if (arguments.wait && operation.prepare != Reset)
    throw Failure(ExitCode::usage, "--wait belongs to the operation reset");
  return operation.prepare(arguments);
}

Action Prepare(const Operation& operation, const Arguments& arguments, CGPSReceiver& receiver) {
  Action action = Prepare(operation, arguments);
  if (operation.check != nullptr) operation.check(receiver, arguments);
  return action;
}

std::string CallText(const Operation& operation, const Arguments& arguments) {
  std::string text = operation.name;
  for (const auto& word : arguments.words) text += ' ' + word;
  return arguments.wait ? text + " --wait" : text;
}

}  // namespace host
