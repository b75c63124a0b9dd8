#include "gpsengine/drivers/receivers.h"

#include "gpsengine/drivers/ashtech.h"
#include "gpsengine/drivers/gsr2650lb.h"
#include "gpsengine/drivers/plain.h"
#include "gpsengine/drivers/sirf.h"
#include "gpsengine/drivers/sokkiaaxis3.h"
#include "gpsengine/drivers/starlink.h"

namespace {

template <class... Receivers>
std::vector<std::unique_ptr<CGPSReceiver>> MakeEach() {
  std::vector<std::unique_ptr<CGPSReceiver>> receivers;
  (receivers.push_back(std::make_unique<Receivers>()), ...);
  return receivers;
}

}  // namespace

std::vector<std::unique_ptr<CGPSReceiver>> MakeReceivers() {
  return MakeEach<CAshtech, CCSI, CCSImax, CGarmin, CHolux, CJavad, CLeica, COmnistar, CRacal, CSatloc, CSirf,
                  CSokkia, CSokkiaAxis3, Cgsr2650lb, CStarlink, CToughbookGPS01, CTrimble, CTrimblePocketGps,
                  COtherGps>();
}
