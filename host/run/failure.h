#pragma once

#include <functional>
#include <string>

#include "gpsengine/face/error.h"

namespace host {

/// How the program ends. Every command uses the same codes.
enum class ExitCode : int {
  done = 0,
  failed = 1,
  usage = 2,               ///< Wrong arguments.
  port_closed = 3,         ///< The port cannot be opened.
  nothing_understood = 4,  ///< No data, or no message understood, in the time given.
  port_lost = 5,           ///< The port went away during the run.
  refused = 6,             ///< A command was refused or timed out.
  interrupted = 130,
};

/// What ends the program early: a text for the user that names the thing and says what to do, and the exit
/// code.
class Failure : public gps::Error {
 public:
  Failure(ExitCode code, const std::string& text) : Error(static_cast<gps::ErrorCode>(code), text) {}
  ExitCode Code() const { return static_cast<ExitCode>(code()); }
};

/// Writes "gpsengine: <text>" and a line end to standard error, or hands the text to the handler. From any
/// thread.
void Complain(const std::string& text);
/// Takes complaints in place of standard error, for a screen that owns the terminal; an empty one gives
/// them back. It runs on the thread that complains, and must not complain itself.
void SetComplaintHandler(std::function<void(const std::string&)> handler);

}  // namespace host
