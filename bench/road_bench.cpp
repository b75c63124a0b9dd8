// The road of a sentence, whole and in its parts. Every figure is nanoseconds a sentence; "floors" says how
// many times the floor that is, the same bytes split into lines and their checksums computed, measured in the
// same run.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <memory>

#include "bench/allocations.h"
#include "bench/corpus.h"
#include "bench/host.h"
#include "bench/processortime.h"
#include "gpsengine/face/messagewindow.h"
#include "gpsengine/face/shelf.h"
#include "gpsengine/rawdata/rawdata.h"
#include "simulator/simulator.h"

namespace {

using bench::FeedEngine;
using bench::Host;

constexpr std::size_t kCorpusBytes = 2'000'000;
constexpr int kChunk = 4096;

const std::string& Corpus() {
  static const std::string corpus = bench::MakeCorpus(kCorpusBytes);
  return corpus;
}

const std::vector<std::string_view>& Lines() {
  static const auto lines = bench::SplitLines(Corpus());
  return lines;
}

void Floor() {
  unsigned sum = 0;
  for (const char *p = Corpus().data(), *end = p + Corpus().size(); p < end;) {
    const auto* lineEnd = static_cast<const char*>(std::memchr(p, '\n', static_cast<std::size_t>(end - p)));
    if (lineEnd == nullptr) break;
    for (const char* c = p + 1; c < lineEnd && *c != '*'; ++c) sum ^= static_cast<unsigned char>(*c);
    benchmark::DoNotOptimize(sum);
    p = lineEnd + 1;
  }
}

double Nanoseconds(const std::function<void()>& work) {
  const double start = bench::ProcessorTime();
  work();
  return bench::ProcessorTime() - start;
}

// Runs the work and the floor turn by turn, so that both meet the same machine, and reports the best of each.
void Measure(benchmark::State& state, std::size_t sentences, const std::function<void()>& work) {
  double best = 1e18;
  double floor = 1e18;
  std::size_t allocations = 0;
  for (auto _ : state) {
    floor = std::min(floor, Nanoseconds(Floor));
    const std::size_t before = bench::Allocations();
    const double time = Nanoseconds(work);
    allocations = bench::Allocations() - before;
    best = std::min(best, time);
    state.SetIterationTime(time * 1e-9);
  }
  const auto count = static_cast<double>(sentences);
  state.counters["ns"] = best / count;
  state.counters["floors"] = (best / count) / (floor / static_cast<double>(Lines().size()));
  state.counters["allocations"] = static_cast<double>(allocations) / count;
}

void WalkStream(const std::function<void(CBinBuffer&)>& take) {
  CBinBuffer stream;
  for (std::size_t at = 0; at < Corpus().size(); at += kChunk) {
    stream.Append(Corpus().data() + at,
                  static_cast<int>(std::min<std::size_t>(kChunk, Corpus().size() - at)));
    for (bool more = stream.GetCurrentMessage(); more && stream.HasMessage(); more = stream.Next())
      take(stream);
    stream.Resize();
  }
}

void BM_Floor(benchmark::State& state) {
  Measure(state, Lines().size(), Floor);
}

void BM_Framing(benchmark::State& state) {
  Measure(state, Lines().size(),
          [] { WalkStream([](CBinBuffer& stream) { benchmark::DoNotOptimize(stream); }); });
}

void BM_FramingAndText(benchmark::State& state) {
  Measure(state, Lines().size(), [] {
    WalkStream([](CBinBuffer& stream) { benchmark::DoNotOptimize(stream.GetMessageW().GetLength()); });
  });
}

std::vector<CString> Texts(std::string_view kind) {
  std::vector<CString> texts;
  for (const std::string_view line : Lines()) {
    if (kind.empty() || line.substr(3, 3) == kind)
      texts.emplace_back(line.data(), static_cast<int>(line.size()));
  }
  return texts;
}

void BM_Classification(benchmark::State& state) {
  Host host;
  const std::vector<CString> texts = Texts("");
  Measure(state, texts.size(), [&] {
    for (const CString& text : texts) benchmark::DoNotOptimize(host.receiver.GetGPSStringType(text));
  });
}

// One kind of sentence through Parse: classification, decoding and, where it publishes, copy, post and drain.
void BM_Sentence(benchmark::State& state, const char* pszKind) {
  Host host;
  std::vector<CString> texts = Texts(pszKind);
  Measure(state, texts.size(), [&] {
    int count = 0;
    for (CString& text : texts) {
      host.receiver.Parse(text);
      if (++count % 64 == 0) host.window.Drain();
    }
    host.window.Drain();
  });
}
BENCHMARK_CAPTURE(BM_Sentence, GGA, "GGA")->UseManualTime();
BENCHMARK_CAPTURE(BM_Sentence, GSA, "GSA")->UseManualTime();
BENCHMARK_CAPTURE(BM_Sentence, GSV, "GSV")->UseManualTime();
BENCHMARK_CAPTURE(BM_Sentence, VTG, "VTG")->UseManualTime();
BENCHMARK_CAPTURE(BM_Sentence, RMC, "RMC")->UseManualTime();

// The same for a sentence without its values, as a receiver at rest or without a fix sends it all the time.
void BM_EmptySentence(benchmark::State& state, const char* pszSentence) {
  Host host;
  CString text(pszSentence);
  constexpr int kSentences = 1000;
  Measure(state, kSentences, [&] {
    for (int i = 0; i < kSentences; ++i) host.receiver.Parse(text);
    host.window.Drain();
  });
}
BENCHMARK_CAPTURE(BM_EmptySentence, GGA, "$GPGGA,080001.00,,,,,0,00,99.9,,,,,,*56\r\n")->UseManualTime();
BENCHMARK_CAPTURE(BM_EmptySentence, GSA, "$GPGSA,A,1,,,,,,,,,,,,,,,*1E\r\n")->UseManualTime();
BENCHMARK_CAPTURE(BM_EmptySentence, GSV, "$GPGSV,1,1,00*79\r\n")->UseManualTime();
BENCHMARK_CAPTURE(BM_EmptySentence, VTG, "$GPVTG,,T,,M,0.00,N,0.0,K*7E\r\n")->UseManualTime();

// From bytes to drained records, in reads of this many bytes.
void BM_WholeRoad(benchmark::State& state) {
  Host host;
  CGPSEngine engine;
  engine.SetReceiver(engine.FindReceiver("Other"));
  Measure(state, Lines().size(),
          [&] { FeedEngine(engine, host.window, Corpus(), static_cast<std::size_t>(state.range(0))); });
}

// The same with bytes that make no message between the sentences: cost against the share of garbage.
void BM_WholeRoadWithGarbage(benchmark::State& state) {
  Host host;
  CGPSEngine engine;
  engine.SetReceiver(engine.FindReceiver("Other"));
  std::string bytes;
  for (const std::string_view line : Lines()) {
    bytes += line;
    bytes.append(static_cast<std::size_t>(state.range(0)), '\x81');
  }
  Measure(state, Lines().size(), [&] { FeedEngine(engine, host.window, bytes, kChunk); });
}

// A published record as a host takes and frees it, and the same as the face in plain C++ makes a fix of it,
// shelves that and gives it out: the difference is what a fix costs beside its record.
void BM_Record(benchmark::State& state, bool face) {
  CWinApp app("gpsengine-bench");
  CGPSEngine engine;
  CGPSData data;
  data.m_bPositionValid = data.m_bVelocityValid = data.m_bDOPValid = true;
  data.m_nSignalType = UDF_SIGNAL_GPS;
  data.m_dLatitude = 0.8, data.m_dLongitude = 0.2, data.m_dAltitude = 400.0, data.m_dHDOP = 1.0;
  data.m_dSpeed = 12.0, data.m_dHeading = 1.0;
  gps::Shelf shelf;
  shelf.Want(0);
  gps::Record record;
  gps::MessageWindow window(engine, [&](gps::Record&& fix) { shelf.Put(std::move(fix)); });
  window.WantSkies(false);
  bench::Window host;
  CWnd& taker = face ? static_cast<CWnd&>(window) : host;
  constexpr int kRecords = 40'000;
  Measure(state, kRecords, [&] {
    for (int i = 0; i < kRecords; ++i) {
      data.m_dTimeOfDay = i;
      taker.WindowProc(WM_GPS_NEW_DATA, reinterpret_cast<WPARAM>(new CGPSData(data)), 0);
      if (i % 8 != 7) continue;
      while (shelf.Take(0, record)) benchmark::DoNotOptimize(record);
    }
  });
}
BENCHMARK_CAPTURE(BM_Record, freed, false)->UseManualTime();
BENCHMARK_CAPTURE(BM_Record, fix, true)->UseManualTime();

// A block of raw data, by the satellite: "ns" is that of one.
void BM_RawData(benchmark::State& state, const char* pszModel, const char* pszCommand) {
  simulator::Options options;
  options.model = pszModel;
  const auto receiver = simulator::MakeReceiver(options);
  receiver->Receive(pszCommand);
  const std::string bytes = receiver->Advance(1);
  std::vector<WORD> words;
  const std::size_t begin = std::min(bytes.find("$BIN"), bytes.find("\xAA\x44\x12"));
  for (std::size_t i = begin; i + 1 < bytes.size(); i += 2)
    words.push_back(static_cast<WORD>(static_cast<unsigned char>(bytes[i]) |
                                      static_cast<unsigned char>(bytes[i + 1]) << 8));
  rawdata::PhaseHistory history;
  rawdata::ObservationEpoch epoch;
  rawdata::BroadcastEphemeris ephemeris;
  const bool observes = rawdata::DecodeObservations(words, history, epoch);
  if (!observes && !rawdata::DecodeEphemeris(words, ephemeris)) return state.SkipWithError("no such block");
  constexpr int kBlocks = 1000;
  Measure(state, kBlocks * std::max<std::size_t>(epoch.signals.size(), 1), [&] {
    for (int i = 0; i < kBlocks; ++i) {
      observes ? rawdata::DecodeObservations(words, history, epoch)
               : rawdata::DecodeEphemeris(words, ephemeris);
    }
  });
}
BENCHMARK_CAPTURE(BM_RawData, Bin96, "CSI - MAX", "$JOFF\r\n$JBIN,96,1\r\n")->UseManualTime();
BENCHMARK_CAPTURE(BM_RawData, Bin95, "CSI - MAX", "$JOFF\r\n$JBIN,95,1\r\n")->UseManualTime();
BENCHMARK_CAPTURE(BM_RawData, RANGE, "GSR2650 LB", "LOG RANGEB ONTIME 1\r\n")->UseManualTime();
BENCHMARK_CAPTURE(BM_RawData, RANGECMP, "GSR2650 LB", "LOG RANGECMPB ONTIME 1\r\n")->UseManualTime();
BENCHMARK_CAPTURE(BM_RawData, RAWEPHEM, "GSR2650 LB", "LOG RAWEPHEMB ONCHANGED\r\n")->UseManualTime();

BENCHMARK(BM_Floor)->UseManualTime();
BENCHMARK(BM_Framing)->UseManualTime();
BENCHMARK(BM_FramingAndText)->UseManualTime();
BENCHMARK(BM_Classification)->UseManualTime();
BENCHMARK(BM_WholeRoad)->UseManualTime()->Arg(64)->Arg(512)->Arg(4096)->Arg(16000);
BENCHMARK(BM_WholeRoadWithGarbage)->UseManualTime()->Arg(0)->Arg(60)->Arg(600);

}  // namespace

BENCHMARK_MAIN();
