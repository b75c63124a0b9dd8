#include "host/cli/clihelp.h"

#include "gpsengine/face/words.h"
#include "host/run/face.h"

namespace host {

std::vector<const CLI::App*> Commands(const CLI::App& app) {
  return app.get_subcommands([](const CLI::App* command) { return !command->get_group().empty(); });
}

std::vector<NamedCommand> AllCommands(const CLI::App& app, const std::string& parent) {
  std::vector<NamedCommand> all;
  for (const CLI::App* command : Commands(app)) {
    const std::string name = parent + command->get_name();
    all.push_back({name, command});
    for (const NamedCommand& nested : AllCommands(*command, name + ' ')) all.push_back(nested);
  }
  return all;
}

std::vector<const CLI::Option*> Options(const CLI::App& command) {
  return command.get_options([](const CLI::Option* option) { return !option->get_group().empty(); });
}

bool IsFlag(const CLI::Option& option) {
  return option.get_items_expected_max() == 0;
}

std::string TypeOf(const CLI::Option& option) {
  const std::string type = option.get_type_name();
  return type.substr(0, type.find(':'));
}

std::string LimitsOf(const CLI::Option& option) {
  const std::string type = option.get_type_name();
  const auto colon = type.find(':');
  return colon == std::string::npos ? "" : type.substr(colon + 1);
}

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

}  // namespace host
