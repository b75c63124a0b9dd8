#include "bench/corpus.h"

#include "simulator/simulator.h"

namespace bench {

std::string MakeCorpus(std::size_t bytes) {
  simulator::Options options;
  options.model = "Ashtech";
  const auto receiver = simulator::MakeReceiver(options);
  receiver->Receive("$PASHS,NME,ALL,A,OFF\r\n");
  for (const char* name : {"GGA", "GSA", "GSV", "VTG", "RMC", "GLL", "ZDA"})
    receiver->Receive(std::string("$PASHS,NME,") + name + ",A,ON\r\n");
  receiver->Advance(1.0);  // the acknowledgements
  std::string corpus;
  while (corpus.size() < bytes) corpus += receiver->Advance(10.0);
  return corpus;
}

std::vector<std::string_view> SplitLines(std::string_view corpus) {
  std::vector<std::string_view> lines;
  for (auto end = corpus.find('\n'); end != std::string_view::npos; end = corpus.find('\n')) {
    lines.push_back(corpus.substr(0, end + 1));
    corpus.remove_prefix(end + 1);
  }
  return lines;
}

}  // namespace bench
