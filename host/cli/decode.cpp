#include "host/decode.h"
#include "host/cli/commands.h"
#include "host/cli/options.h"

namespace host {

void AddDecode(CLI::App& app, Job& job) {
  auto* command = app.add_subcommand("decode", "Decode a recording, as fast as it goes");
  command->footer(
      "Examples:\n"
      "  gpsengine decode drive.log --format json > drive.json\n"
      "  gpsengine decode drive.log --gpx drive.gpx --report drive.html\n"
      "  gpsengine decode monday.log tuesday.log.gz --format none --report survey.html\n"
      "  gpsengine decode drive.log --only fix --min-distance 10 --csv drive.csv");
  auto options = std::make_shared<DecodeOptions>();
  AddValue(*command, "file", options->files, "FILE", AName(),
           "Recordings, one after the other, which may be packed by gzip; - for standard input")
      ->required();
  AddReceiver(*command, *options);
  AddBeside(*command, *options);
  AddFormat(
      *command, *options, *options,
      {{"text", Format::text}, {"json", Format::json}, {"record", Format::record}, {"none", Format::none}},
      "How to show records; none: the summary alone");
  AddDuration(*command, options->exports.filter.duration,
              "End after this many seconds of the recording's own time");
  command
      ->add_option_function<std::string>(
          "--date", [options](const std::string& date) { options->date = MomentOfDate(date); },
          "When the recording was made, YYYY-MM-DD, if it does not say so itself")
      ->type_name("DATE");
  AddValue(*command, "--chunk", options->chunk, "BYTES", WholeBetween(1, 1 << 24),
           "Bytes to take in at a time")
      ->capture_default_str();
  command->callback([&job, options] { job = JobOf(options, &Decode); });
}

}  // namespace host
