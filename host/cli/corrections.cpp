#include "host/cli/commands.h"
#include "host/cli/options.h"
#include "host/corrections/sourcetable.h"

namespace host {

void AddCorrections(CLI::App& command, CorrectionOptions& corrections) {
  constexpr char kGroup[] = "Corrections";
  auto* source = AddValue(command, "--corrections", corrections.source, "SOURCE", AName(),
                          "Send the receiver corrections: ntrip://USER@CASTER:2101/MOUNT, ntrips://..., "
                          "tcp://HOST:PORT, a serial device or a file")
                     ->group(kGroup);
  AddValue(command, "--corrections-password-file", corrections.password_file, "FILE", AName(),
           "The caster's password is its first line; without it, GPSENGINE_CORRECTIONS_PASSWORD is")
      ->needs(source)
      ->group(kGroup);
  AddValue(command, "--corrections-gga", corrections.gga_interval, "S", Between(0.0, 3600.0),
           "Seconds between the positions that a caster gets, 0 for none")
      ->needs(source)
      ->capture_default_str()
      ->group(kGroup);
  AddValue(command, "--corrections-baud", corrections.baud, "N", WholeBetween(50, 4'000'000),
           "Baud rate of the serial device that they come from")
      ->needs(source)
      ->capture_default_str()
      ->group(kGroup);
  command
      .add_flag("--corrections-rtcm-only", corrections.rtcm_only,
                "Pass whole messages of RTCM 3 on, and nothing else")
      ->needs(source)
      ->group(kGroup);
}

namespace {

struct NtripOptions {
  std::string caster, format = "table", password_file;
  std::optional<Degrees2> near;
};

ExitCode Ntrip(const NtripOptions& options, const Interrupt& interrupt, Output& output) {
  const std::string table =
      FetchSourceTable(ParseCaster(options.caster), CorrectionsPassword(options.password_file), interrupt);
  const auto points = MountPointsOf(table, options.near);
  output.Text() += options.format == "raw"    ? table
                   : options.format == "json" ? MountPointsAsJson(points)
                                              : MountPointsAsTable(points);
  output.Flush();
  return ExitCode::done;
}

}  // namespace

void AddNtrip(CLI::App& app, Job& job) {
  auto* command = app.add_subcommand("ntrip", "List the mount points of a caster of corrections");
  command->footer(
      "Examples:\n"
      "  gpsengine ntrip caster.example\n"
      "  gpsengine ntrip caster.example:2101 --near 47.62,9.40 the nearest first\n"
      "  gpsengine ntrip ntrips://user@caster.example --format json\n"
      "Then: gpsengine monitor --port DEVICE --corrections ntrip://user@caster.example/MOUNT");
  auto options = std::make_shared<NtripOptions>();
  AddValue(*command, "caster", options->caster, "CASTER", AName(), "Its address, as of --corrections")
      ->required();
  AddValue(*command, "--format", options->format, "FORMAT",
           CLI::IsMember(std::vector<std::string>{"table", "json", "raw"}), "table, json, or raw as it comes")
      ->capture_default_str();
  AddValue(*command, "--password-file", options->password_file, "FILE", AName(),
           "The caster's password is its first line; without it, GPSENGINE_CORRECTIONS_PASSWORD is");
  command
      ->add_option_function<std::string>(
          "--near",
          [options](const std::string& place) {
            options->near = PlaceOf(place);
            if (!options->near)
              throw CLI::ValidationError("--near",
                                         place + " is no latitude and longitude such as 47.62,9.40");
          },
          "Where you are, in degrees: distances, and the nearest first")
      ->type_name("LAT,LON");
  command->callback([&job, options] {
    job = [options](const Interrupt& interrupt, Output& output) {
      return Ntrip(*options, interrupt, output);
    };
  });
}

}  // namespace host
