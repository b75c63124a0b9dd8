#include <fcntl.h>
#include <unistd.h>

#include <csignal>

#include "host/cli/commandline.h"

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

}  // namespace

int main(int argc, char** argv) {
  FillStandardDescriptors();
  std::signal(SIGPIPE, SIG_IGN);  // a closed pipe is noticed where it is written to
  return host::RunCommandLine(argc, argv);
}
