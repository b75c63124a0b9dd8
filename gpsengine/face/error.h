#pragma once

#include <stdexcept>
#include <string>
#include <vector>

#pragma GCC visibility push(default)

namespace gps {

/// What went wrong. The numbers are the exit codes of the program gpsengine.
enum class ErrorCode : int {
  failed = 1,       ///< Something else, such as a file that cannot be read; the text tells.
  usage = 2,        ///< An argument that is none, such as the name of a model that does not exist.
  port_closed = 3,  ///< The port cannot be opened.
  silence = 4,      ///< Nothing of what was asked for came in the time given.
  port_lost = 5,    ///< The port went away: it was unplugged, or the other side hung up.
  refused = 6,      ///< The model has no such command, or the receiver did not take it.
  busy = 7,         ///< Another receiver or recording is in use in this process.
  stopped = 130,    ///< The stop token ended a command before all of it was sent.
};

/// What this interface throws, and all that it throws: a text for the user, which names the thing and says
/// what to do, and a code for the program.
class Error : public std::runtime_error {
 public:
  /// An error with that text.
  Error(ErrorCode code, const std::string& text) : std::runtime_error(text), code_(code) {}
  ErrorCode code() const { return code_; }  ///< What went wrong.

 private:
  ErrorCode code_;
};

/// The error of a name that is none of those of its kind, which it lists. `quote` stands around each.
Error NoSuch(const std::string& kind, const std::string& name, const std::vector<std::string>& names,
             const std::string& quote = "");

}  // namespace gps

#pragma GCC visibility pop
