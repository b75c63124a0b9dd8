#include "host/serve.h"
#include "host/cli/commands.h"
#include "host/cli/options.h"

namespace host {

namespace {

void AddMqtt(CLI::App& command, MqttOptions& mqtt) {
  constexpr char kGroup[] = "MQTT";
  auto* broker = command.add_option_function<std::string>(
      "--mqtt", [&mqtt](const std::string& url) { mqtt.broker = ReadMqttUrl(url); },
      "Publish fixes, satellites and the receiver's state at an MQTT broker, under PREFIX/ID");
  broker->type_name("mqtts://[USER@]HOST[:PORT]/PREFIX")->group(kGroup);
  command
      .add_option_function<std::string>(
          "--mqtt-id",
          [&mqtt](const std::string& id) {
            CheckMqttId(id);
            mqtt.id = id;
          },
          "What stands after the prefix, and the client's name; without it, by host name and model")
      ->type_name("ID")
      ->needs(broker)
      ->group(kGroup);
  AddValue(command, "--mqtt-ca", mqtt.ca_file, "FILE", AName(),
           "Authority of the broker's certificate, in place of the system's")
      ->needs(broker)
      ->group(kGroup);
  AddValue(command, "--mqtt-password-file", mqtt.password_file, "FILE", AName(),
           "File whose first line is the password; without it, the variable GPSENGINE_MQTT_PASSWORD")
      ->needs(broker)
      ->group(kGroup);
}

}  // namespace

void AddServe(CLI::App& app, Job& job) {
  auto* command =
      app.add_subcommand("serve", "Serve what a receiver sends to gpsd's clients, and as a live page");
  command->footer(
      "Clients cannot change anything: no request reaches the receiver.\n"
      "Examples:\n"
      "  gpsengine serve --port /dev/ttyUSB0 --model Trimble   then: gpspipe -w, cgps, gpsmon ...\n"
      "  gpsengine serve --port auto --reconnect               goes on when it is plugged in again\n"
      "  gpsengine serve --http 8080                           a simulated receiver, and a page\n"
      "  gpsengine serve --play drive.log --speed engine       over and over, for trying a client\n"
      "  gpsengine serve --port auto --record drive.log --gpx drive.gpx\n"
      "  gpsengine serve --geoid add                           then: gpxlogger 127.0.0.1:2947\n"
      "  gpsengine serve --port auto --mqtt mqtts://van@broker.example/fleet --mqtt-id van-1");
  auto options = std::make_shared<ServeOptions>();
  AddLive(*command, *options);
  command->add_option("--listen", options->listen, "Address to listen on")
      ->type_name("ADDRESS")
      ->capture_default_str();
  AddValue(*command, "--tcp", options->tcp, "PORT", WholeBetween(0, 65535),
           "Port of gpsd's protocol, 0 for any that is free")
      ->capture_default_str();
  AddValue(*command, "--http", options->http, "PORT", WholeBetween(0, 65535),
           "Port of the live page, 0 for any that is free; without it, no page");
  AddMqtt(*command, options->mqtt);
  command->callback([&job, options, command] { job = OnLine(*command, options, &Serve); });
}

}  // namespace host
