#include <algorithm>
#include <array>
#include <utility>

#include "gpsengine/face/words.h"
#include "host/line/ports.h"
#include "host/records/jsonwriter.h"
#include "host/run/face.h"

namespace host {

namespace {

struct StateName {
  const char* key;
  const char* label;
};

const StateName& NameOf(PortState state) {
  // In the order of PortState.
  static constexpr StateName kNames[] = {
      {"free", "free"}, {"busy", "busy"}, {"notPermitted", "not permitted"}, {"broken", "broken"}};
  return kNames[static_cast<int>(state)];
}

std::string Description(const SerialPortInfo& port) {
  if (!port.usb) return {};
  const UsbOrigin& usb = *port.usb;
  std::string text;
  for (const auto& [word, part] : {std::pair("", &usb.manufacturer), std::pair("", &usb.product),
                                   std::pair("serial ", &usb.serial), std::pair("", &usb.interface)}) {
    if (!part->empty()) text += (text.empty() ? "" : ", ") + (word + *part);
  }
  return text;
}

/// A text of a device, which may hold anything, as a terminal can take it.
std::string Printable(std::string text) {
  std::replace_if(
      text.begin(), text.end(), [](unsigned char c) { return c < 0x20 || c == 0x7F; }, '?');
  return text;
}

std::string Row(const std::array<std::string, 5>& cells) {
  constexpr std::size_t kWidths[] = {12, 13, 10, 9, 0};
  std::string row;
  for (std::size_t i = 0; i < cells.size(); ++i) row += Padded(cells[i], kWidths[i]) + "  ";
  row.erase(row.find_last_not_of(' ') + 1);
  return row + '\n';
}

}  // namespace

std::string PortsAsTable(const std::vector<SerialPortInfo>& ports) {
  if (ports.empty()) {
    return "There is no serial port.\n"
           "  Is the receiver, or its USB adapter, plugged in and switched on? \"dmesg\" tells what the "
           "system\n"
           "  made of it when it was plugged in, and \"lsusb\" lists what is on USB.\n"
           "  In a container or a virtual machine the device has to be passed in.\n"
           "  \"gpsengine monitor\" alone runs a simulated receiver.\n";
  }
  std::string table = Row({"PORT", "STATE", "DRIVER", "USB", "DESCRIPTION"});
  for (const SerialPortInfo& port : ports) {
    const std::string usb = port.usb ? port.usb->vendor_id + ':' + port.usb->product_id : "";
    table += Row({port.device, NameOf(port.state).label, port.driver, usb, Printable(Description(port))});
    for (const std::string& more : {port.note, port.by_id, port.by_path}) {
      if (!more.empty()) table += "  " + Printable(more) + '\n';
    }
  }
  return table;
}

std::string PortsAsJson(const std::vector<SerialPortInfo>& ports) {
  std::string text;
  JsonWriter json(text);
  json.BeginArray();
  for (const SerialPortInfo& port : ports) {
    json.BeginObject();
    json.Known("device", port.device);
    json.Member("state", NameOf(port.state).key);
    json.Known("note", port.note);
    json.Known("driver", port.driver);
    json.Known("byId", port.by_id);
    json.Known("byPath", port.by_path);
    if (port.usb) {
      json.Known("vendorId", port.usb->vendor_id);
      json.Known("productId", port.usb->product_id);
      json.Known("manufacturer", port.usb->manufacturer);
      json.Known("product", port.usb->product);
      json.Known("serial", port.usb->serial);
      json.Known("interface", port.usb->interface);
    }
    json.EndObject();
  }
  json.EndArray();
  return text + '\n';
}

}  // namespace host
