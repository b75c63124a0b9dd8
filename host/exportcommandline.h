#pragma once

#include "host/exports.h"

namespace CLI {
class App;
}

namespace host {

/// Adds the options of exports and filters to a command.
void AddExportOptions(CLI::App& command, ExportOptions& options);

}  // namespace host
