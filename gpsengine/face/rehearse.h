#pragma once

#include <optional>
#include <string>
#include <vector>

#include "gpsengine/face/operations.h"
#include "gpsengine/platform/rehearsal.h"

#pragma GCC visibility push(default)

namespace gps {

/// What an operation writes and waits for, found without a receiver and in no time.
struct Transcript {
  std::vector<CRehearsal::Step> steps;  ///< In order.
  Result result = Result::none;         ///< What it gives back.

  /// Milliseconds that the operation blocks its caller for, at most.
  long long Time() const;
  /// The steps, one a line.
  std::string Text() const;
};

/// Rehearses an action on a receiver of that model, whose port is open when the action begins, or is
/// closed and does not open. A wait for an acknowledgement counts as acknowledged. With `stop_after` the
/// action is stopped when it has waited that many milliseconds. No engine may run meanwhile.
Transcript Rehearse(const std::string& model, const Action& action, bool port_opens = true,
                    std::optional<long long> stop_after = {});

/// Whether a call does nothing: the capability answer opens the operation, but the model leaves it empty.
bool HasNoEffect(const Operation& operation, const Transcript& transcript);

/// "true", "false" or "none".
const char* NameOf(Result result);

}  // namespace gps

#pragma GCC visibility pop
