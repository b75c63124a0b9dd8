#pragma once

namespace host {

/// Runs the program and gives its exit code. Errors have been told on standard error.
int RunCommandLine(int argc, char** argv);

}  // namespace host
