#pragma once

#include <span>
#include <string>

#include "gpsengine/engine/gpsengine.h"

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

/// The receiver of this name, in any case of its letters. Throws a Failure that lists the names there are.
CGPSReceiver& SelectModel(CGPSEngine& engine, const std::string& name);

/// The models in the order of the library's list, with their baud rates and capability answers: a table for
/// people.
std::string ModelsAsTable(const CGPSEngine& engine);
/// The same as a JSON array, each answer under its operation's name.
std::string ModelsAsJson(const CGPSEngine& engine);
/// One model with the operations that it has, as a text for people and as a JSON object.
std::string ModelAsText(CGPSReceiver& receiver);
std::string ModelAsJson(CGPSReceiver& receiver);

}  // namespace host
