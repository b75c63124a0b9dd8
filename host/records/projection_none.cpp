#include "host/records/projection.h"
#include "host/run/failure.h"

namespace host {

struct Projection::Library {};

Projection::Projection(const std::string& code) {
  throw Failure(ExitCode::usage, "--crs " + code +
                                     " needs the library PROJ, which this program was built without: install "
                                     "libproj-dev and build it again");
}

Projection::~Projection() = default;

std::optional<Projection::Place> Projection::Of(double, double) {
  return std::nullopt;
}

std::string Projection::Version() {
  return "without PROJ";
}

}  // namespace host
