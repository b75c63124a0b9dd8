// Takes the corpus down the whole road, some times over, and does nothing else: for a profiler, which
// collects inside of Round alone. See bench/instructions.
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>

#include "bench/corpus.h"
#include "bench/host.h"
#include "gpsengine/engine/gpsengine.h"

namespace {

constexpr std::size_t kCorpusBytes = 500'000;
constexpr std::size_t kChunk = 4096;

}  // namespace

// With a name that a profiler can be told.
extern "C" [[gnu::noinline]] void Round(CGPSEngine& engine, bench::Window& window,
                                        const std::string& corpus) {
  bench::FeedEngine(engine, window, corpus, kChunk);
}

namespace {

// A sentence with its checksum. What else a recording holds is no sentence's price.
bool IsSentence(std::string_view line) {
  const auto star = line.find('*');
  if (!line.starts_with('$') || star == line.npos || star + 3 > line.size()) return false;
  int sum = 0;
  for (const char c : line.substr(1, star - 1)) sum ^= static_cast<unsigned char>(c);
  return std::strtol(std::string(line.substr(star + 1, 2)).c_str(), nullptr, 16) == sum;
}

std::string ReadFile(const char* path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace

// ROUNDS [KIND [LOG]]: sentences of a kind, or of all with "all", of the corpus or of a recording.
int main(int argc, char** argv) {
  const long rounds = argc > 1 ? std::strtol(argv[1], nullptr, 10) : 1;
  const std::string_view kind = argc > 2 ? argv[2] : "all";
  bench::Host host;
  CGPSEngine engine;
  engine.SetReceiver(engine.FindReceiver("Other"));
  const std::string all = argc > 3 ? ReadFile(argv[3]) : bench::MakeCorpus(kCorpusBytes);
  std::string corpus;
  std::size_t sentences = 0;
  for (const std::string_view line : bench::SplitLines(all)) {
    if (!IsSentence(line) || (kind != "all" && line.substr(3, 3) != kind)) continue;
    corpus += line;
    ++sentences;
  }
  // The first time through is for what is made once.
  bench::FeedEngine(engine, host.window, corpus, kChunk);
  for (long round = 0; round < rounds; ++round) Round(engine, host.window, corpus);
  std::printf("%zu\n", sentences * static_cast<std::size_t>(rounds));
}
