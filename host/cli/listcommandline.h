#pragma once

#include <CLI/App.hpp>
#include <functional>
#include <string>

#include "host/run/failure.h"
#include "host/run/interrupt.h"
#include "host/run/output.h"

namespace host {

/// What a command does once the command line is understood.
using Job = std::function<ExitCode(const Interrupt&, Output&)>;

/// The version of the program, and what it was built with that it could do without.
std::string VersionText();

// The commands that read no receiver. Each adds itself to the application.
void AddModels(CLI::App& app, Job& job);
void AddSimulate(CLI::App& app, Job& job);
void AddPorts(CLI::App& app, Job& job);
void AddConfig(CLI::App& app, Job& job);
void AddReceiversDoc(CLI::App& app, Job& job);
/// Manual, completions, help and version. Behind all others, which they tell of.
void AddDocuments(CLI::App& app, Job& job);

}  // namespace host
