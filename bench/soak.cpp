// The live path, driven by a simulated receiver at many times real speed over a line that is treated badly,
// by a host that restarts, dozes and changes its mind. Every fix that the far end sends stands in a ledger;
// what did not arrive must have a reason there.
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <charconv>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <mutex>
#include <random>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include "bench/corpus.h"
#include "gpsengine/engine/gpsengine.h"
#include "gpsengine/platform/application.h"
#include "gpsengine/platform/messagebox.h"
#include "gpsengine/receiver/messages.h"
#include "simulator/simulator.h"
#include "tests/support/pseudoterminal.h"

namespace {

using SteadyClock = std::chrono::steady_clock;
using namespace std::chrono_literals;
using namespace std::string_literals;

constexpr int kPort = 1;
constexpr int kDay = 86400;

struct Settings {
  double minutes = 10;
  int speed_up = 100;
  unsigned seed = 1;
};

// ---- What is done to the line -----------------------------------------------------------------------------

/// Bytes between two sentences. What begins within `reach` bytes after them may be lost with them: a text
/// ends at the next carriage return, a block has its length.
struct Fault {
  const char* name;
  std::string bytes;
  std::size_t reach;
};

const std::vector<Fault>& Faults() {
  static const std::vector<Fault> faults = {
      {"noise", "\x01\xFF\x80 rubbish \xAA\x44", 0},
      {"zeros", std::string(300, '\0'), 0},
      {"the tail of a sentence", ",N,01131.000,E*47\r\n", 0},
      {"half a sentence and a line end", "$GPGGA,0000\r\n", 0},
      {"a port prompt", "[COM1]", 0},
      {"an unfinished sentence", "$GPGGA,0000", 1},
      {"a dollar", "$", 1},
      {"a number sign", "#", 1},
      {"the head of a measurement", "$X,MBN,", 47},
      {"the head of an ephemeris", "$X,SNV,", 137},
      {"the head of a block", "$BIN_", 200},
      {"an OEM header", "\xAA\x44\x12\x1C\0\0\0\0\x64\0"s, 132},
  };
  return faults;
}

constexpr const char* kDamaged = "damaged on the line";

// ---- The ledger -------------------------------------------------------------------------------------------

/// Every fix that was sent, by its second since midnight of the first day. Filled by the far end's thread,
/// read when that has ended, but for Sent().
class Ledger {
 public:
  struct Fix {
    const char* danger = nullptr;  ///< What may have cost it; null if nothing.
    SteadyClock::time_point sent{};
  };

  /// All memory is taken now, so that the growth of the process is that of the engine.
  explicit Ledger(std::size_t seconds) : fixes_(seconds) {}

  void Send(std::size_t second, const char* danger) {
    if (second >= fixes_.size()) return;
    fixes_[second].danger = danger;
    fixes_[second].sent = SteadyClock::now();
    ++sent_;
  }
  std::size_t Sent() const { return sent_; }

  /// Takes a time of day from a record, on the host's thread.
  void Receive(double time_of_day) {
    const auto second = static_cast<long>(time_of_day);
    if (time_of_day < 0 || time_of_day >= kDay || time_of_day != static_cast<double>(second)) {
      ++invented_;
      return;
    }
    // Of the days on which it may have been, the one nearest to the fix before.
    long distance = (second - last_) % kDay;
    if (distance < -kDay / 2) distance += kDay;
    if (distance > kDay / 2) distance -= kDay;
    const long at = last_ + distance;
    if (at < 0 || static_cast<std::size_t>(at) >= arrived_.size()) {
      ++invented_;
      return;
    }
    last_ = at;
    arrived_[static_cast<std::size_t>(at)] = true;
  }
  void Begin(long second) { last_ = second; }

  const std::vector<Fix>& Fixes() const { return fixes_; }
  bool HasArrived(std::size_t second) const { return arrived_[second]; }
  long Invented() const { return invented_; }

 private:
  std::vector<Fix> fixes_;
  std::vector<bool> arrived_ = std::vector<bool>(fixes_.size());
  std::atomic<std::size_t> sent_{0};
  long last_ = 0;
  long invented_ = 0;
};

// ---- The far end ------------------------------------------------------------------------------------------

/// A simulated receiver behind a bad cable, on a thread of its own.
class FarEnd {
 public:
  FarEnd(const Settings& settings, Ledger& ledger)
      : settings_(settings), ledger_(ledger), dice_(settings.seed), terminal_(new PseudoTerminal) {
    simulator::Options options;
    options.seed = settings.seed;
    receiver_ = simulator::MakeReceiver(options);
  }

  void Start() {
    thread_ = std::jthread([this](const std::stop_token& stop) { Run(stop); });
  }
  void Stop() { thread_ = std::jthread(); }

  std::string Name() {
    const std::lock_guard lock(mutex_);
    return terminal_->Name();
  }
  /// Pulls the plug and puts it into another socket.
  void Replug() {
    const std::lock_guard lock(mutex_);
    terminal_ = std::make_unique<PseudoTerminal>();
  }
  long Sentences() const { return sentences_; }
  long FaultsMade() const { return faults_; }

 private:
  void Run(const std::stop_token& stop) {
    auto next = SteadyClock::now();
    while (!stop.stop_requested()) {
      next += 1000000us / settings_.speed_up;
      std::this_thread::sleep_until(next);
      const std::string heard = receiver_->Advance(1.0);
      std::string bytes;
      for (const std::string_view sentence : bench::SplitLines(heard)) bytes += Treat(sentence);
      Transmit(bytes);
    }
  }

  /// The sentence as it leaves, with what the cable adds to it.
  std::string Treat(std::string_view sentence) {
    ++sentences_;
    const char* danger = reach_ > 0 ? cause_ : nullptr;
    std::string bytes;
    if (dice_() % 100 == 0) {
      const Fault& fault = Faults()[dice_() % Faults().size()];
      ++faults_;
      bytes = fault.bytes;
      if (fault.reach > 0) {
        reach_ = std::max(reach_, fault.reach);
        danger = cause_ = fault.name;
      }
    }
    std::string text(sentence);
    if (dice_() % 200 == 0) {
      text[text.size() / 2] ^=
          1;  // one bit: the checksum tells, and no delimiter comes of it that starts a text
      danger = kDamaged;
    }
    reach_ -= std::min(reach_, text.size());
    if (sentence.substr(3, 3) == "GGA") ledger_.Send(SecondOf(sentence), danger);
    return bytes + text;
  }

  std::size_t SecondOf(std::string_view gga) {
    int hhmmss = 0;
    std::from_chars(gga.data() + 7, gga.data() + 13, hhmmss);
    const long second = hhmmss / 10000 * 3600L + hhmmss / 100 % 100 * 60L + hhmmss % 100;
    if (second < last_second_) days_ += kDay;
    last_second_ = second;
    return static_cast<std::size_t>(days_ + second);
  }

  /// In pieces of any size. What the line has no room for, since nobody reads it at the moment, waits.
  void Transmit(std::string_view bytes) {
    while (!bytes.empty()) {
      std::size_t sent = 0;
      {
        const std::lock_guard lock(mutex_);
        sent = terminal_->Exchange(bytes.substr(0, 1 + dice_() % 700));
      }
      if (sent == 0) std::this_thread::sleep_for(1ms);
      bytes.remove_prefix(sent);
    }
  }

  const Settings& settings_;
  Ledger& ledger_;
  std::minstd_rand dice_;
  std::unique_ptr<simulator::Receiver> receiver_;
  std::mutex mutex_;
  std::unique_ptr<PseudoTerminal> terminal_;  // guarded by mutex_
  std::atomic<long> sentences_{0}, faults_{0};
  std::size_t reach_ = 0;
  const char* cause_ = nullptr;
  long last_second_ = 0, days_ = 0;
  std::jthread thread_;
};

// ---- The host ---------------------------------------------------------------------------------------------

class Window : public CGPSWindow {
 public:
  explicit Window(Ledger& ledger) : ledger_(ledger) { Create(); }

  void OnNewData(const CGPSData& data) override {
    ledger_.Receive(data.m_dTimeOfDay);
    ++records_;
  }
  long Records() const { return records_; }

 private:
  Ledger& ledger_;
  long records_ = 0;
};

/// What the process holds.
struct Holding {
  static Holding Take() {
    Holding now;
    std::ifstream status("/proc/self/status");
    for (std::string word; status >> word;) {
      if (word == "VmRSS:") status >> now.resident;
      if (word == "VmHWM:") status >> now.peak;
    }
    now.descriptors = Entries("/proc/self/fd");
    now.threads = Entries("/proc/self/task");
    return now;
  }
  static long Entries(const char* folder) {
    return static_cast<long>(std::distance(std::filesystem::directory_iterator(folder), {}));
  }
  long resident = 0, peak = 0;  ///< KB.
  long descriptors = 0, threads = 0;
};

/// A time in which a fix may be lost because nobody reads the line.
struct Break {
  const char* cause;
  SteadyClock::time_point from, to;
};

class Host {
 public:
  Host(const Settings& settings, FarEnd& far_end, Ledger& ledger)
      : settings_(settings), far_end_(far_end), dice_(settings.seed + 1), window_(ledger) {
    app_.SetMainWnd(&window_);
    SetMessageBoxHandler([this](const CString&, BoxKind) { ++boxes_; });
    Select("Other");
    engine_.m_strRecordFile = CString::FromUtf8(record_file_);
  }
  ~Host() {
    engine_.Stop();
    SetMessageBoxHandler(nullptr);
    std::filesystem::remove(record_file_);
  }

  void Go() {
    const auto begin = SteadyClock::now();
    const auto length = std::chrono::duration<double>(settings_.minutes * 60);
    Restart("started");
    auto act = begin + 3s;
    for (std::size_t mark = 0; SteadyClock::now() < begin + length;) {
      Attend(50ms);
      if (SteadyClock::now() >= begin + length * (mark + 1) / kMarks) holdings_[mark++] = Holding::Take();
      if (SteadyClock::now() < act) continue;
      Act();
      act = SteadyClock::now() + 2s + std::chrono::milliseconds(dice_() % 3000);
    }
  }
  void Finish() {
    const auto end = SteadyClock::now() + 1s;
    while (SteadyClock::now() < end) Attend(50ms);
    engine_.Stop();
    window_.Drain();
  }

  const std::vector<Break>& Breaks() const { return breaks_; }
  long Records() const { return window_.Records(); }
  int Boxes() const { return boxes_; }
  const CGPSEngine& Engine() const { return engine_; }
  static constexpr std::size_t kMarks = 10;
  const std::array<Holding, kMarks>& Holdings() const { return holdings_; }

 private:
  void Select(const char* model) {
    CGPSReceiver* const receiver = engine_.FindReceiver(model);
    receiver->SetupReceiver(kPort, 0, 0.0, "", false);
    engine_.SetReceiver(receiver);
  }
  void Attend(std::chrono::milliseconds limit) {
    MsgWaitForMultipleObjects(0, nullptr, static_cast<DWORD>(limit.count()));
    window_.Drain();
    const auto now = SteadyClock::now();
    // A reader that had no processor for a quarter of a second finds more than a stream may hold.
    if (const int dropped = engine_.GetDroppedBuffers(); std::exchange(dropped_, dropped) != dropped)
      breaks_.push_back({"the stream was thrown away", attended_ - kInFlight, now});
    attended_ = now;
  }

  /// One thing that hosts do.
  void Act() {
    switch (dice_() % 7) {
      case 0:
        return Restart("the host started again");
      case 1:
        breaks_.push_back({"the plug was pulled", SteadyClock::now() - kInFlight, {}});
        far_end_.Replug();
        return StartOn();
      case 2:
        breaks_.push_back({"the host changed the receiver", SteadyClock::now() - kInFlight, {}});
        Select(dice_() % 2 == 0 ? "Garmin" : "Other");
        return StartOn();
      case 3:
        std::this_thread::sleep_for(1500ms);  // dozes while messages pile up
        return;
      case 4:
        engine_.m_bAttachRawData = !engine_.m_bAttachRawData;
        return;
      case 5:
        engine_.m_strRecordFile = dice_() % 2 == 0 ? CString("/dev/full") : CString::FromUtf8(record_file_);
        engine_.m_bRecordRaw = !engine_.m_bRecordRaw;
        return;
      default:
        engine_.m_ComBuffer.m_bPaused = !engine_.m_ComBuffer.m_bPaused;
    }
  }

  void Restart(const char* cause) {
    breaks_.push_back({cause, SteadyClock::now() - kInFlight, {}});
    engine_.Stop();
    StartOn();
  }
  void StartOn() {
    MapComPort(kPort, CString::FromUtf8(far_end_.Name()));
    if (!engine_.Start()) {
      std::fprintf(stderr, "soak: the engine does not start: %s\n",
                   engine_.GetLastErrorString().ToUtf8().c_str());
      std::exit(1);
    }
    breaks_.back().to = SteadyClock::now();
  }

  // What was sent so long ago has been read.
  static constexpr auto kInFlight = 1000ms;

  const Settings& settings_;
  FarEnd& far_end_;
  std::minstd_rand dice_;
  const std::string record_file_ =
      (std::filesystem::temp_directory_path() / ("gpsengine-soak-" + std::to_string(getpid()))).string();
  CWinApp app_{"gpsengine-soak"};
  Window window_;
  std::atomic<int> boxes_{0};
  std::vector<Break> breaks_;
  std::array<Holding, kMarks> holdings_;
  int dropped_ = 0;
  SteadyClock::time_point attended_ = SteadyClock::now();
  CGPSEngine engine_;
};

// ---- The account ------------------------------------------------------------------------------------------

const char* CauseOf(const Ledger::Fix& fix, const std::vector<Break>& breaks) {
  if (fix.danger != nullptr) return fix.danger;
  for (const Break& pause : breaks) {
    if (fix.sent >= pause.from && fix.sent <= pause.to) return pause.cause;
  }
  return nullptr;
}

/// Prints what was lost and why. The number of losses without a reason.
long PrintLosses(const Ledger& ledger, const std::vector<Break>& breaks) {
  std::map<std::string, std::pair<long, long>> causes;  // lost, in danger
  long lost = 0, unexplained = 0;
  for (std::size_t second = 0; second < ledger.Fixes().size(); ++second) {
    const Ledger::Fix& fix = ledger.Fixes()[second];
    if (fix.sent == SteadyClock::time_point{}) continue;
    const char* const cause = CauseOf(fix, breaks);
    const bool is_lost = !ledger.HasArrived(second);
    lost += is_lost;
    if (cause == nullptr) {
      unexplained += is_lost;
      if (is_lost) std::printf("  unexplained: the fix of second %zu\n", second);
      continue;
    }
    causes[cause].first += is_lost;
    ++causes[cause].second;
  }
  std::printf("fixes lost %ld, of those in danger by cause:\n", lost);
  for (const auto& [cause, counts] : causes)
    std::printf("  %-32s %5ld of %ld\n", cause.c_str(), counts.first, counts.second);
  std::printf("  %-32s %5ld\n", "unexplained", unexplained);
  return unexplained;
}

void PrintHoldings(const Holding& before, const std::array<Holding, Host::kMarks>& during,
                   const Holding& after) {
  const auto row = [](const char* when, const Holding& holding) {
    std::printf("  %-12s %7ld KB resident %4ld descriptors %3ld threads\n", when, holding.resident,
                holding.descriptors, holding.threads);
  };
  std::printf("the process:\n");
  row("before", before);
  for (std::size_t i = 0; i < during.size(); ++i)
    row((std::to_string(100 * (i + 1) / during.size()) + " %").c_str(), during[i]);
  row("after", after);
  std::printf("  peak %ld KB\n", after.peak);
}

int Soak(const Settings& settings) {
  const auto seconds = static_cast<std::size_t>(settings.minutes * 60 * settings.speed_up) + kDay;
  Ledger ledger(seconds);
  ledger.Begin(8 * 3600);  // the simulated day begins at eight
  FarEnd far_end(settings, ledger);
  std::jthread([] {}).join();  // the first thread brings a few things along that stay
  const Holding before = Holding::Take();
  Holding after;
  long unexplained = 0;
  {
    Host host(settings, far_end, ledger);
    far_end.Start();
    host.Go();
    far_end.Stop();
    host.Finish();
    std::printf("%g minutes at %d times real speed, seed %u\n", settings.minutes, settings.speed_up,
                settings.seed);
    std::printf("sentences sent %ld, faults on the line %ld, breaks of the run %zu, boxes %d\n",
                far_end.Sentences(), far_end.FaultsMade(), host.Breaks().size(), host.Boxes());
    std::printf(
        "records received %ld, messages framed %lld, streams thrown away %d, messages lost in the queue "
        "%llu\n",
        host.Records(), host.Engine().GetMessages(), host.Engine().GetDroppedBuffers(), GetLostMessages());
    std::printf("fixes sent %zu, never sent but received %ld\n", ledger.Sent(), ledger.Invented());
    unexplained = PrintLosses(ledger, host.Breaks());
    after = Holding::Take();
    PrintHoldings(before, host.Holdings(), after);
  }
  after = Holding::Take();
  const bool leaks = after.descriptors != before.descriptors || after.threads != before.threads;
  std::printf("left over: %ld descriptors, %ld threads\n", after.descriptors - before.descriptors,
              after.threads - before.threads);
  return unexplained == 0 && ledger.Invented() == 0 && !leaks ? 0 : 1;
}

double Number(const char* text, const char* name, double least) {
  char* end = nullptr;
  const double value = text != nullptr ? std::strtod(text, &end) : 0;
  if (text != nullptr && *text != '\0' && *end == '\0' && value >= least) return value;
  std::fprintf(stderr, "soak: %s takes a number from %g up\n", name, least);
  std::exit(2);
}

}  // namespace

int main(int argc, char** argv) {
  Settings settings;
  for (int i = 1; i < argc; i += 2) {
    const std::string_view name = argv[i];
    const char* const value = i + 1 < argc ? argv[i + 1] : nullptr;
    if (name == "--minutes") {
      settings.minutes = Number(value, argv[i], 0.1);
    } else if (name == "--times") {
      settings.speed_up = static_cast<int>(Number(value, argv[i], 1));
    } else if (name == "--seed") {
      settings.seed = static_cast<unsigned>(Number(value, argv[i], 1));
    } else {
      std::fprintf(stderr, "usage: soak [--minutes N] [--times REAL_SPEED] [--seed N]\n");
      return 2;
    }
  }
  return Soak(settings);
}
