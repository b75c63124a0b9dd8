// Writes a corpus of about as many bytes as its argument says to standard output.
#include <cstdio>
#include <cstdlib>
#include <string>

#include "bench/corpus.h"

int main(int argc, char** argv) {
  const std::string corpus = bench::MakeCorpus(argc > 1 ? std::strtoul(argv[1], nullptr, 10) : 2'000'000);
  return std::fwrite(corpus.data(), 1, corpus.size(), stdout) == corpus.size() ? 0 : 1;
}
