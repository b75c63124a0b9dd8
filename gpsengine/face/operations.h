#pragma once

#include <functional>
#include <span>
#include <string>
#include <vector>

#include "gpsengine/receiver/gpsreceiver.h"

#pragma GCC visibility push(default)

namespace gps {

/// What an operation gives back.
enum class Result { none, yes, no };

/// An operation with its arguments.
using Action = std::function<Result(CGPSReceiver&)>;

/// What the user gives to an operation.
struct Arguments {
  std::vector<std::string> words;  ///< In order, without "--wait".
  bool wait = false;               ///< For the answer, which the reset alone does by itself.
};

/// These words, but for "--wait".
Arguments ArgumentsOf(const std::vector<std::string>& words);
/// The words of a text, likewise.
Arguments ReadArguments(const std::string& text);

class ArgumentReader;

/// One operation of the interface to receivers, under the same name for every make.
struct Operation {
  /// What it does.
  enum class Kind {
    sets,    ///< Writes commands.
    asks,    ///< Writes a request, which a report answers.
    starts,  ///< What the start of a run does by itself.
    ends     ///< What the end of a run does by itself: the line is closed after it.
  };

  const char* name;                    ///< As a user writes it.
  const char* arguments;               ///< For the user; empty for none.
  const char* summary;                 ///< In words.
  Kind kind;                           ///< What it does.
  const char* answer;                  ///< The capability answer that opens it; null: every model has it.
  bool (*is_open)(CGPSReceiver&);      ///< That answer; null likewise.
  Action (*prepare)(ArgumentReader&);  ///< Reads its arguments; see Prepare.
  const char* examples;                ///< See ExamplesOf: a "|" between calls; null for none.
  /// Throws an Error if a receiver does not take the arguments; null: every model takes the same.
  void (*check)(CGPSReceiver&, const Arguments&) = nullptr;
};

/// All operations, in the order in which they are listed.
std::span<const Operation> Operations();
/// Throws an Error that lists the names there are.
const Operation& FindOperation(const std::string& name);
/// Calls to show it with, by their arguments. Not every model takes all of them.
std::vector<Arguments> ExamplesOf(const Operation& operation);
/// Whether the model's capability answers open it.
bool IsOffered(const Operation& operation, CGPSReceiver& receiver);
/// Takes the wait out of the arguments, unless the operation waits by itself, as the reset does. Whether
/// there was one.
bool TakeWait(const Operation& operation, Arguments& arguments);
/// The operation on its arguments, ready to be called. Throws an Error if they are not what it takes.
Action Prepare(const Operation& operation, const Arguments& arguments);
/// The same for receivers of this one's model, which may not take all that others do.
Action Prepare(const Operation& operation, const Arguments& arguments, CGPSReceiver& receiver);
/// Throws an Error, ErrorCode::refused, if the result says that it did not work.
void CheckResult(const Operation& operation, const Arguments& arguments, Result result);
/// The operation and its arguments as a user writes them.
std::string CallText(const Operation& operation, const Arguments& arguments);

}  // namespace gps

#pragma GCC visibility pop
