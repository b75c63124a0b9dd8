#include "host/run/failure.h"
#include "tests/support/program.h"
#include "tests/support/pseudoterminal.h"
#include "tests/support/receivertest.h"

using host::ExitCode;

namespace {

const std::string kFix = GgaAt("123519");

/// Sends the bytes again and again, since a port that is opened forgets what came before, until the program
/// shows something or has ended.
void SendUntilShown(const PseudoTerminal& line, const Program& program, std::string_view bytes) {
  do line.Send(bytes);
  while (!program.HasOutput(100));
}

}  // namespace

TEST(HostProgram, AnswersOrNamesWhatIsWrongAndExitsAccordingly) {
  const std::tuple<const char*, ExitCode, const char*> cases[] = {
      {"--version", ExitCode::done, ""},
      {"", ExitCode::usage, "A subcommand is required"},
      {"decode", ExitCode::usage, "file"},
      {"decode /nonexistent.log", ExitCode::failed,
       "cannot read /nonexistent.log: No such file or directory"},
      {"decode /tmp --model othr", ExitCode::usage,
       R"((did you mean "Other"?); the models are "Ashtech", "CSI")"},
      {"decode /tmp --date 2024-13-01", ExitCode::usage, "2024-13-01"},
      {"decode /tmp --crs EPSG:99999", ExitCode::usage, "--crs EPSG:99999 "},
      {"monitor --port /dev/x --play y", ExitCode::usage, "--play"},
      {"monitor --port /dev/nonexistent", ExitCode::port_closed, "/dev/nonexistent"},
      {"monitor --play /nonexistent.log", ExitCode::failed, "/nonexistent.log"},
      {"monitor --speed max --play /dev/null", ExitCode::nothing_understood, "it holds no bytes"},
      {"monitor --record /nonexistent/x", ExitCode::failed, "/nonexistent/x"},
      {"monitor --rinex x", ExitCode::usage, "raw data"},
      {"monitor --rinex x --explain --model CSI", ExitCode::done, ""},
      {"monitor --rinex x --explain --model Leica", ExitCode::usage, "raw data"},
      {"decode x --rinex x --observer Anyone-whose-name-is-long", ExitCode::usage,
       "longer than the 20 characters that RINEX has for it"},
      {"decode x --rinex x --agency \xC3\xA4", ExitCode::usage, "not in ASCII"},
      {"decode x --marker A", ExitCode::usage, "--rinex"},
      {"command --dry-run --model Trimble gga-only", ExitCode::refused, "gga-only; it offers start, send"},
      {"command --model CSI gga-only", ExitCode::usage, "--port"},
      {"command --port /dev/nonexistent --model CSI gga-only", ExitCode::port_closed, "/dev/nonexistent"},
      {"simulate --rate -1", ExitCode::usage, "--rate: \"-1\" is no number above 0 and up to 20"},
      {"monitor --count -1", ExitCode::usage, "--count: \"-1\" is no whole number above 0"},
      {"monitor --duration nan", ExitCode::usage, "--duration: \"nan\" is no number above 0"},
      {"decode x --antenna-height inf", ExitCode::usage, "--antenna-height: \"inf\" is no number"},
      {"decode x --gpx=", ExitCode::usage, "--gpx"},
      {"monitor --fromat text", ExitCode::usage,
       R"(no option is called "--fromat" (did you mean "--format"?))"},
      {"montor", ExitCode::usage, R"((did you mean "monitor"?))"},
      {"command --dry-run --model CSI gga-olny", ExitCode::usage, R"((did you mean "gga-only"?))"},
      {"command --dry-run --model csi set-elevation-mask 12", ExitCode::done,
       "write \"$PASHS,PEM,12\\r\\n\"\nwait 200\nresult none\n"},
      {"command --dry-run --model CSI --closed reset", ExitCode::done, "result false\n"},
      {"command --dry-run --model SiRF --force query-nmea", ExitCode::done, "result none\n"},
      {"models", ExitCode::done, "\nTrimble           4800  -"},
      {"models csi", ExitCode::done, "  set-beacon auto | KHZ [BITRATE]  "},
      {"models --format json", ExitCode::done,
       R"([{"name":"Ashtech","class":"CAshtech","GetDefaultBaudrate":9600,"HasRawData":true,)"},
      {"help fly", ExitCode::usage, "fly"},
  };
  for (const auto& [arguments, code, text] : cases) {
    const Ended ended = RunToEnd(arguments);
    EXPECT_EQ(ended.code, static_cast<int>(code)) << ended.errors;
    EXPECT_TRUE(Has(code == ExitCode::done ? ended.output : ended.errors, text));
    EXPECT_EQ(ended.output.empty(), code != ExitCode::done);
  }
}

TEST(HostProgram, WritesWhatTheListOfReceiversSays) {
  EXPECT_EQ(OutputOf("receivers-doc"), ReadFile(GPSENGINE_SOURCE "/docs/receivers.md"))
      << "gpsengine receivers-doc > docs/receivers.md";
}

TEST(HostProgram, EndsQuietlyWhenNobodyReadsItsOutput) {
  const TemporaryFolder folder;
  WriteFile(folder / "drive", std::string(20000, 'x') + kFix + kFix);
  Program decode({"decode", folder / "drive"});
  decode.CloseOutput();
  EXPECT_EQ(decode.Wait(), 0);
  EXPECT_EQ(decode.Errors(), "");

  Program monitor({"monitor"});
  monitor.CloseOutput();
  EXPECT_EQ(monitor.Wait(), 0) << "though nothing was to be written yet";
}

TEST(HostProgram, ShowsWhatAPortSendsUntilThatIsLostOrAStatedTimeIsOver) {
  for (const bool stated : {false, true}) {
    PseudoTerminal line;
    Program monitor(Split("monitor --port " + line.Name() + (stated ? " --duration 1.5" : ""), ' '));
    const auto start = std::chrono::steady_clock::now();
    SendUntilShown(line, monitor, kFix);
    EXPECT_TRUE(monitor.Line().starts_with("12:35:19.00  GPS        48.1173000N"));
    line.HangUp();
    EXPECT_EQ(monitor.Wait(), 5 /* port_lost */);
    EXPECT_TRUE(!stated || std::chrono::steady_clock::now() - start >= std::chrono::milliseconds(1400));
    EXPECT_TRUE(Has(monitor.Errors(), "the port " + line.Name() + " was lost"));
  }
}

TEST(HostProgram, TellsSilenceFromWhatItDoesNotUnderstand) {
  PseudoTerminal line;
  const Ended silent = RunToEnd("monitor --port " + line.Name() + " --timeout 0.2");
  EXPECT_EQ(silent.code, 4 /* nothing_understood */);
  EXPECT_TRUE(Has(silent.errors, "no data came from " + line.Name() + " in 0.2 s"));

  // A rate is kept once something was understood at it.
  const std::tuple<const char*, std::string_view, int, const char*> rows[] = {
      {" --baud 4800", "\xF8\x80$\xFE\r\n", 4, "understood at 4800 baud: set"},
      {"", "\xF8\x80$\xFE\r\n", 4, "understood at 9600 baud: set"},
      {" --baud 4800", kFix, 0, ""},
      {"", "\xF8\x80$\xFE\r\n", 4, "understood at 4800 baud, the rate that is remembered"},
  };
  RunToEnd("config reset");
  for (const auto& [baud, bytes, code, text] : rows) {
    Program monitor(Split("monitor --timeout 0.6 --count 1 --port " + line.Name() + baud, ' '));
    SendUntilShown(line, monitor, bytes);
    EXPECT_EQ(monitor.Wait(), code);
    EXPECT_TRUE(Has(monitor.Errors(), text)) << text;
  }
  EXPECT_FALSE(Has(RunToEnd("config forget Other").output, "for Other"));
}

TEST(HostProgram, PlaysAPackedRecordingOverAndOver) {
  const TemporaryFolder folder;
  const std::string packed = folder / "drive.gz";
  WriteFile(folder / "drive", kFix);
  ASSERT_EQ(std::system(("gzip " + (folder / "drive")).c_str()), 0);
  Program monitor({"monitor", "--play", packed, "--format", "json", "--speed", "engine"});
  for (int i = 0; i < 2; ++i)
    EXPECT_TRUE(Has(monitor.Line(), R"({"class":"TPV","device":")" + packed + R"(","mode":3,)"));
  monitor.Signal(SIGINT);
  EXPECT_EQ(monitor.Wait(), 130 /* interrupted */);
}

TEST(HostProgram, CommandsASimulatedReceiver) {
  Program simulate({"simulate", "--model", "CSI"});
  const std::string port = simulate.Line();
  const auto command = [&](const std::string& words) {
    return RunToEnd("command --port " + port + " --model CSI " + words);
  };
  EXPECT_EQ(command("set-elevation-mask 12").code, 0);
  // Its parameters come in lines that are no messages.
  const Ended query = command("query-elevation-mask");
  EXPECT_EQ(query.code, 0) << query.errors;
  EXPECT_TRUE(Has(query.output, "report: elevation mask 12 deg"));

  simulate.Signal(SIGTERM);
  EXPECT_EQ(simulate.Wait(), 130 /* interrupted */);
}

TEST(HostProgram, StopsInTheMidstOfACommand) {
  const PseudoTerminal line;
  Program source({"command", "--port", line.Name(), "--model", "Sokkia Axis3", "set-dgps", "lband"});
  EXPECT_FALSE(line.Receive(1, std::chrono::seconds(20)).empty());
  source.Signal(SIGINT);
  EXPECT_EQ(source.Wait(), 130 /* interrupted */) << "long before the end of its 12 seconds";
  EXPECT_TRUE(Has(source.Errors(), "has not been sent"));
}

TEST(HostProgram, SaysThatNothingAnswered) {
  PseudoTerminal line;
  const std::pair<const char*, const char*> rows[] = {
      {"query-nmea", "no report answered query-nmea, and no data came"},
      {"set-elevation-mask 9", R"(sent "$PSLIS,ELM,9", but no bytes came from )"}};
  for (const auto& [words, text] : rows) {
    const Ended ended =
        RunToEnd("command --port " + line.Name() + " --model Starlink " + words + " --listen 0.1");
    EXPECT_EQ(ended.code, 6 /* refused */);
    EXPECT_TRUE(Has(ended.errors, text));
  }
}

TEST(HostProgram, LogsRawDataOfALiveReceiver) {
  const TemporaryFolder folder;
  EXPECT_TRUE(Has(OutputOf("monitor --model Ashtech --rinex " + (folder / "raw") + " --duration 2"),
                  "raw epoch: week "));
  for (const char* file : {"raw.obs", "raw.nav"}) EXPECT_NE(ReadFile(folder / file), "");
}
