#include "host/line/config.h"
#include "host/cli/commands.h"
#include "host/cli/options.h"

namespace host {

void AddConfig(CLI::App& app, Job& job) {
  struct Options {
    std::string format, name, value;
  };
  auto* command = app.add_subcommand("config", "Show what is remembered: port, model and baud rates");
  command->footer(
      "A run that understood a receiver has its port and model remembered, for --port last.\n"
      "Examples:\n"
      "  gpsengine config set port /dev/ttyUSB0\n"
      "  gpsengine config set model Trimble\n"
      "  gpsengine config forget Trimble                       its baud rate\n"
      "  gpsengine config reset");
  auto options = std::make_shared<Options>();
  AddListFormat(*command, options->format, "text");
  auto* set = command->add_subcommand("set", "Set the port or the model");
  AddValue(*set, "name", options->name, "NAME", CLI::IsMember({"port", "model"}), "port or model")
      ->required();
  set->add_option("value", options->value, "What it shall be")->required()->type_name("VALUE");
  auto* forget = command->add_subcommand("forget", "Forget the baud rate of a model");
  forget->add_option("model", options->value, "The model")
      ->required()
      ->transform(AModel())
      ->type_name("MODEL");
  auto* reset = command->add_subcommand("reset", "Forget port, model and baud rates");
  for (auto* change : {set, forget, reset}) change->fallthrough();
  command->callback([=, &job] {
    job = Prints([=] {
      if (forget->parsed()) ForgetRate(options->value);
      if (set->parsed()) SetConfig(options->name, options->value);
      if (reset->parsed()) ResetConfig();
      const Config config = ReadConfig();
      return options->format == "json" ? ConfigAsJson(config) : ConfigAsText(config);
    });
  });
}

}  // namespace host
