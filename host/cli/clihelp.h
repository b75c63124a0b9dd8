#pragma once

#include <CLI/App.hpp>
#include <string>
#include <vector>

namespace host {

// What the command line says of itself, for the documents that are made of it. Commands and options without a
// group are left out.

/// A command under the words that a user types for it: "config set".
struct NamedCommand {
  std::string name;
  const CLI::App* app;
};

std::vector<const CLI::App*> Commands(const CLI::App& app);
/// All commands, each before its own.
std::vector<NamedCommand> AllCommands(const CLI::App& app, const std::string& parent = "");
std::vector<const CLI::Option*> Options(const CLI::App& command);
bool IsFlag(const CLI::Option& option);
/// What an option's value is called, and after it what the help says of its limits.
std::string TypeOf(const CLI::Option& option);
std::string LimitsOf(const CLI::Option& option);
/// The values of an option that takes one of a few: "{add,none}" in the help.
std::vector<std::string> ChoicesOf(const CLI::Option& option);
std::string ValueName(const CLI::Option& option);
/// Its spellings, with their dashes.
std::vector<std::string> NamesOf(const CLI::Option& option);

/// The manual page, in the language of man, made out of what the command line says of itself, so that it has
/// what the help has.
std::string ManualPage(const CLI::App& app, const std::string& version);

/// What may stand at the cursor, a line each; after a tab, what it means. The words are those after the
/// program's name, the last of which is begun or empty. ":files" stands for the names of files.
std::string Completions(const CLI::App& app, std::vector<std::string> words);

// Scripts that have a shell ask the program for them: "gpsengine complete -- WORD...".
extern const char kBashCompletion[];
extern const char kZshCompletion[];

}  // namespace host
