#pragma once

#include <string>
#include <vector>

#include "gpsengine/face/rehearse.h"

#pragma GCC visibility push(default)

namespace gps {

// What receivers can be told, found without one. Each of these is refused (ErrorCode::busy) while a receiver
// or a recording is in use.

/// The models, by their names.
std::vector<std::string> models();

/// The commands that a model has, with examples of their arguments: "set-elevation-mask 10", "send TEXT".
std::vector<std::string> commands(const std::string& model);

/// A dry run: what `Receiver::command` would write and wait for. Throws the Errors that it would.
Transcript rehearse(const std::string& model, const std::string& operation,
                    const std::vector<std::string>& arguments = {});

}  // namespace gps

#pragma GCC visibility pop
