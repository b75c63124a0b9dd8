#include "host/cli/clidoc.h"

#include <algorithm>
#include <cctype>
#include <string_view>

#include "host/cli/clihelp.h"

namespace host {

namespace {

constexpr struct {
  const char* code;
  const char* meaning;
} kExitCodes[] = {
    {"0", "Done; also when nobody reads the output any more."},
    {"1", "The job failed: a file cannot be read or written, a log stayed empty."},
    {"2", "Wrong usage."},
    {"3", "The port cannot be opened."},
    {"4", "No data, or nothing that was understood, in the time given or in a recording."},
    {"5", "The port was lost."},
    {"6", "A command was refused, did not work, or was not answered in time."},
    {"130", "Interrupted."},
};

constexpr struct {
  const char* path;
  const char* meaning;
} kFiles[] = {
    {"~/.config/gpsengine/gpsengine.ini",
     "What is remembered, such as the baud rates that --baud gave and that worked."},
    {"GPSStatus, beside the program",
     "Lines such as 4,UDF_SIGNAL_RTK_CODE: what a quality indicator means, in place of the built-in "
     "meaning."},
};

std::vector<std::string> SortedNames(const std::set<CLI::Option*>& options) {
  std::vector<std::string> names;
  for (const CLI::Option* option : options) names.push_back(option->get_name());
  std::sort(names.begin(), names.end());
  return names;
}

// What man would take for its own language becomes text.
std::string Roff(const std::string& text) {
  std::string out;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool begins_line = i == 0 || text[i - 1] == '\n';
    if (begins_line && (text[i] == '.' || text[i] == '\'')) out += "\\&";
    if (text[i] == '-') {
      out += "\\-";
    } else if (text[i] == '\\') {
      out += "\\e";
    } else {
      out += text[i];
    }
  }
  return out;
}

std::string Bold(const std::string& text) {
  return "\\fB" + Roff(text) + "\\fR";
}

std::string Italic(const std::string& text) {
  return "\\fI" + Roff(text) + "\\fR";
}

/// "Description", as a sentence.
std::string Sentence(std::string text) {
  if (!text.empty() && std::string_view(".:!?").find(text.back()) == std::string_view::npos) text += '.';
  return text;
}

void AppendOption(std::string& page, const CLI::Option& option) {
  std::string head;
  for (const std::string& name : NamesOf(option)) head += (head.empty() ? "" : ", ") + Bold(name);
  if (option.get_positional()) head = Italic(ValueName(option));
  if (!option.get_positional() && !IsFlag(option)) head += ' ' + Italic(ValueName(option));
  std::string text = Sentence(option.get_description());
  if (!IsFlag(option) && ChoicesOf(option).empty() && !LimitsOf(option).empty())
    text += " Takes numbers " + LimitsOf(option) + ".";
  if (!IsFlag(option) && !option.get_default_str().empty())
    text += " Without it: " + option.get_default_str() + ".";
  if (const auto needed = SortedNames(option.get_needs()); !needed.empty())
    text += " Goes with " + Join(needed, ", ") + ".";
  if (const auto excluded = SortedNames(option.get_excludes()); !excluded.empty())
    text += " Not with " + Join(excluded, ", ") + ".";
  page += ".TP\n" + head + '\n' + Roff(text) + '\n';
}

void AppendCommand(std::string& page, const std::string& name, const CLI::App& command) {
  std::string head = name;
  for (const CLI::Option* option : Options(command)) {
    if (!option->get_positional()) continue;
    head += option->get_required() ? ' ' + ValueName(*option) : " [" + ValueName(*option) + ']';
  }
  page += ".SS " + Roff(head) + '\n' + Roff(Sentence(command.get_description())) + '\n';
  for (const CLI::Option* option : Options(command)) {
    if (option->get_name() != "--help") AppendOption(page, *option);
  }
  // A command within a command takes the other's examples over, unless it has its own.
  const CLI::App* parent = command.get_parent();
  if (!command.get_footer().empty() && (parent == nullptr || parent->get_footer() != command.get_footer()))
    page += ".PP\n.EX\n" + Roff(command.get_footer()) + "\n.EE\n";
}

}  // namespace

std::string ManualPage(const CLI::App& app, const std::string& version) {
  std::string page = ".\\\" Printed by \"gpsengine man\".\n";
  page += ".TH GPSENGINE 1 \"\" \"" + app.get_name() + ' ' + version + "\" \"User Commands\"\n";
  std::string summary = app.get_description();
  if (!summary.empty()) summary[0] = static_cast<char>(std::tolower(static_cast<unsigned char>(summary[0])));
  page += ".SH NAME\n" + app.get_name() + " \\- " + Roff(summary) + '\n';
  page += ".SH SYNOPSIS\n";
  page += Bold(app.get_name()) + ' ' + Italic("COMMAND") + " [" + Italic("OPTION") + "]... [" +
          Italic("ARGUMENT") + "]...\n";
  for (const char* option : {"--help", "--version"})
    page += ".br\n" + Bold(app.get_name()) + ' ' + Bold(option) + '\n';
  page += ".SH COMMANDS\nEach takes " + Bold("--help") + " too.\n";
  for (const Command& command : AllCommands(app)) AppendCommand(page, command.name, *command.app);
  page += ".SH EXIT STATUS\n";
  for (const auto& row : kExitCodes) page += ".TP\n" + Bold(row.code) + '\n' + Roff(row.meaning) + '\n';
  page += ".SH FILES\n";
  for (const auto& row : kFiles) page += ".TP\n" + Italic(row.path) + '\n' + Roff(row.meaning) + '\n';
  return page;
}

}  // namespace host
