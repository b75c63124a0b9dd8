#include "host/network/rfc2217line.h"
#include "host/run/failure.h"

namespace host {

std::unique_ptr<SerialLine> OpenRfc2217Line(UniqueDescriptor, const Address&, const Event&) {
  CheckRfc2217();
  return nullptr;
}

void CheckRfc2217() {
  throw Failure(ExitCode::usage,
                "rfc2217:// needs the library gensio, which this program was built without: install "
                "libgensio-dev and build it again, or use tcp:// with the speed set at the other end");
}

std::string Rfc2217Version() {
  return "without gensio";
}

}  // namespace host
