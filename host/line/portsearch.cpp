#include "host/line/portsearch.h"

#include <algorithm>
#include <initializer_list>
#include <memory>
#include <utility>

#include "gpsengine/face/models.h"
#include "gpsengine/face/words.h"
#include "gpsengine/platform/serial.h"
#include "host/line/config.h"
#include "host/line/kindlistener.h"
#include "host/line/port.h"
#include "host/line/ports.h"
#include "host/run/deadline.h"
#include "host/run/face.h"
#include "host/run/failure.h"

namespace host {

namespace {

using Clock = std::chrono::steady_clock;

// So soon a signal is noticed.
constexpr std::chrono::milliseconds kTurn{50};

/// What was heard on a line at one rate.
struct Heard {
  enum class Verdict {
    closed,   ///< The port does not open, or was lost.
    nothing,  ///< Nothing, or noise.
    foreign,  ///< Another instrument's messages: the rate is right, and no use.
    understood,
  };
  Verdict verdict;
  std::size_t bytes;
  std::string text;  ///< For the user.
};

Heard Judge(const MessageKinds& kinds, std::size_t bytes) {
  if (kinds.AreUnderstood()) {
    std::vector<std::string> parts = kinds.reports;
    if (!kinds.sentences.empty()) {
      parts.insert(parts.begin(), "NMEA (" + Join(kinds.sentences) + ')');
    }
    for (const std::string& record : kinds.binary) parts.push_back("binary records " + record);
    return {Heard::Verdict::understood, bytes, Join(parts)};
  }
  if (!kinds.foreign.empty()) {
    return {Heard::Verdict::foreign, bytes, "NMEA, but no GPS receiver's (" + Join(kinds.foreign) + ')'};
  }
  return {Heard::Verdict::nothing, bytes, bytes == 0 ? "no bytes" : "bytes that make no message"};
}

void CheckInterrupt(const Interrupt& interrupt) {
  if (interrupt.HasCome()) throw Failure(ExitCode::interrupted, "the search was interrupted");
}

/// A port, opened at a rate; null if it does not open.
std::unique_ptr<SerialLine> OpenAt(Port& port, int rate, const Interrupt& interrupt) {
  while (!port.Prepare()) {
    std::vector<pollfd> waits = {{port.Descriptor(), POLLIN, 0}, {interrupt.Descriptor(), POLLIN, 0}};
    WaitFor(waits, Deadline::kNever);
    CheckInterrupt(interrupt);
  }
  auto line = port.Open();
  if (line == nullptr) return nullptr;
  DCB state;
  state.BaudRate = static_cast<DWORD>(rate);
  line->SetState(state);
  // What came at another rate is no sign of this one. Some of it is still on its way: adapters hold bytes
  // back for 16 ms.
  constexpr std::chrono::milliseconds kSettling{30};
  std::vector<pollfd> waits = {{interrupt.Descriptor(), POLLIN, 0}};
  WaitFor(waits, Deadline::Clock::now() + kSettling);
  line->PurgeInput();
  return line;
}

/// The search as it goes.
class Search {
 public:
  Search(const SearchPlan& plan, const Interrupt& interrupt) : plan_(plan), interrupt_(interrupt) {
    for (const std::string& device : plan.devices) lines_.push_back({device, 0, Heard::Verdict::nothing});
  }

  FoundLine Go() {
    Announce();
    for (Line& line : lines_) {
      if (Try(line, plan_.rates.front())) return {line.device, plan_.rates.front()};
    }
    std::stable_partition(lines_.begin(), lines_.end(), [](const Line& line) { return line.bytes > 0; });
    for (Line& line : lines_) {
      for (auto rate = plan_.rates.begin() + 1; rate != plan_.rates.end(); ++rate) {
        if (line.verdict != Heard::Verdict::nothing) break;  // another rate would change nothing
        if (Try(line, *rate)) return {line.device, *rate};
      }
    }
    throw NothingFound();
  }

 private:
  struct Line {
    std::string device;
    std::size_t bytes;
    Heard::Verdict verdict;
  };

  void Announce() const {
    const double each = std::chrono::duration<double>(plan_.listen).count();
    const auto times = static_cast<double>(lines_.size() * plan_.rates.size());
    Complain(Print("listening for a receiver, %g s a port and baud rate: %g s at most. Ctrl-C ends", each,
                   each * times));
  }

  bool Try(Line& line, int rate) {
    const Heard heard = Listen(line.device, rate);
    line.bytes += heard.bytes;
    line.verdict = heard.verdict;
    const bool opened = heard.verdict != Heard::Verdict::closed;
    Complain(opened ? line.device + " at " + std::to_string(rate) + " baud: " + heard.text : heard.text);
    return heard.verdict == Heard::Verdict::understood;
  }

  Heard Listen(const std::string& device, int rate) const {
    const auto port = Port::Of(device);
    const auto line = OpenAt(*port, rate, interrupt_);
    if (line == nullptr) {
      const std::string reason = port->WhyNot();
      return {Heard::Verdict::closed, 0, reason.empty() ? "cannot open " + device : reason};
    }
    KindListener listener;
    std::size_t bytes = 0;
    if (!Hear(*line, listener, bytes)) {
      return {Heard::Verdict::closed, bytes, "the port " + device + " was lost"};
    }
    return Judge(listener.Kinds(), bytes);
  }

  /// Counts the bytes that come. False if the port goes away.
  bool Hear(SerialLine& line, KindListener& listener, std::size_t& bytes) const {
    Clock::time_point now = Clock::now(), end = now + plan_.listen;
    for (bool understood = false; now < end; understood = listener.Kinds().AreUnderstood()) {
      CheckInterrupt(interrupt_);
      char piece[4096];
      const int count = line.Read(piece, sizeof piece, static_cast<DWORD>(kTurn.count()));
      if (count < 0) return false;
      now = Clock::now();
      bytes += static_cast<std::size_t>(count);
      listener.Hear({piece, static_cast<std::size_t>(count)});
      if (!understood && listener.Kinds().AreUnderstood()) end = std::min(end, now + plan_.gather);
    }
    return true;
  }

  Failure NothingFound() const {
    const auto any = [this](auto&& holds) { return std::any_of(lines_.begin(), lines_.end(), holds); };
    if (!any([](const Line& line) { return line.verdict != Heard::Verdict::closed; })) {
      return Failure(ExitCode::port_closed, "no port could be opened");
    }
    return Failure(ExitCode::nothing_understood,
                   any([](const Line& line) { return line.bytes > 0; })
                       ? "no message was understood at any of these baud rates: give the receiver's own with "
                         "--baud if it is another one, or let it send NMEA"
                       : "no data came: check that the receiver is on, and its cable");
  }

  const SearchPlan& plan_;
  const Interrupt& interrupt_;
  std::vector<Line> lines_;
};

/// The ports to search, that of the last run first.
std::vector<std::string> Candidates() {
  std::vector<std::string> devices;
  const std::string last = ReadConfig().port;
  for (const SerialPortInfo& port : FindPorts()) {
    if (port.state != PortState::free) {
      Complain(port.device + " is passed over: " + port.note);
    } else if (port.device == last || port.by_id == last) {
      devices.insert(devices.begin(), port.device);
    } else {
      devices.push_back(port.device);
    }
  }
  if (devices.empty()) {
    throw Failure(ExitCode::port_closed,
                  "there is no serial port that can be opened; \"gpsengine ports\" tells more");
  }
  return devices;
}

LineChoice LastLine(LineChoice choice, bool model_given) {
  const Config config = ReadConfig();
  if (config.port.empty()) {
    throw Failure(ExitCode::usage,
                  "no port is remembered yet; \"gpsengine ports\" lists the serial ports, and --port auto "
                  "looks for a receiver");
  }
  choice.port = config.port;
  if (!model_given && !config.model.empty()) choice.model = config.model;
  Complain("the port is " + choice.port + ", the model " + choice.model);
  return choice;
}

/// Refuses a rate that would have no effect.
void CheckRate(const LineChoice& choice) {
  if (choice.baud == 0 || Port::Of(choice.port)->HasRate()) return;
  throw Failure(ExitCode::usage,
                "--baud has no effect on " + choice.port +
                    ": its speed is set where the receiver's line is; rfc2217:// sets it from "
                    "here, of a server such as ser2net");
}

}  // namespace

std::vector<int> LikelyRates(const std::string& model) {
  CGPSReceiver& receiver = FindModel(model);
  receiver.SetProperties();
  std::vector<int> rates;
  for (const int rate : {receiver.GetCurrentBaudrate(), receiver.GetDefaultBaudrate(), 9600, 4800, 38400,
                         115200, 57600, 19200, 230400, 460800}) {
    if (std::find(rates.begin(), rates.end(), rate) == rates.end()) rates.push_back(rate);
  }
  return rates;
}

FoundLine SearchLine(const SearchPlan& plan, const Interrupt& interrupt) {
  return Search(plan, interrupt).Go();
}

LineChoice ChooseLine(LineChoice choice, bool model_given, const Interrupt& interrupt) {
  if (choice.port == kLastPort) choice = LastLine(std::move(choice), model_given);
  const bool any_port = choice.port == kAutoPort;
  if (!any_port && !choice.port.empty()) CheckRate(choice);
  if (!any_port && choice.baud != kAutoBaud) return choice;
  SearchPlan plan;
  plan.rates = choice.baud > 0 ? std::vector{choice.baud} : LikelyRates(choice.model);
  plan.devices = any_port ? Candidates() : std::vector{choice.port};
  const FoundLine found = SearchLine(plan, interrupt);
  choice.port = found.device;
  choice.baud = found.baud;
  return choice;
}

}  // namespace host
