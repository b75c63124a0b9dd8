#pragma once

#include <CLI/App.hpp>
#include <map>
#include <string>
#include <vector>

namespace host {

/// Values to offer for an option or an argument, by its long name ("--model") or by what it is called in the
/// help ("OPERATION"); for what follows an operation, by "ARGUMENT set-dgps".
using KnownWords = std::map<std::string, std::vector<std::string>>;

// The program's documents, made out of what the command line says of itself, so that they have what the help
// has. Commands without a group are left out, as the help leaves them out.

/// The manual page, in the language of man.
std::string ManualPage(const CLI::App& app, const std::string& version);
/// A script for bash that completes commands, options and their values.
std::string BashCompletion(const CLI::App& app, const KnownWords& words);
/// The same for zsh.
std::string ZshCompletion(const CLI::App& app, const KnownWords& words);

}  // namespace host
