#pragma once

#include <memory>
#include <vector>

#include "gpsengine/receiver/gpsreceiver.h"

/// One new receiver of every model, in the order in which hosts list them. The last one, "Other", stands for
/// any receiver that speaks plain NMEA.
std::vector<std::unique_ptr<CGPSReceiver>> MakeReceivers();
