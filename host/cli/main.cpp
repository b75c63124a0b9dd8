#include <fcntl.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <csignal>

#include "gpsengine/platform/application.h"
#include "host/cli/commands.h"
#include "host/cli/values.h"

namespace host {

namespace {

/// A standard stream that the caller has closed must not become the serial port or a file that is opened
/// later.
void FillStandardDescriptors() {
  for (int descriptor; (descriptor = open("/dev/null", O_RDWR)) >= 0;) {
    if (descriptor > STDERR_FILENO) {
      close(descriptor);
      return;
    }
  }
}

ExitCode Perform(const Job& job) {
  CWinApp app("gpsengine");
  const Interrupt interrupt;
  Output output(STDOUT_FILENO);
  return job(interrupt, output);
}

/// Runs the program and gives its exit code. Errors have been told on standard error.
int RunCommandLine(int argc, char** argv) {
  CLI::App app("One interface to nineteen models of GPS receiver", "gpsengine");
  app.set_version_flag("-v,--version", VersionText());
  app.require_subcommand(1);
  Job job;
  for (const auto add : {AddModels, AddMonitor, AddServe, AddDecode, AddCommand, AddSimulate, AddPorts,
                         AddNtrip, AddConfig, AddDocuments})
    add(app, job);
  try {
    app.parse(argc, argv);
    return static_cast<int>(Perform(job));
  } catch (const CLI::ParseError& error) {
    return TellParseError(app, error);
  } catch (const gps::Error& failure) {
    Complain(failure.what());
    return static_cast<int>(failure.code());
  } catch (const std::exception& error) {
    Complain(error.what());
    return static_cast<int>(ExitCode::failed);
  }
}

}  // namespace

}  // namespace host

int main(int argc, char** argv) {
  host::FillStandardDescriptors();
  std::signal(SIGPIPE, SIG_IGN);  // a closed pipe is noticed where it is written to
  return host::RunCommandLine(argc, argv);
}
