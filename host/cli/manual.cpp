#include <algorithm>
#include <cctype>
#include <string_view>

#include "gpsengine/face/words.h"
#include "host/cli/clihelp.h"
#include "host/run/face.h"

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

std::string SortedNames(const std::set<CLI::Option*>& options) {
  std::vector<std::string> names;
  for (const CLI::Option* option : options) names.push_back(option->get_name());
  std::sort(names.begin(), names.end());
  return Join(names);
}

// What man would take for its own language becomes text.
std::string Roff(const std::string& text) {
  std::string out;
  for (const char c : text) {
    const bool begins_line = out.empty() || out.back() == '\n';
    if (begins_line && (c == '.' || c == '\'')) out += "\\&";
    if (c == '-' || c == '\\') out += '\\';
    out += c == '\\' ? 'e' : c;
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

/// An entry of a list: a term and what it means.
std::string Item(const std::string& term, const std::string& meaning) {
  return ".TP\n" + term + '\n' + Roff(meaning) + '\n';
}

std::string ItemOf(const CLI::Option& option) {
  std::vector<std::string> names = NamesOf(option);
  for (std::string& name : names) name = Bold(name);
  const std::string value = IsFlag(option) ? "" : Italic(ValueName(option));
  std::string text = Sentence(option.get_description());
  if (!IsFlag(option) && ChoicesOf(option).empty() && !LimitsOf(option).empty())
    text += " Takes numbers " + LimitsOf(option) + ".";
  if (!IsFlag(option) && !option.get_default_str().empty())
    text += " Without it: " + option.get_default_str() + ".";
  if (!option.get_needs().empty()) text += " Goes with " + SortedNames(option.get_needs()) + ".";
  if (!option.get_excludes().empty()) text += " Not with " + SortedNames(option.get_excludes()) + ".";
  const char* const blank = names.empty() || value.empty() ? "" : " ";
  return Item(Join(names) + blank + value, text);
}

void AppendCommand(std::string& page, const std::string& name, const CLI::App& command) {
  std::string head = name;
  for (const CLI::Option* option : Options(command)) {
    if (!option->get_positional()) continue;
    head += option->get_required() ? ' ' + ValueName(*option) : " [" + ValueName(*option) + ']';
  }
  page += ".SS " + Roff(head) + '\n' + Roff(Sentence(command.get_description())) + '\n';
  for (const CLI::Option* option : Options(command)) {
    if (option->get_name() != "--help") page += ItemOf(*option);
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
  for (const NamedCommand& command : AllCommands(app)) AppendCommand(page, command.name, *command.app);
  page += ".SH EXIT STATUS\n";
  for (const auto& row : kExitCodes) page += Item(Bold(row.code), row.meaning);
  page += ".SH FILES\n";
  for (const auto& row : kFiles) page += Item(Italic(row.path), row.meaning);
  return page;
}

}  // namespace host
