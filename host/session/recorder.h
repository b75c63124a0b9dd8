#pragma once

#include <string>

#include "host/run/descriptor.h"
#include "host/session/outlet.h"

namespace host {

/// Records the bytes of a run to a file.
class Recorder : public Outlet {
 public:
  /// Empties the file. Throws a Failure if it cannot be written.
  explicit Recorder(const std::string& file);

  /// Throws a Failure if the file cannot be written any further.
  void OnBytes(std::string_view bytes) override;

 private:
  const std::string path_;
  UniqueDescriptor file_;
};

}  // namespace host
