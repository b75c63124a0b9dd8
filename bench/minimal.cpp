// The least that a host is: an engine with its receivers, and a run on an idle line. Prints what memory it
// holds.
#include <fcntl.h>
#include <stdlib.h>

#include <fstream>
#include <iostream>
#include <string>

#include "gpsengine/engine/gpsengine.h"
#include "gpsengine/platform/application.h"
#include "gpsengine/platform/serial.h"

int main() {
  const int master = posix_openpt(O_RDWR | O_NOCTTY);
  if (master < 0 || grantpt(master) != 0 || unlockpt(master) != 0) return 1;
  CWinApp app("gpsengine-minimal");
  CWnd window;
  window.Create();
  app.SetMainWnd(&window);
  MapComPort(1, ptsname(master));
  CGPSEngine engine;
  CGPSReceiver* const receiver = engine.FindReceiver("Other");
  receiver->SetupReceiver(1, 0, 0.0, "", false);
  engine.SetReceiver(receiver);
  if (!engine.Start()) return 1;
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);)
    if (line.starts_with("VmRSS") || line.starts_with("RssAnon")) std::cout << line << '\n';
}
