#pragma once

#include <optional>
#include <string>
#include <vector>

namespace host {

/// Where the system keeps what it knows. A test puts trees of its own in their places.
struct SystemRoots {
  std::string sys = "/sys";
  std::string dev = "/dev";
  std::string proc = "/proc";
};

/// What the system knows of the USB device behind a port; texts that the device does not give are empty.
struct UsbOrigin {
  std::string vendor_id, product_id;  ///< Four hexadecimal digits each.
  std::string manufacturer, product, serial;
  std::string interface;  ///< Which of the device's ports it is, for a device that has several.
};

enum class PortState {
  free,
  busy,           ///< Open in another program.
  not_permitted,  ///< To this user.
  broken,         ///< Does not open for another reason.
};

struct SerialPortInfo {
  std::string device;            ///< Such as "/dev/ttyUSB0".
  std::string driver;            ///< The kernel's; empty if unknown.
  std::optional<UsbOrigin> usb;  ///< For a port on USB.
  std::string by_id, by_path;    ///< Names that stay with the device and with the socket; empty for none.
  PortState state = PortState::free;
  std::string note;  ///< Why the port is not free, and what to do about it; else empty.
};

/// The serial ports that have hardware behind them, those on USB first. A port that may be free is opened for
/// a moment.
std::vector<SerialPortInfo> FindPorts(const SystemRoots& roots = {});

/// A table for people; what to check, if there are no ports.
std::string PortsAsTable(const std::vector<SerialPortInfo>& ports);
/// The same as a JSON array.
std::string PortsAsJson(const std::vector<SerialPortInfo>& ports);

/// The name under /dev/serial/by-id of a device such as /dev/ttyUSB0, under which it is found again when it
/// comes back with another number; the name given, if there is none, or if it is no such name.
std::string StableName(const std::string& device, const SystemRoots& roots = {});

/// Why a device cannot be opened and what to do next, as text for the user; empty if it can be opened now.
std::string WhyNotOpen(const std::string& device, const SystemRoots& roots = {});

}  // namespace host
