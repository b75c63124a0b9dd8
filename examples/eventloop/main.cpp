// A host that has an event loop of its own: poll() here, but select, epoll, libuv or a toolkit's loop do the
// same. It shows the kinds of record as they come, until standard input says "q" or ends.
//   eventloop /dev/ttyUSB0 Trimble
#include <poll.h>
#include <unistd.h>

#include <cstdio>

#include "gpsengine/engine/gpsengine.h"
#include "gpsengine/platform/application.h"

class Window : public CGPSWindow {
  void OnNewData(const CGPSData& data) override {
    if (data.m_bPositionValid) std::printf("position, %.0f s after midnight\n", data.m_dTimeOfDay);
    if (data.m_bVelocityValid) std::printf("velocity, %.1f m/s\n", data.m_dSpeed);
    if (data.m_bSatellitesComplete) std::printf("%d satellites in view\n", data.m_nSatellitesInView);
    std::fflush(stdout);
  }
};

// False at "q" and at the end of standard input.
bool GoOnAfterInput() {
  char text[256];
  const ssize_t length = read(STDIN_FILENO, text, sizeof text);
  return length > 0 && text[0] != 'q';
}

int main(int argc, char** argv) {
  if (argc != 3) return std::fprintf(stderr, "usage: eventloop DEVICE MODEL\n"), 2;
  CWinApp app("eventloop");
  Window window;
  window.Create();
  app.SetMainWnd(&window);

  CGPSEngine engine;
  MapComPort(1, argv[1]);
  CGPSReceiver* receiver = engine.FindReceiver(argv[2]);
  receiver->SetupReceiver(1, 0, 0.0, "", false);
  engine.SetReceiver(receiver);
  if (!engine.Start()) return std::fprintf(stderr, "%s\n", engine.GetLastErrorString().ToUtf8().c_str()), 1;

  // Readable while messages wait for this thread. Whatever else the host waits on stands beside it.
  pollfd descriptors[] = {{GetQueueDescriptor(), POLLIN, 0}, {STDIN_FILENO, POLLIN, 0}};
  while (poll(descriptors, 2, -1) > 0) {
    if (descriptors[0].revents != 0) window.Drain();  // to the end, or the descriptor stays readable
    if (descriptors[1].revents != 0 && !GoOnAfterInput()) break;
  }
}
