#include "gpsengine/face/engineuse.h"

#include "gpsengine/face/error.h"
#include "gpsengine/platform/shared.h"
#include "gpsengine/receiver/gpsreceiver.h"
#include "gpsengine/receiver/workingstate.h"

namespace gps {

namespace {

CShared<int> g_uses = 0;

}  // namespace

EngineUse::EngineUse() {
  if (++g_uses > 1) {
    g_uses -= 1;
    throw Error(ErrorCode::busy,
                "another receiver or recording is in use in this process, which has room for one: end that "
                "one, or use a process for each");
  }
  CGPSReceiver::RecordLock()->Reset();  // of what the last one has left there
  // The profile is the program's, so that a baud rate which that has found serves here too.
  if (AfxGetApp() == nullptr) app_.emplace("gpsengine");
}

EngineUse::~EngineUse() {
  app_.reset();
  g_uses -= 1;
}

}  // namespace gps
