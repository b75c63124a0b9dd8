#include "gpsengine/face/models.h"
#include "host/cli/commands.h"
#include "host/cli/options.h"
#include "host/commands/modellists.h"
#include "host/run/face.h"

namespace host {

void AddModels(CLI::App& app, Job& job) {
  struct Options {
    std::string name, format;
  };
  auto* command =
      app.add_subcommand("models", "List the receiver models, their baud rates and what each can do");
  command->footer(
      "Examples:\n"
      "  gpsengine models\n"
      "  gpsengine models Trimble                              what may be asked of it, by \"command\"\n"
      "  gpsengine models --format json");
  auto options = std::make_shared<Options>();
  command->add_option("name", options->name, "One model, to list its operations")
      ->transform(AModel())
      ->type_name("NAME");
  AddListFormat(*command, options->format, "table");
  command->callback([&job, options] {
    job = Prints([options] {
      const bool json = options->format == "json";
      if (options->name.empty()) return json ? ModelsAsJson() : ModelsAsTable();
      CGPSReceiver& receiver = FindModel(options->name);
      return json ? ModelAsJson(receiver) : ModelAsText(receiver);
    });
  });
}

}  // namespace host
