#include "host/cli/clidoc.h"

#include <algorithm>
#include <cctype>
#include <string_view>

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

std::vector<const CLI::App*> Commands(const CLI::App& app) {
  return app.get_subcommands([](const CLI::App* command) { return !command->get_group().empty(); });
}

/// A command under the words that a user types for it: "config set".
struct Command {
  std::string name;
  const CLI::App* app;
};

/// All commands, each ahead of its own.
std::vector<Command> AllCommands(const CLI::App& app, const std::string& parent = "") {
  std::vector<Command> all;
  for (const CLI::App* command : Commands(app)) {
    const std::string name = parent + command->get_name();
    all.push_back({name, command});
    for (const Command& nested : AllCommands(*command, name + ' ')) all.push_back(nested);
  }
  return all;
}

std::vector<std::string> NamesOfCommands(const CLI::App& app) {
  std::vector<std::string> names;
  for (const CLI::App* command : Commands(app)) names.push_back(command->get_name());
  return names;
}

std::vector<const CLI::Option*> Options(const CLI::App& command) {
  return command.get_options([](const CLI::Option* option) { return !option->get_group().empty(); });
}

bool IsFlag(const CLI::Option& option) {
  return option.get_items_expected_max() == 0;
}

/// What an option's value is called, and behind it what the help says of its limits.
std::string TypeOf(const CLI::Option& option) {
  const std::string type = option.get_type_name();
  return type.substr(0, type.find(':'));
}

std::string LimitsOf(const CLI::Option& option) {
  const std::string type = option.get_type_name();
  const auto colon = type.find(':');
  return colon == std::string::npos ? "" : type.substr(colon + 1);
}

/// The values of an option that takes one of a few: "{add,none}" in the help.
std::vector<std::string> ChoicesOf(const CLI::Option& option) {
  std::vector<std::string> choices;
  const std::string limits = LimitsOf(option);
  if (!limits.starts_with('{') || !limits.ends_with('}')) return choices;
  for (std::size_t begin = 1; begin < limits.size();) {
    const std::size_t end = limits.find_first_of(",}", begin);
    choices.push_back(limits.substr(begin, end - begin));
    begin = end + 1;
  }
  return choices;
}

std::string Join(const std::vector<std::string>& words, std::string_view separator) {
  std::string text;
  for (const std::string& word : words) {
    if (!text.empty()) text += separator;
    text += word;
  }
  return text;
}

std::string ValueName(const CLI::Option& option) {
  const auto choices = ChoicesOf(option);
  return choices.empty() ? TypeOf(option) : Join(choices, "|");
}

std::vector<std::string> NamesOf(const CLI::Option& option) {
  std::vector<std::string> names;
  for (const std::string& name : option.get_snames()) names.push_back("-" + name);
  for (const std::string& name : option.get_lnames()) names.push_back("--" + name);
  return names;
}

std::vector<std::string> NamesOf(const std::set<CLI::Option*>& options) {
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
  if (const auto needed = NamesOf(option.get_needs()); !needed.empty())
    text += " Goes with " + Join(needed, ", ") + ".";
  if (const auto excluded = NamesOf(option.get_excludes()); !excluded.empty())
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

/// A word for a shell, which reads it as it is.
std::string Quoted(const std::string& text) {
  std::string out = "'";
  for (const char c : text) out += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return out + "'";
}

/// How the values of an option are found.
enum class Values { none, words, files, devices, unknown };

Values ValuesOf(const CLI::Option& option, const KnownWords& known, std::vector<std::string>& words) {
  words = ChoicesOf(option);
  for (const std::string& key : {option.get_name(), TypeOf(option)}) {
    if (const auto found = known.find(key); words.empty() && found != known.end()) words = found->second;
  }
  if (IsFlag(option)) return Values::none;
  if (!words.empty()) return Values::words;
  const std::string type = TypeOf(option);
  if (type == "DEVICE") return Values::devices;
  return type == "FILE" || type == "BASE" ? Values::files : Values::unknown;
}

std::string BashAction(Values values, const std::vector<std::string>& words) {
  switch (values) {
    case Values::words:
      return "_gpsengine_words " + Quoted(Join(words, "\n"));
    case Values::files:
      return "COMPREPLY=($(compgen -f -- \"$cur\"))";
    case Values::devices:
      return "COMPREPLY=($(compgen -G \"${cur:-/dev/tty}*\"))";
    default:
      return ":";
  }
}

// A value in a list of _arguments has its blanks, colons and parentheses escaped.
std::string ZshEscaped(const std::string& text, std::string_view specials) {
  std::string out;
  for (const char c : text) {
    if (specials.find(c) != std::string_view::npos) out += '\\';
    out += c;
  }
  return out;
}

std::string ZshAction(Values values, const std::vector<std::string>& words) {
  std::vector<std::string> escaped;
  for (const std::string& word : words) escaped.push_back(ZshEscaped(word, " :()\\"));
  switch (values) {
    case Values::words:
      return '(' + Join(escaped, " ") + ')';
    case Values::files:
      return "_files";
    case Values::devices:
      return "_files -g \"/dev/tty*\"";
    default:
      return " ";
  }
}

void AppendZshOption(std::string& script, const CLI::Option& option, const KnownWords& known) {
  std::vector<std::string> words;
  const std::string action = ZshAction(ValuesOf(option, known, words), words);
  const std::string value = ZshEscaped(ValueName(option), ":") + ':' + action;
  if (option.get_positional()) {
    const bool repeats = option.get_expected_max() > 1;
    script += " \\\n        " + Quoted((repeats ? "*:" : ":") + value);
    return;
  }
  const std::string help = '[' + ZshEscaped(option.get_description(), "[]:\\") + ']';
  for (const std::string& name : NamesOf(option))
    script += " \\\n        " + Quoted(name + help + (IsFlag(option) ? "" : ':' + value));
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

std::string BashCompletion(const CLI::App& app, const KnownWords& known) {
  std::vector<std::string> two_words;
  std::string values, options, arguments;
  for (const auto& [name, command] : AllCommands(app)) {
    if (name.find(' ') != std::string::npos) two_words.push_back(Quoted(name));
    std::vector<std::string> spellings;
    std::string argument;
    if (const auto nested = NamesOfCommands(*command); !nested.empty())
      argument = BashAction(Values::words, nested);
    for (const CLI::Option* option : Options(*command)) {
      std::vector<std::string> words;
      const Values kind = ValuesOf(*option, known, words);
      const std::string action = BashAction(kind, words);
      for (const std::string& spelling : NamesOf(*option)) {
        spellings.push_back(spelling);
        if (kind != Values::none)
          values += "    " + Quoted(name + ':' + spelling) + ") " + action + "; return ;;\n";
      }
      if (option->get_positional() && argument.empty()) argument = action;
    }
    options += "      " + Quoted(name) + ") " + BashAction(Values::words, spellings) + " ;;\n";
    if (!argument.empty()) arguments += "    " + Quoted(name) + ") " + argument + " ;;\n";
  }
  return "# Completion for bash, printed by \"gpsengine completion bash\".\n"
         "_gpsengine_words() {\n"
         "  local IFS=$'\\n'\n"
         "  COMPREPLY=($(compgen -W \"$1\" -- \"$cur\"))\n"
         "  COMPREPLY=(\"${COMPREPLY[@]// /\\\\ }\")\n"
         "}\n"
         "_gpsengine() {\n"
         "  local cur=${COMP_WORDS[COMP_CWORD]//\\\\/} prev=${COMP_WORDS[COMP_CWORD - 1]} command=\n"
         "  COMPREPLY=()\n"
         "  ((COMP_CWORD > 1)) && command=${COMP_WORDS[1]}\n" +
         (two_words.empty() ? ""
                            : "  ((COMP_CWORD > 2)) && case \"$command ${COMP_WORDS[2]}\" in\n    " +
                                  Join(two_words, " | ") +
                                  ") command+=\" ${COMP_WORDS[2]}\" ;;\n"
                                  "  esac\n") +
         "  case $command:$prev in\n" + values +
         "  esac\n"
         "  if [[ $cur == -* ]]; then\n"
         "    case $command in\n"
         "      '') _gpsengine_words $'--help\\n--version' ;;\n" +
         options +
         "    esac\n"
         "    return\n"
         "  fi\n"
         "  case $command in\n"
         "    '') " +
         BashAction(Values::words, NamesOfCommands(app)) + " ;;\n" + arguments +
         "  esac\n"
         "}\n"
         "complete -F _gpsengine gpsengine\n";
}

std::string ZshCompletion(const CLI::App& app, const KnownWords& known) {
  std::vector<std::string> two_words;
  std::string names, commands;
  for (const CLI::App* command : Commands(app)) {
    const std::string text = command->get_name() + ':' + ZshEscaped(command->get_description(), ":");
    names += "    " + Quoted(text) + '\n';
  }
  for (const auto& [name, command] : AllCommands(app)) {
    if (name.find(' ') != std::string::npos) two_words.push_back(Quoted(name));
    commands += "    " + Quoted(name) + ")\n      _arguments";
    for (const CLI::Option* option : Options(*command)) AppendZshOption(commands, *option, known);
    if (const auto nested = NamesOfCommands(*command); !nested.empty())
      commands += " \\\n        " + Quoted(":command:" + ZshAction(Values::words, nested));
    commands += " ;;\n";
  }
  return "#compdef gpsengine\n"
         "# Completion for zsh, printed by \"gpsengine completion zsh\".\n"
         "_gpsengine() {\n"
         "  local curcontext=$curcontext state line\n"
         "  typeset -A opt_args\n"
         "  local -a commands=(\n" +
         names +
         "  )\n"
         "  _arguments -C '(- *)--help[What the program takes]' '(- *)--version[The version]' \\\n"
         "    '1:command:->command' '*::argument:->argument'\n"
         "  case $state in\n"
         "    command) _describe command commands; return ;;\n"
         "    argument) ;;\n"
         "    *) return ;;\n"
         "  esac\n" +
         (two_words.empty()
              ? ""
              : "  ((CURRENT > 2)) && case \"$words[1] $words[2]\" in\n    " + Join(two_words, " | ") +
                    ") words=(\"$words[1] $words[2]\" \"${(@)words[3,-1]}\"); ((CURRENT--)) ;;\n"
                    "  esac\n") +
         "  case $words[1] in\n" + commands +
         "  esac\n"
         "}\n"
         "if [ \"$funcstack[1]\" = _gpsengine ]; then _gpsengine \"$@\"; else compdef _gpsengine gpsengine; "
         "fi\n";
}

}  // namespace host
