#pragma once

#include <string>

#include "gpsengine/receiver/gpsreceiver.h"

namespace host {

/// The models with their baud rates and capability answers: a table for people.
std::string ModelsAsTable();
/// The same as a JSON array, each answer under its operation's name.
std::string ModelsAsJson();
/// One model with the operations that it has, as a text for people and as a JSON object.
std::string ModelAsText(CGPSReceiver& receiver);
std::string ModelAsJson(CGPSReceiver& receiver);

/// docs/receivers.md: for each model its capability answers and, for each operation that they open, the lines
/// it writes and the times it waits. No engine may run meanwhile.
std::string ReceiversDoc();

}  // namespace host
