#pragma once

#include <optional>
#include <string_view>

#include "host/records/moment.h"
#include "host/records/sink.h"

namespace host {

/// Tells a sink when a recording was made: at a stated date, or as far as the recording says so itself.
class Dating {
 public:
  /// `head` is the beginning of the recording, which may have its date some way behind its first fix.
  /// `scans` is whether anyone wants to know.
  Dating(Sink& sink, std::optional<Moment> date, bool scans, std::string_view head)
      : sink_(sink), scans_(scans && !date) {
    sink_.SetReference(date);
    Feed(head);
  }
  /// The next bytes, ahead of their records.
  void Feed(std::string_view bytes) {
    if (!scans_) return;
    scan_.Feed(bytes);
    sink_.SetReference(scan_.Latest());
  }

 private:
  Sink& sink_;
  const bool scans_;
  DateScan scan_;
};

}  // namespace host
