#pragma once

#include <memory>
#include <span>
#include <string>
#include <vector>

#include "gpsengine/receiver/gpsreceiver.h"

namespace host {

/// A capability answer: what a model says it can do.
struct Answer {
  const char* operation;  ///< The name of the operation that gives it.
  const char* heading;    ///< For a column of a table.
  const char* meaning;    ///< In words.
  bool (*ask)(CGPSReceiver&);
};

/// All capability answers.
std::span<const Answer> Answers();

/// A receiver of every model, in the order of the library's list, to be asked what it is and can do. They are
/// made once and stay: a receiver that goes closes the port of whichever is running.
const std::vector<std::unique_ptr<CGPSReceiver>>& Models();
/// The one of this name, in any case of its letters. Throws a Failure that lists the names there are.
CGPSReceiver& FindModel(const std::string& name);

/// The models with their baud rates and capability answers: a table for
/// people.
std::string ModelsAsTable();
/// The same as a JSON array, each answer under its operation's name.
std::string ModelsAsJson();
/// One model with the operations that it has, as a text for people and as a JSON object.
std::string ModelAsText(CGPSReceiver& receiver);
std::string ModelAsJson(CGPSReceiver& receiver);

}  // namespace host
