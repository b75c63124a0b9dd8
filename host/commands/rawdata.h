#pragma once

#include <string>

#include "gpsengine/receiver/gpsreceiver.h"

namespace host {

/// Throws a Failure that names the intervals of raw data that the model has, if this is none of them.
void CheckRawInterval(CGPSReceiver& receiver, double seconds);
/// Sets the interval in seconds, whatever the model's language has in their place. False if the model has no
/// such interval, or the port does not take it.
bool SetRawInterval(CGPSReceiver& receiver, double seconds);

/// Why a log of a model's raw data has stayed empty, as far as that is the program's doing.
std::string WhyNoRawData(const std::string& model);

}  // namespace host
