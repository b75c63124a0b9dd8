#pragma once

#include <memory>
#include <vector>

#include "gpsengine/receiver/gpsreceiver.h"

/// Creates one receiver per model, in display order. The last one, "Other", is for any receiver that sends
/// plain NMEA.
std::vector<std::unique_ptr<CGPSReceiver>> MakeReceivers();
