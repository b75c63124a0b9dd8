#pragma once

#include <memory>
#include <span>
#include <string>
#include <vector>

#include "gpsengine/face/error.h"
#include "gpsengine/face/rehearse.h"
#include "gpsengine/receiver/gpsreceiver.h"

#pragma GCC visibility push(default)

namespace gps {

// The catalogue of the models, of which everything is found once.

/// A capability answer: what a model says it can do.
struct Answer {
  const char* operation;       ///< The name of the operation that gives it.
  const char* heading;         ///< For a column of a table.
  const char* meaning;         ///< In words.
  bool (*ask)(CGPSReceiver&);  ///< Asks a receiver for it.
};

/// All capability answers.
std::span<const Answer> Answers();

/// A receiver of every model, in the order of the library's list, to be asked what it is and can do. They
/// stay: a receiver that goes closes the port of whichever is running.
const std::vector<std::unique_ptr<CGPSReceiver>>& Models();
/// The one of this name, in any case of its letters. Throws an Error that lists the names there are.
CGPSReceiver& FindModel(const std::string& name);

/// An operation that a model has.
struct Offer {
  /// One call of it.
  struct Example {
    std::string call;       ///< As a user writes it.
    Transcript transcript;  ///< What that does.
  };

  const Operation* operation;     ///< Which one.
  std::vector<Example> examples;  ///< Those of the operation that the model takes.
};

/// The operations that a model has: those that its capability answers open, but for the empty ones. They are
/// rehearsed the first time, when no engine may run; "start" is the first of them.
const std::vector<Offer>& OffersOf(CGPSReceiver& receiver);
/// Throws an Error, ErrorCode::refused, if the model's capability answers do not open the operation. It lists
/// those that it has, and ends with `advice`.
void CheckOffer(const Operation& operation, CGPSReceiver& receiver, const std::string& advice = "");
/// The error of an operation whose body is empty all the same.
Error NothingSent(const Operation& operation, const Arguments& arguments, const std::string& model);
/// The operation on its arguments, ready to be called on a receiver of this one's model. Throws an Error if
/// the model does not have it or does not take these arguments.
Action PrepareOffered(const Operation& operation, const Arguments& arguments, CGPSReceiver& receiver);
/// How long the start of a run takes, in milliseconds; likewise.
long long StartTimeOf(CGPSReceiver& receiver);

}  // namespace gps

#pragma GCC visibility pop
