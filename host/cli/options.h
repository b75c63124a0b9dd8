#pragma once

#include <CLI/CLI.hpp>
#include <map>
#include <string>

#include "host/cli/values.h"
#include "host/live.h"
#include "host/records/format.h"

namespace host {

/// Adds an option, or an argument, whose value has limits: AddValue(command, "--count", count, "N", ...).
template <class T>
CLI::Option* AddValue(CLI::App& command, const std::string& name, T& value, const std::string& type,
                      const CLI::Validator& limits, const std::string& description) {
  return command.add_option(name, value, description)->check(limits)->type_name(type);
}

/// An option that takes one of some names.
template <class Value, class Choice>
CLI::Option* AddChoice(CLI::App& command, const std::string& name, Value& value,
                       const std::map<std::string, Choice>& choices, const std::string& description) {
  return command
      .add_option_function<std::string>(
          name, [&value, choices](const std::string& word) { value = choices.at(word); }, description)
      ->check(CLI::IsMember(choices))
      ->type_name("CHOICE");
}

// Options that commands share, as they add them.

void AddModel(CLI::App& command, std::string& model);
void AddDuration(CLI::App& command, double& seconds, const std::string& description);
/// --port and --baud, whose words ChooseLine looks up.
void AddLine(CLI::App& command, LineChoice& line, const std::string& description);
/// How a receiver's data are read.
void AddReceiver(CLI::App& command, RunOptions& run);
/// Where a run that follows a receiver gets its bytes from, how they are read, what keeps them, and what is
/// written beside.
void AddLive(CLI::App& command, LiveOptions& live);
/// What a receiver is sent besides commands.
void AddCorrections(CLI::App& command, CorrectionOptions& corrections);
/// What is written beside a run, and what of it passes.
void AddBeside(CLI::App& command, ShownOptions& shown);
/// What is shown of a run's records.
void AddFormat(CLI::App& command, RunOptions& run, ShownOptions& shown,
               const std::map<std::string, Format>& formats, const std::string& description);
/// The format of a list: this one or json.
void AddListFormat(CLI::App& command, std::string& format, const std::string& plain);

}  // namespace host
