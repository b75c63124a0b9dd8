// The library in plain C++: a receiver's fixes, its satellites beside them and a command; or a recording's
// fixes.
//   modern /dev/ttyUSB0 Trimble
//   modern drive.log
#include <chrono>
#include <iostream>

#include "gpsengine/face/decode.h"
#include "gpsengine/face/receiver.h"

namespace {

void Read(const std::string& port, const std::string& model) {
  gps::Receiver receiver({.model = model, .port = port});
  const auto patience = std::chrono::seconds(10);
  int fixes = 0;
  for (const gps::Fix& fix : receiver.fixes(patience)) {  // a longer silence is an error
    std::cout << fix.time << ' ' << fix.latitude << ' ' << fix.longitude << ' ' << fix.height_msl << '\n';
    if (++fixes == 10) break;
  }
  if (const auto sky = receiver.satellites(patience).next()) {
    for (const auto& [id, elevation, azimuth, signal, used] : sky->satellites) {
      std::cout << id.Name() << ' ' << elevation << ' ' << azimuth << ' ' << signal
                << (used ? " used\n" : "\n");
    }
  }
  receiver.command("send", {"$PTNLQID"});
}

}  // namespace

int main(int argc, char** argv) {
  std::cout.precision(10);
  try {
    if (argc == 3) return Read(argv[1], argv[2]), 0;
    if (argc == 2) {
      for (const gps::Fix& fix : gps::decode(argv[1]).fixes()) std::cout << fix << '\n';
      return 0;
    }
    std::cerr << "usage: modern DEVICE MODEL | modern FILE\n";
    return 2;
  } catch (const gps::Error& error) {
    std::cerr << error.what() << '\n';
    return static_cast<int>(error.code());
  }
}
