#include "host/line/portadvice.h"

#include <grp.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace host {

namespace {

/// The group whose members may use the device, so that the user should become one; empty if there is no such
/// group.
std::string GroupOf(const std::string& device) {
  struct stat status;
  constexpr mode_t kUse = S_IRGRP | S_IWGRP;
  if (stat(device.c_str(), &status) != 0 || (status.st_mode & kUse) != kUse || status.st_gid == 0) return {};
  group entry;
  group* found = nullptr;
  char text[4096];
  const bool known = getgrgid_r(status.st_gid, &entry, text, sizeof text, &found) == 0 && found != nullptr;
  return known ? found->gr_name : std::to_string(status.st_gid);
}

std::string UserName() {
  passwd entry;
  passwd* found = nullptr;
  char text[4096];
  const bool known = getpwuid_r(geteuid(), &entry, text, sizeof text, &found) == 0 && found != nullptr;
  return known ? found->pw_name : "$USER";
}

}  // namespace

std::string ExplainPort(const std::string& device, int error) {
  const std::string port = "The port " + device;
  switch (error) {
    case ENOENT:
    case ENODEV:
    case ENXIO:
      return port + " does not exist. Is the receiver plugged in, and is this its name?";
    case EACCES: {
      const std::string group = GroupOf(device);
      if (group.empty())
        return port + " may not be opened by this user. An administrator of this machine can change that.";
      return port + " may not be opened by this user. It belongs to the group " + group +
             ": sudo usermod -aG " + group + ' ' + UserName() + ", then log in again.";
    }
    case EBUSY:
      return port + " is in use by another program. Close that program first (fuser -v " + device + ").";
    case ENOTTY:
    case EISDIR:
      return port + " is not a serial port. Serial ports have names such as /dev/ttyUSB0 and /dev/ttyS0.";
    default:
      return port + " cannot be opened: " + std::strerror(error) + '.';
  }
}

}  // namespace host
