#include "host/corrections/source.h"
#include "host/run/failure.h"

namespace host {

void CheckNetwork(const CorrectionSource& source) {
  throw Failure(ExitCode::usage,
                source.Name() +
                    " needs the library libcurl, which this program was built without: install "
                    "libcurl4-openssl-dev and build it again");
}

SourceEnd ReadNetwork(const CorrectionSource& source, const std::string&, const SourcePeer&) {
  CheckNetwork(source);
  return {};
}

std::string FetchSourceTable(const CorrectionSource& caster, const std::string&, const Interrupt&) {
  CheckNetwork(caster);
  return {};
}

std::string NetworkVersion() {
  return "without libcurl";
}

}  // namespace host
