#include <string_view>

#include "host/cli/clidoc.h"
#include "host/cli/clihelp.h"

namespace host {

namespace {

/// A word for a shell, which reads it as it is.
std::string Quoted(const std::string& text) {
  std::string out = "'";
  for (const char c : text) out += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return out + "'";
}

/// How the values of an option are found.
enum class Values { none, words, files, devices, arguments, unknown };

// What stands for a device in the place of its name.
constexpr char kDeviceWords[] = "auto last";

Values ValuesOf(const CLI::Option& option, const KnownWords& known, std::vector<std::string>& words) {
  words = ChoicesOf(option);
  for (const std::string& key : {option.get_name(), TypeOf(option)}) {
    if (const auto found = known.find(key); words.empty() && found != known.end()) words = found->second;
  }
  if (IsFlag(option)) return Values::none;
  const std::string type = TypeOf(option);
  if (type == "DEVICE") return Values::devices;
  if (type == "ARGUMENT") return Values::arguments;
  if (!words.empty()) return Values::words;
  return type == "FILE" || type == "BASE" ? Values::files : Values::unknown;
}

std::string BashAction(Values values, const std::vector<std::string>& words) {
  switch (values) {
    case Values::words:
      return "_gpsengine_words " + Quoted(Join(words, "\n"));
    case Values::files:
      return "COMPREPLY=($(compgen -f -- \"$cur\"))";
    case Values::devices:
      return std::string("COMPREPLY=($(compgen -W '") + kDeviceWords +
             "' -- \"$cur\") $(compgen -G \"${cur:-/dev/tty}*\"))";
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
      return "_gpsengine_devices";
    case Values::arguments:
      return "_gpsengine_arguments";
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

/// Calls with each word of a command line that decides on its next argument, and what that may be. Their keys
/// are the words behind "ARGUMENT ".
template <class Take>
void VisitArguments(const KnownWords& known, Take take) {
  const std::string head = "ARGUMENT ";
  for (const auto& [key, words] : known) {
    if (key.starts_with(head)) take(key.substr(head.size()), words);
  }
}

}  // namespace

std::string BashCompletion(const CLI::App& app, const KnownWords& known) {
  std::vector<std::string> two_words;
  std::string values, options, arguments;
  VisitArguments(known, [&](const std::string& word, const std::vector<std::string>& words) {
    values += "    " + Quoted("command:" + word) + ") " + BashAction(Values::words, words) + "; return ;;\n";
  });
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
  std::string arguments;
  VisitArguments(known, [&](const std::string& word, const std::vector<std::string>& words) {
    arguments += "    " + Quoted(word) + ") compadd -- " + Join(words, " ") + " ;;\n";
  });
  return "#compdef gpsengine\n"
         "# Completion for zsh, printed by \"gpsengine completion zsh\".\n"
         "_gpsengine_devices() {\n"
         "  compadd -- " +
         std::string(kDeviceWords) +
         "\n"
         "  _files -g \"/dev/tty*\"\n"
         "}\n"
         "_gpsengine_arguments() {\n"
         "  case $words[CURRENT-1] in\n" +
         arguments +
         "  esac\n"
         "}\n"
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
