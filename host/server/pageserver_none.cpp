#include "host/run/failure.h"
#include "host/server/pageserver.h"

namespace host {

std::unique_ptr<PageServer> StartPageServer(PageHub&, PageHub&, const std::string&, int) {
  throw Failure(ExitCode::usage,
                "--http is not available, since this program was built without cpp-httplib: install "
                "libcpp-httplib-dev and pkgconf, and build it again");
}

}  // namespace host
