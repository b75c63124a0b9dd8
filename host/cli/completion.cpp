#include <glob.h>

#include <algorithm>
#include <set>
#include <sstream>

#include "gpsengine/engine/gpsengine.h"
#include "gpsengine/face/models.h"
#include "gpsengine/face/operations.h"
#include "gpsengine/face/words.h"
#include "host/cli/clihelp.h"
#include "host/run/face.h"

namespace host {

namespace {

// In the place of words: the shell knows its files best, with "~" and its variables.
constexpr char kFilesOfShell[] = ":files";

// Words that may stand at the cursor; after a tab, what one means.
using Words = std::vector<std::string>;

/// What a command line up to the cursor has come to.
struct Place {
  const CLI::App* command = nullptr;
  const CLI::Option* option = nullptr;  // whose value comes next
  std::set<const CLI::Option*> given;
  std::size_t arguments = 0;
  std::string previous;
};

Place PlaceBehind(const CLI::App& app, const Words& words) {
  Place place;
  place.command = &app;
  for (const std::string& word : words) {
    const auto commands = Commands(*place.command);
    const auto nested = std::find_if(commands.begin(), commands.end(),
                                     [&](const CLI::App* command) { return command->get_name() == word; });
    if (place.option != nullptr) {
      place.option = nullptr;
    } else if (word.starts_with('-')) {
      const CLI::Option* option = place.command->get_option_no_throw(word);
      if (option != nullptr && !IsFlag(*option)) place.option = option;
      place.given.insert(option);
    } else if (nested != commands.end()) {
      place.command = *nested;
    } else {
      ++place.arguments;
    }
    place.previous = word;
  }
  return place;
}

/// What stands for a port, and the devices themselves.
Words PortWords(const std::string& begun) {
  Words words = {"auto\tlook for a receiver",
                 "last\tthe port and model of the last run",
                 "tcp://\tbytes over the network",
                 "rfc2217://\ta serial line over telnet",
                 "udp://\tdatagrams sent here",
                 "gpsd://\ta gpsd server's raw stream",
                 "-\tstandard input"};
  glob_t paths{};
  glob(((begun.empty() ? "/dev/tty" : begun) + '*').c_str(), 0, nullptr, &paths);
  words.insert(words.end(), paths.gl_pathv, paths.gl_pathv + paths.gl_pathc);
  globfree(&paths);
  return words;
}

/// The words that an operation takes as they are: "auto" of "auto | KHZ [BITRATE]".
Words ArgumentWords(const std::string& name) {
  Words words;
  for (const Operation& operation : Operations()) {
    std::istringstream alternatives(operation.name == name ? operation.arguments : "");
    for (std::string word; std::getline(alternatives, word, '|');) {
      std::erase(word, ' ');
      const bool is_word = word.find_first_not_of("abcdefghijklmnopqrstuvwxyz") == std::string::npos;
      if (is_word && !word.empty()) words.push_back(word);
    }
  }
  return words;
}

Words ValuesOf(const CLI::Option& option, const std::string& previous, const std::string& begun) {
  const std::string type = TypeOf(option);
  Words words = ChoicesOf(option);
  if (!words.empty()) return words;
  if (type == "FILE" || type == "BASE" || type == "SOURCE") return {kFilesOfShell};
  if (type == "DEVICE|ADDRESS") return PortWords(begun);
  if (type == "ARGUMENT") return ArgumentWords(previous);
  if (type == "OPERATION") {
    for (const Operation& operation : Operations())
      words.push_back(std::string(operation.name) + '\t' + operation.summary);
  }
  if (type == "MODEL" || type == "NAME" || option.get_name() == "--model") {
    for (const auto& receiver : Models()) words.push_back(receiver->GetName().ToUtf8());
  }
  return words;
}

/// The commands and arguments that may come next.
Words ArgumentsAt(const Place& place, const std::string& begun) {
  Words words;
  for (const CLI::App* command : Commands(*place.command))
    words.push_back(command->get_name() + '\t' + command->get_description());
  std::size_t position = 0;
  for (const CLI::Option* option : Options(*place.command)) {
    if (!option->get_positional()) continue;
    const bool repeats = option->get_expected_max() > 1;
    if (position == place.arguments || (repeats && position < place.arguments))
      return ValuesOf(*option, place.previous, begun);
    ++position;
  }
  return words;
}

Words OptionsAt(const Place& place) {
  Words words;
  for (const CLI::Option* option : Options(*place.command)) {
    if (place.given.contains(option)) continue;
    for (const std::string& name : NamesOf(*option)) words.push_back(name + '\t' + option->get_description());
  }
  return words;
}

}  // namespace

const char kBashCompletion[] = R"sh(# Completion for bash, printed by "gpsengine completion bash".
_gpsengine() {
  local line=("${COMP_WORDS[@]:1:COMP_CWORD}")
  mapfile -t COMPREPLY < <("${COMP_WORDS[0]/#\~/$HOME}" complete -- "${line[@]//\\/}" 2>/dev/null)
  if [[ ${COMPREPLY[0]} == :files ]]; then
    compopt -o filenames
    mapfile -t COMPREPLY < <(compgen -f -- "${COMP_WORDS[COMP_CWORD]}")
  else
    COMPREPLY=("${COMPREPLY[@]%%$'\t'*}")
    COMPREPLY=("${COMPREPLY[@]// /\\ }")
  fi
}
complete -F _gpsengine gpsengine
)sh";

const char kZshCompletion[] = R"sh(#compdef gpsengine
# Completion for zsh, printed by "gpsengine completion zsh".
_gpsengine() {
  local -a found=(${(f)"$(${~words[1]} complete -- "${(@Q)words[2,CURRENT-1]}" "${(Q)PREFIX}" 2>/dev/null)"})
  if [[ $found == :files ]]; then
    _files
  else
    found=("${(@)found//:/\\:}")
    found=("${(@)found/$'\t'/:}")
    _describe gpsengine found
  fi
}
if [ "$funcstack[1]" = _gpsengine ]; then _gpsengine "$@"; else compdef _gpsengine gpsengine; fi
)sh";

std::string Completions(const CLI::App& app, std::vector<std::string> words) {
  const std::string begun = words.empty() ? "" : words.back();
  if (!words.empty()) words.pop_back();
  const Place place = PlaceBehind(app, words);
  Words found;
  if (place.option != nullptr) {
    found = ValuesOf(*place.option, place.previous, begun);
  } else {
    if (!begun.starts_with('-')) found = ArgumentsAt(place, begun);
    if (found.empty()) found = OptionsAt(place);
  }
  std::erase_if(found,
                [&](const std::string& word) { return word != kFilesOfShell && !word.starts_with(begun); });
  return found.empty() ? "" : Join(found, "\n") + '\n';
}

}  // namespace host
