// What a live receiver costs: a simulated one, in a process of its own, at 10 Hz at the end of a
// pseudo-terminal, and a host that waits for its records. Prints processor time and wake-ups by thread, with
// the line idle and busy, and how long a sentence takes from its last byte to the host's handler.
#include <fcntl.h>
#include <stdlib.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>
#include <vector>

#include "bench/corpus.h"
#include "gpsengine/drivers/plain.h"
#include "gpsengine/engine/gpsengine.h"
#include "gpsengine/platform/application.h"
#include "gpsengine/platform/event.h"
#include "gpsengine/platform/serial.h"
#include "simulator/simulator.h"

namespace {

constexpr double kRate = 10.0;  // epochs a second
constexpr int kPort = 1;
constexpr double kIdle = 10.0;  // seconds
constexpr std::size_t kMostRecords = 1'000'000;

double Now() {
  timespec now{};
  clock_gettime(CLOCK_MONOTONIC, &now);
  return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

void SleepUntil(double moment) {
  timespec until{};
  until.tv_sec = static_cast<time_t>(moment);
  until.tv_nsec = static_cast<long>((moment - static_cast<double>(until.tv_sec)) * 1e9);
  clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &until, nullptr);
}

// What the two processes share: when the last byte of each sentence that leads to a record was written.
struct Log {
  std::atomic<std::size_t> sent;
  std::array<double, kMostRecords> written;
};

Log& SharedLog() {
  static void* const memory =
      mmap(nullptr, sizeof(Log), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  if (memory == MAP_FAILED) {
    std::perror("mmap");
    std::exit(1);
  }
  return *static_cast<Log*>(memory);
}

// Position sentences lead to records, and the last of a group of satellite sentences.
bool LeadsToRecord(std::string_view line) {
  if (line.substr(3, 3) == "GGA") return true;
  return line.substr(3, 3) == "GSV" && line[7] == line[9];
}

// The far end of the line, in a process of its own.
void Simulate(int master, double seconds) {
  simulator::Options options;
  options.model = "Ashtech";
  options.rate_hz = kRate;
  const auto receiver = simulator::MakeReceiver(options);
  for (const char* name : {"GGA", "GSA", "GSV", "VTG", "RMC", "GLL", "ZDA"})
    receiver->Receive(std::string("$PASHS,NME,") + name + ",A,ON\r\n");
  receiver->Advance(1.0);  // the acknowledgements
  Log& log = SharedLog();
  const double start = Now() + 0.05;
  for (int epoch = 0; epoch < seconds * kRate; ++epoch) {
    SleepUntil(start + epoch / kRate);
    const std::string burst = receiver->Advance(1.0 / kRate);
    for (const std::string_view line : bench::SplitLines(burst)) {
      if (write(master, line.data(), line.size()) != static_cast<ssize_t>(line.size())) std::_Exit(1);
      if (!LeadsToRecord(line) || log.sent == kMostRecords) continue;
      log.written[log.sent] = Now();
      ++log.sent;
    }
  }
  std::_Exit(0);
}

class Window : public CGPSWindow {
 public:
  Window() { Create(); }
  void OnNewData(const CGPSData&) override { handled.push_back(Now()); }
  void HandleUntil(double end) {
    for (double left = end - Now(); left > 0.0; left = end - Now()) {
      MsgWaitForMultipleObjects(0, nullptr, static_cast<DWORD>(left * 1000.0) + 1);
      Drain();
    }
  }
  std::vector<double> handled;
};

struct Usage {
  double processor = 0.0;  // seconds
  long wakeUps = 0;        // the times that the thread gave the processor up to wait
};

std::map<int, Usage> UsageByThread() {
  std::map<int, Usage> usages;
  for (const auto& task : std::filesystem::directory_iterator("/proc/self/task")) {
    Usage& usage = usages[std::stoi(task.path().filename().string())];
    std::ifstream(task.path() / "schedstat") >> usage.processor;
    usage.processor *= 1e-9;
    std::ifstream status(task.path() / "status");
    for (std::string word; status >> word;)
      if (word == "voluntary_ctxt_switches:") status >> usage.wakeUps;
  }
  return usages;
}

void PrintUsage(const char* phase, std::map<int, Usage> before, double seconds) {
  for (const auto& [thread, after] : UsageByThread()) {
    const double processor = after.processor - before[thread].processor;
    const double wakeUps = static_cast<double>(after.wakeUps - before[thread].wakeUps);
    std::printf("%-5s %-7s %8.2f s of processor an hour, %6.1f wake-ups a second\n", phase,
                thread == getpid() ? "host" : "reader", processor / seconds * 3600.0, wakeUps / seconds);
  }
}

void PrintLatencies(const Window& window) {
  const Log& log = SharedLog();
  const std::size_t count = std::min<std::size_t>(log.sent, window.handled.size());
  std::printf("%zu records of %zu sentences\n", window.handled.size(), log.sent.load());
  if (count == 0) return;
  std::vector<double> latencies(count);
  for (std::size_t i = 0; i < count; ++i) latencies[i] = 1e3 * (window.handled[i] - log.written[i]);
  std::sort(latencies.begin(), latencies.end());
  const auto at = [&](double part) {
    return latencies[static_cast<std::size_t>(part * static_cast<double>(count - 1))];
  };
  std::printf("latency in ms: 1 of 100 below %.2f, median %.2f, 99 of 100 below %.2f, most %.2f\n", at(0.01),
              at(0.5), at(0.99), at(1.0));
}

}  // namespace

int main(int argc, char** argv) {
  const double seconds = argc > 1 ? std::atof(argv[1]) : 60.0;
  const int master = posix_openpt(O_RDWR | O_NOCTTY);
  if (master < 0 || grantpt(master) != 0 || unlockpt(master) != 0) {
    std::perror("pseudo-terminal");
    return 1;
  }
  const std::string device = ptsname(master);
  SharedLog();

  CWinApp app("gpsengine-bench");
  Window window;
  app.SetMainWnd(&window);
  MapComPort(kPort, device.c_str());
  CGPSEngine engine;
  engine.InitReceivers();
  CGPSReceiver* const receiver = engine.FindReceiver("Other");
  receiver->SetupReceiver(kPort, 0, 0.0, "", false);
  engine.SetReceiver(receiver);
  if (!engine.Start()) {
    std::fprintf(stderr, "The engine does not start on %s.\n", device.c_str());
    return 1;
  }

  auto before = UsageByThread();
  window.HandleUntil(Now() + kIdle);
  PrintUsage("idle", before, kIdle);

  const pid_t child = fork();
  if (child == 0) Simulate(master, seconds);
  before = UsageByThread();
  window.HandleUntil(Now() + seconds);
  PrintUsage("busy", before, seconds);
  window.HandleUntil(Now() + 0.5);
  waitpid(child, nullptr, 0);
  PrintLatencies(window);
  engine.Stop();
  return 0;
}
