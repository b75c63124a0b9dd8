// How the cost of the whole road, from bytes to drained records, goes with the size of the input, with the
// bytes a call brings, with the kind of message and with the share of garbage, and whether it is linear in
// them.
#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

#include "bench/corpus.h"
#include "bench/host.h"
#include "bench/processortime.h"

namespace {

constexpr std::size_t kBytes = 1'000'000;
constexpr std::size_t kChunk = 4096;
constexpr int kTurns = 7;
// Costs a byte, or a byte beside a cost a call, that differ by less than this are the same: a machine is not
// quiet.
constexpr double kTolerance = 1.5;

struct Row {
  std::string name;
  std::string bytes;
  std::size_t burst = kChunk;
  double best = 1e18;  // nanoseconds

  double PerByte() const { return best / static_cast<double>(bytes.size()); }
};

// Measures the rows turn by turn, so that all of them meet the same machine.
void Measure(std::vector<Row>& rows) {
  bench::Host host;
  for (int turn = 0; turn < kTurns; ++turn) {
    for (Row& row : rows) {
      CGPSEngine engine;
      engine.SetReceiver(engine.FindReceiver("Other"));
      const double start = bench::ProcessorTime();
      bench::FeedEngine(engine, host.window, row.bytes, row.burst);
      row.best = std::min(row.best, bench::ProcessorTime() - start);
    }
  }
}

void Print(const char* title, const std::vector<Row>& rows) {
  std::printf("\n%-34s %10s %9s %9s %12s\n", title, "bytes", "ns/byte", "ns/line", "ns/call");
  for (const Row& row : rows) {
    const auto lines = std::max<std::ptrdiff_t>(1, std::count(row.bytes.begin(), row.bytes.end(), '\n'));
    const auto calls = (row.bytes.size() + row.burst - 1) / row.burst;
    std::printf("%-34s %10zu %9.2f %9.1f %12.1f\n", row.name.c_str(), row.bytes.size(), row.PerByte(),
                row.best / static_cast<double>(lines), row.best / static_cast<double>(calls));
  }
}

bool Tell(const char* claim, double most, double least) {
  const bool holds = most < kTolerance * least;
  std::printf("%s: %s (%.2f to %.2f)\n", claim, holds ? "yes" : "NO", least, most);
  return holds;
}

// Whether the costs a byte are the same.
bool TellFlat(const char* claim, const std::vector<Row>& rows) {
  const auto [least, most] = std::minmax_element(
      rows.begin(), rows.end(), [](const Row& a, const Row& b) { return a.PerByte() < b.PerByte(); });
  return Tell(claim, most->PerByte(), least->PerByte());
}

std::string Repeat(const std::string& text, std::size_t bytes) {
  std::string all;
  while (all.size() < bytes) all += text;
  return all;
}

std::string OfKind(const std::string& corpus, std::string_view kind) {
  std::string lines;
  for (const std::string_view line : bench::SplitLines(corpus))
    if (line.substr(3, 3) == kind) lines += line;
  return Repeat(lines, kBytes);
}

bool Sizes() {
  std::vector<Row> rows;
  for (const std::size_t bytes : {10'000, 100'000, 1'000'000, 10'000'000})
    rows.push_back({std::to_string(bytes / 1000) + " kB", bench::MakeCorpus(bytes)});
  Measure(rows);
  Print("size of the input", rows);
  return TellFlat("linear in the size", rows);
}

// A call has a cost of its own, so that the smallest and the largest burst tell both costs, and those between
// must fit.
bool Bursts() {
  const std::string corpus = bench::MakeCorpus(kBytes);
  std::vector<Row> rows;
  for (const std::size_t burst : {1, 4, 16, 64, 256, 1024, 4096, 16000})
    rows.push_back({std::to_string(burst) + " bytes a call", corpus, burst});
  Measure(rows);
  Print("bytes a call", rows);
  const double byte = rows.back().PerByte();
  const double call = rows.front().PerByte() - byte;
  double most = 1.0;
  double least = 1.0;
  for (const Row& row : rows) {
    const double fit = row.PerByte() / (byte + call / static_cast<double>(row.burst));
    most = std::max(most, fit);
    least = std::min(least, fit);
  }
  std::printf("a byte costs %.2f ns, a call %.1f ns; measured against that:\n", byte, call);
  return Tell("linear in the bytes and the calls", most, least);
}

void Mixes() {
  const std::string corpus = bench::MakeCorpus(kBytes);
  std::vector<Row> rows{{"all", corpus}};
  for (const char* kind : {"GGA", "GSA", "GSV", "VTG", "RMC"}) rows.push_back({kind, OfKind(corpus, kind)});
  rows.push_back({"of no known kind", Repeat("$GPXTE,A,A,0.67,L,N*6F\r\n", kBytes)});
  rows.push_back(
      {"with a bad checksum", Repeat("$GPGLL,4737.18624,N,00923.99740,E,080002.00,A*00\r\n", kBytes)});
  rows.push_back({"proprietary, 200 bytes", Repeat("$PXYZ," + std::string(192, '1') + "\r\n", kBytes)});
  Measure(rows);
  Print("mix of messages", rows);
}

// Garbage between the sentences of a corpus: so many bytes of it a sentence.
bool Garbage() {
  const std::string corpus = bench::MakeCorpus(kBytes / 10);
  std::vector<Row> rows;
  for (const std::size_t share : {0, 10, 50, 90, 99}) {
    std::string bytes;
    for (const std::string_view line : bench::SplitLines(corpus))
      (bytes += line).append(line.size() * share / (100 - share), '\x81');
    rows.push_back({std::to_string(share) + " % of garbage", bytes});
  }
  Measure(rows);
  Print("share of garbage", rows);
  // What a byte of garbage costs, from each share.
  std::vector<double> costs;
  for (std::size_t i = 2; i < rows.size(); ++i)
    costs.push_back((rows[i].best - rows[0].best) /
                    static_cast<double>(rows[i].bytes.size() - rows[0].bytes.size()));
  return Tell("linear in the garbage, ns a byte of it", *std::max_element(costs.begin(), costs.end()),
              *std::min_element(costs.begin(), costs.end()));
}

// Streams that make a scan start over: what is told from a later message, or not at all. A stream is given up
// at 16 kB, which bounds what starting over can cost.
bool Hostile() {
  std::vector<Row> rows;
  for (const std::size_t burst : {1024, 4096, 16000}) {
    const std::string of = ", " + std::to_string(burst) + " a call";
    rows.push_back({"lines without a comma" + of, Repeat("$ABC\r\n", kBytes), burst});
    rows.push_back({"# logs without a line end" + of, Repeat("#A,B,C", kBytes), burst});
    rows.push_back({"nothing but $" + of, Repeat("$", kBytes), burst});
    rows.push_back({"nothing but #" + of, Repeat("#", kBytes), burst});
    rows.push_back({"nothing but AA 44" + of, Repeat("\xAA\x44", kBytes), burst});
  }
  Measure(rows);
  Print("streams that make scans start over", rows);
  const auto most = std::max_element(rows.begin(), rows.end(),
                                     [](const Row& a, const Row& b) { return a.PerByte() < b.PerByte(); });
  const bool bounded = most->PerByte() < 50.0;
  std::printf("below 50 ns a byte: %s\n", bounded ? "yes" : "NO");
  return bounded;
}

}  // namespace

int main() {
  bool good = Sizes();
  good &= Bursts();
  Mixes();
  good &= Garbage();
  good &= Hostile();
  return good ? 0 : 1;
}
