#pragma once

#include <CLI/App.hpp>
#include <string>
#include <vector>

namespace host {

/// What may stand at the cursor, a line each; behind a tab, what it means. The words are those behind the
/// program's name, the last of which is begun or empty. ":files" stands for the names of files.
std::string Completions(const CLI::App& app, std::vector<std::string> words);

// Scripts that have a shell ask the program for them: "gpsengine complete -- WORD...".
extern const char kBashCompletion[];
extern const char kZshCompletion[];

}  // namespace host
