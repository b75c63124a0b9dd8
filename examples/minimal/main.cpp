// The smallest host: prints positions of a receiver and ends after ten.
//   minimal /dev/ttyUSB0 Trimble
#include <cstdio>
#include <numbers>

#include "gpsengine/engine/gpsengine.h"
#include "gpsengine/platform/application.h"

// The library posts what it finds out to the application's main window.
class Window : public CGPSWindow {
  void OnNewData(const CGPSData& data) override {
    if (!data.m_bPositionValid) return;  // a record of something else, such as satellites
    constexpr double kDegree = std::numbers::pi / 180.0;
    std::printf("%.7f %.7f %.1f m\n", data.m_dLatitude / kDegree, data.m_dLongitude / kDegree,
                data.m_dAltitude);
    if (++m_nPositions == 10) PostQuitMessage();
  }

  int m_nPositions = 0;
};

int main(int argc, char** argv) {
  if (argc != 3) return std::fprintf(stderr, "usage: minimal DEVICE MODEL\n"), 2;
  CWinApp app("minimal");
  Window window;
  window.Create();
  app.SetMainWnd(&window);

  CGPSEngine engine;
  MapComPort(1, argv[1]);                                 // port 1 is this device from now on
  CGPSReceiver* receiver = engine.FindReceiver(argv[2]);  // "Other" if there is no such model
  receiver->SetupReceiver(1, 0, 0.0, "", false);          // height as it comes, no antenna height
  engine.SetReceiver(receiver);
  if (!engine.Start()) return std::fprintf(stderr, "%s\n", engine.GetLastErrorString().ToUtf8().c_str()), 1;
  app.Run();  // until PostQuitMessage; the engine stops as it goes out of scope
}
