#pragma once

#include <string>

#include "gpsengine/receiver/gpsreceiver.h"

#pragma GCC visibility push(default)

namespace gps {

/// Throws an Error that names the intervals of raw data that the model has, if this is none of them.
void CheckRawInterval(CGPSReceiver& receiver, double seconds);
/// Sets the interval in seconds, whatever the model's language has in their place. False if the model has no
/// such interval, or the port does not take it.
bool SetRawInterval(CGPSReceiver& receiver, double seconds);

/// Has the receiver send raw data, every `seconds`, or as often as it likes if that is 0. False if the port
/// does not take it.
bool StartRawData(CGPSReceiver& receiver, double seconds);
/// The interval at which the model has to send raw data so that those at `seconds` can be picked out of them:
/// that one, if the model has it.
double OutputIntervalFor(CGPSReceiver& receiver, double seconds);
/// Whether GSA and GSV sentences together keep the raw data of the model's language from being read.
bool IsHiddenBySentences(CGPSReceiver& receiver);
/// The command of that language that switches a sentence on or off.
CString SentenceSwitch(const char* sentence, bool on);

/// Why a log of a model's raw data has stayed empty, as far as that is the program's doing.
std::string WhyNoRawData(const std::string& model);

}  // namespace gps

#pragma GCC visibility pop
