#pragma once

#include <CLI/App.hpp>
#include <functional>
#include <memory>
#include <string>

#include "host/line/portsearch.h"
#include "host/run/failure.h"
#include "host/run/interrupt.h"
#include "host/run/output.h"

namespace host {

/// What a command does once the command line is understood.
using Job = std::function<ExitCode(const Interrupt&, Output&)>;

// The commands. Each adds itself to the application; the one that the user names sets the job.
void AddModels(CLI::App& app, Job& job);
void AddMonitor(CLI::App& app, Job& job);
void AddServe(CLI::App& app, Job& job);
void AddDecode(CLI::App& app, Job& job);
void AddCommand(CLI::App& app, Job& job);
void AddSimulate(CLI::App& app, Job& job);
void AddPorts(CLI::App& app, Job& job);
void AddNtrip(CLI::App& app, Job& job);
void AddConfig(CLI::App& app, Job& job);
/// Manual, completions, help and version. After all others, which they tell of.
void AddDocuments(CLI::App& app, Job& job);

/// The version of the program, and what it was built with that it could do without.
std::string VersionText();

/// A job that prints a text.
inline Job Prints(std::function<std::string()> text) {
  return [=](const Interrupt&, Output& output) {
    output.Text() += text();
    output.Flush();
    return ExitCode::done;
  };
}

template <class Options>
using Performer = ExitCode (*)(const Options&, const Interrupt&, Output&);

template <class Options>
Job JobOf(std::shared_ptr<Options> options, Performer<Options> perform) {
  return [=](const Interrupt& interrupt, Output& output) { return perform(*options, interrupt, output); };
}

/// The same on a line, which is looked for first if it has to be.
template <class Options>
Job OnLine(CLI::App& command, std::shared_ptr<Options> options, Performer<Options> perform) {
  return [=, model = command.get_option("--model")](const Interrupt& interrupt, Output& output) {
    LineChoice& line = *options;
    line = ChooseLine(line, model->count() > 0, interrupt);
    return perform(*options, interrupt, output);
  };
}

}  // namespace host
