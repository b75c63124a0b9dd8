#pragma once

#include "host/exports/exports.h"

namespace CLI {
class App;
}

namespace host {

/// Adds the pace of the playback to a command that has --play.
void AddSpeedOption(CLI::App& command, double& speed);
/// Adds the options of what is written for people, and the reference system, to a command.
void AddDisplayOptions(CLI::App& command, Display& display);
/// Adds the options of exports and filters to a command.
void AddExportOptions(CLI::App& command, ExportOptions& options);

}  // namespace host
