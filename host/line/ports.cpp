#include "host/line/ports.h"

#include <fcntl.h>
#include <linux/serial.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <termios.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>
#include <string_view>
#include <tuple>

#include "gpsengine/platform/file.h"
#include "gpsengine/platform/serial.h"
#include "host/line/portadvice.h"
#include "host/run/descriptor.h"

namespace host {

namespace {

namespace fs = std::filesystem;

/// The first line of a file of /sys or /proc; empty if there is none.
std::string FirstLine(const fs::path& file) {
  std::string line;
  std::getline(std::ifstream(file), line);
  return line;
}

/// The entries of a folder; none if it cannot be read.
std::vector<fs::path> EntriesOf(const fs::path& folder) {
  std::vector<fs::path> entries;
  std::error_code error;
  for (fs::directory_iterator at(folder, error), end; !error && at != end; at.increment(error)) {
    entries.push_back(at->path());
  }
  return entries;
}

/// Where a path leads to in the end; empty if nowhere.
fs::path Target(const fs::path& path) {
  std::error_code error;
  fs::path target = fs::canonical(path, error);
  return error ? fs::path() : target;
}

/// The driver of the device or of the nearest one above it. What the kernel's serial core puts in between is
/// passed over.
std::string DriverOf(fs::path device, const fs::path& top) {
  for (; device != top && device.has_relative_path(); device = device.parent_path()) {
    const fs::path driver = Target(device / "driver");
    if (!driver.empty() && driver.parent_path().parent_path().filename() != "serial-base") {
      return driver.filename();
    }
  }
  return {};
}

std::optional<UsbOrigin> UsbOf(fs::path device, const fs::path& top) {
  UsbOrigin usb;
  for (; device != top && device.has_relative_path(); device = device.parent_path()) {
    if (usb.interface.empty()) usb.interface = FirstLine(device / "interface");
    usb.vendor_id = FirstLine(device / "idVendor");
    if (usb.vendor_id.empty()) continue;
    usb.product_id = FirstLine(device / "idProduct");
    usb.manufacturer = FirstLine(device / "manufacturer");
    usb.product = FirstLine(device / "product");
    usb.serial = FirstLine(device / "serial");
    return usb;
  }
  return std::nullopt;
}

/// The name in a folder of links that leads to the device; empty for none.
std::string LinkTo(const fs::path& target, const fs::path& folder) {
  for (const fs::path& link : EntriesOf(folder)) {
    if (!target.empty() && Target(link) == target) return link;
  }
  return {};
}

/// Who has which device open, as far as this user may see.
class Holders {
 public:
  explicit Holders(const SystemRoots& roots) {
    const std::string self = std::to_string(getpid());
    for (const fs::path& process : EntriesOf(roots.proc)) {
      const std::string pid = process.filename();
      if (std::isdigit(static_cast<unsigned char>(pid.front())) == 0 || pid == self) continue;
      for (const fs::path& file : EntriesOf(process / "fd")) {
        std::error_code error;
        const fs::path target = fs::read_symlink(file, error);
        if (!error && target.string().starts_with("/dev/")) {
          holders_[target] = FirstLine(process / "comm") + " (process " + pid + ')';
        }
      }
    }
  }
  /// "name (process N)"; empty for nobody.
  std::string Of(const fs::path& target) const {
    const auto found = holders_.find(target);
    return found == holders_.end() ? std::string() : found->second;
  }

 private:
  std::map<fs::path, std::string> holders_;
};

/// What an open of the device, which it does not take from anybody, tells.
struct Probe {
  int error = 0;  ///< Of the open; 0 if the device is free.
  bool has_hardware = true;

  explicit Probe(const std::string& device) {
    const UniqueDescriptor file(open(device.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC));
    if (!file) {
      error = errno;
      return;
    }
    serial_struct about{};
    has_hardware = ioctl(file.Get(), TIOCGSERIAL, &about) != 0 || about.type != PORT_UNKNOWN ||
                   !fs::path(device).filename().string().starts_with("ttyS");
    termios settings;
    int exclusive = 0;
    if (tcgetattr(file.Get(), &settings) != 0) {
      error = errno;
    } else if ((ioctl(file.Get(), TIOCGEXCL, &exclusive) == 0 && exclusive != 0) ||
               flock(file.Get(), LOCK_SH | LOCK_NB) != 0) {
      error = EBUSY;
    }
  }
};

PortState StateOf(int error) {
  switch (error) {
    case 0:
      return PortState::free;
    case EBUSY:
      return PortState::busy;
    case EACCES:
    case EPERM:
      return PortState::not_permitted;
    default:
      return PortState::broken;
  }
}

std::string InUse(const std::string& holder) {
  return "in use by " + (holder.empty() ? "another program" : holder);
}

/// Fills in the state. False for a port with no hardware behind it.
bool Look(SerialPortInfo& port, const fs::path& entry, const Holders& holders) {
  const std::string type = FirstLine(entry / "type");
  if (type == "0") return false;
  const bool is_console = FirstLine(entry / "console") == "Y";
  const std::string holder = is_console ? "the system, as its console" : holders.Of(Target(port.device));
  if (!holder.empty()) {
    port.state = PortState::busy;
    port.note = InUse(holder);
    return true;
  }
  const Probe probe(port.device);
  port.state = StateOf(probe.error);
  if (port.state == PortState::busy) port.note = InUse("");
  if (port.state == PortState::broken) port.note = std::strerror(probe.error);
  if (port.state == PortState::not_permitted) {
    port.note = ExplainPort(port.device, probe.error);
    // The kernel assumes some ports to be there, and who may not ask it has no other sign of them.
    if (type.empty() && port.driver == "serial8250") return false;
  }
  return probe.has_hardware;
}

/// Orders "ttyUSB2" before "ttyUSB10", and what is on USB before the rest.
auto Place(const SerialPortInfo& port) {
  const auto digits = port.device.find_last_not_of("0123456789") + 1;
  return std::tuple(!port.usb, port.device.substr(0, digits), port.device.size(), port.device);
}

}  // namespace

std::vector<SerialPortInfo> FindPorts(const SystemRoots& roots) {
  const fs::path top = Target(roots.sys);
  const Holders holders(roots);
  std::vector<SerialPortInfo> ports;
  for (const fs::path& entry : EntriesOf(fs::path(roots.sys) / "class/tty")) {
    const std::string name = entry.filename();
    const fs::path device = Target(entry / "device");
    // Terminals that are no ports, such as consoles, belong to no device. A Bluetooth port may not either.
    if (device.empty() && !name.starts_with("rfcomm")) continue;
    SerialPortInfo port;
    port.device = roots.dev + '/' + name;
    if (!device.empty()) {
      port.driver = DriverOf(device, top);
      port.usb = UsbOf(device, top);
    }
    const fs::path links = fs::path(roots.dev) / "serial";
    port.by_id = LinkTo(Target(port.device), links / "by-id");
    port.by_path = LinkTo(Target(port.device), links / "by-path");
    if (Look(port, entry, holders)) ports.push_back(std::move(port));
  }
  std::sort(ports.begin(), ports.end(),
            [](const auto& left, const auto& right) { return Place(left) < Place(right); });
  return ports;
}

std::string StableName(const std::string& device, const SystemRoots& roots) {
  const fs::path path(device);
  const std::string name = path.filename();
  // A name that somebody has given, for the device or for the socket, says what is meant.
  if (path.parent_path() != roots.dev || !(name.starts_with("tty") || name.starts_with("rfcomm"))) {
    return device;
  }
  const std::string link = LinkTo(Target(path), fs::path(roots.dev) / "serial/by-id");
  return link.empty() ? device : link;
}

std::string WhyNotOpen(const std::string& device, const SystemRoots& roots) {
  if (OpenSerialDevice(CString::FromUtf8(device)) != nullptr) return {};
  const std::string reason = ExplainPort(device, static_cast<int>(GetLastError()));
  const fs::path target = Target(device);
  if (target.empty()) return reason + " \"gpsengine ports\" lists the serial ports there are.";
  const std::string holder = Holders(roots).Of(target);
  return holder.empty() ? reason : reason + " It is open in " + holder + '.';
}

}  // namespace host
