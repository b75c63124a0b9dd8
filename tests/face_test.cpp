#include <ranges>

#include "gpsengine/face/answerreader.h"
#include "gpsengine/face/commands.h"
#include "gpsengine/face/decode.h"
#include "gpsengine/face/exchange.h"
#include "gpsengine/face/operations.h"
#include "gpsengine/face/receiver.h"
#include "gpsengine/face/stopclock.h"
#include "gpsengine/face/words.h"
#include "gpsengine/platform/messagebox.h"
#include "tests/support/blocks.h"
#include "tests/support/pseudoterminal.h"
#include "tests/support/receivertest.h"
#include "tests/support/scriptedline.h"
#include "tests/support/wirebuilder.h"

namespace {

using namespace std::chrono_literals;
using gps::ErrorCode;

constexpr std::chrono::seconds kLong(10);

/// Two fixes of a day, a sentence without one, satellites of two systems and a setting.
std::string Recorded() {
  return WithChecksum("$GPRMC,123518.00,A,4807.038,N,01131.000,E,022.4,084.4,230394,,") + GgaAt("123519") +
         WithChecksum("$GPGSV,1,1,02,03,42,111,40,19,20,300,35") +
         WithChecksum("$GLGSV,1,1,01,70,33,250,38") + GgaAt("123520", 0) +
         WithChecksum("$GPVTG,090.0,T,,M,010.0,N,018.5,K") + GgaAt("123521.5", 4) + "$PASHR,ACK*3D\r\n" +
         GgaAt("123522");
}

std::span<const std::byte> BytesOf(const std::string& text) {
  return std::as_bytes(std::span(text));
}

std::string Texts(gps::Recording recording) {
  std::ostringstream out;
  for (const gps::Fix& fix : recording.fixes()) out << fix << '\n';
  return out.str();
}

}  // namespace

TEST(Face, ReadsFixesInDegreesMetresAndUtc) {
  const std::string bytes = Recorded();
  std::ostringstream out;
  for (const gps::Fix& fix : gps::decode(BytesOf(bytes)).fixes()) {
    out << fix.time << ' ' << fix.latitude << ' ' << fix.longitude << ' ' << fix.height_msl << ' '
        << fix.course << ' ' << fix.hdop << ' ' << fix.vdop << ' ' << fix.starts_segment << ' '
        << gps::NameOfSignal(fix.signal) << '\n';
  }
  EXPECT_EQ(out.str(),
            "1994-03-23T12:35:19.000Z 48.1173 11.5167 545.4 - 0.9 - 1 GPS\n"
            "1994-03-23T12:35:21.500Z 48.1173 11.5167 545.4 90 0.9 - 1 RTK fixed\n"
            "1994-03-23T12:35:22.000Z 48.1173 11.5167 545.4 - 0.9 - 0 GPS\n");
  gps::Fix fix = gps::decode(BytesOf(bytes)).fixes().next().value();
  EXPECT_EQ(testing::PrintToString(fix), "1994-03-23T12:35:19.000Z 48.1173000 11.5166667 545.4 m GPS");
  std::string names;
  for (int signal = -1; signal <= 11; ++signal) names += std::string(gps::NameOfSignal(signal)) + ',';
  EXPECT_EQ(names,
            "unknown,no fix,GPS,DGPS,estimated,manual,RTK code,RTK fixed,RTK "
            "float,processed,SBAS,unknown,unknown,");
  fix.height_msl.reset();
  EXPECT_TRUE(testing::PrintToString(fix).ends_with(" 11.5166667 - GPS"));
}

TEST(Face, GivesAnAnswerThatNoDecoderKnowsByItsText) {
  const std::string bytes = "$>FO\x7F,1,2\r\n$>FOO,1,2\r\n$>JI,1,2\r\n$>BAR,1,2\r\n",
                    expected = "text $>FOO,1,2;text $>JI,1,2;text $>BAR,1,2;";
  std::string told;
  for (const gps::Report& report : gps::decode(BytesOf(bytes)).reports())
    told += testing::PrintToString(report) + ';';
  EXPECT_EQ(told, expected) << "once, if a decoder knows it";
}

TEST(Face, KnowsNothingOfTheRecordingBefore) {
  const std::string bytes = GgaAt("123519");
  const std::string before = WithChecksum("$GPGSA,A,3,03,,,,,,,,,,,,3.4,1.6,3.0") + GgaAt("123517");
  EXPECT_TRUE(gps::decode(BytesOf(before)).fixes().next()->pdop);
  const auto fix = gps::decode(BytesOf(bytes)).fixes().next();
  EXPECT_FALSE(fix->pdop || fix->vdop || fix->speed || fix->strength);
  const auto higher = gps::decode(BytesOf(bytes), {.antenna_height = 2.0}).fixes().next();
  EXPECT_EQ(*fix->height_msl - *higher->height_msl, 2.0);
}

TEST(Face, TellsEveryKindInOrder) {
  const std::string bytes = Recorded();
  std::string order;
  gps::decode(BytesOf(bytes)).run([&](const gps::Record& record) {
    if (const auto* fix = std::get_if<gps::Fix>(&record)) order += fix->valid ? "fix " : "none ";
    if (const auto* sky = std::get_if<gps::Sky>(&record)) {
      for (const auto& satellite : sky->satellites) order += satellite.id.Name() + ' ';
    }
    if (const auto* report = std::get_if<gps::Report>(&record)) order += std::string(report->key) + ' ';
  });
  EXPECT_EQ(order, "fix none G03 G19 R06 fix ack fix ");
}

TEST(Face, DecodesAFileAStreamAndATextLogAlike) {
  const std::string bytes = Recorded();
  const std::string expected = Texts(gps::decode(BytesOf(bytes)));
  EXPECT_EQ(Count(expected, "\n"), 3);
  std::istringstream stream(bytes);
  EXPECT_EQ(Texts(gps::decode(stream)), expected);
  const std::string late = std::string(70'000, 'x') + "\r\n" + bytes, night = GgaAt("235959");
  EXPECT_TRUE(Texts(gps::decode(BytesOf(late))).starts_with("1994-03-23")) << "whatever stands before it";
  const std::string file = testing::TempDir() + "gpsengine-face.log";
  std::string text_log = bytes;
  std::erase(text_log, '\r');
  WriteFile(file, text_log);
  EXPECT_EQ(Texts(gps::decode(file)), expected);
  EXPECT_EQ(Texts(gps::decode(file, {.speed = 1e6})), expected) << "at a pace";
  EXPECT_TRUE(Has(Texts(gps::decode(BytesOf(night), {.date = std::chrono::year(1971) / 1 / 2})),
                  "1971-01-02T23:59:59"));
  WriteFile(file, '\x1F' + bytes);
  EXPECT_EQ(Texts(gps::decode(file)), expected);
  WriteFile(file, "\x1F\x8B packed");
  EXPECT_EQ(ErrorOf([&] { gps::decode(file); }),
            "1 cannot read " + file + ": it is packed: unpack it first, with gunzip");
  WriteFile(file, "");
  EXPECT_EQ(ErrorOf([&] { gps::decode(file); }), "1 cannot read " + file + ": the file is empty");
  EXPECT_EQ(ErrorOf([] { gps::decode("/no/such"); }), "1 cannot read /no/such: No such file or directory");
  EXPECT_EQ(ErrorOf([&] { gps::decode(BytesOf(bytes), {.speed = -1}); }),
            "2 the speed of a recording is 0 or more");
  std::stop_source stop;
  WriteFile(file, GgaAt("123519") + GgaAt("123521"));
  auto slow = gps::decode(file, {.speed = 0.001}).fixes({kLong, stop.get_token()});
  EXPECT_TRUE(slow.next());
  const std::jthread stopping([&] { stop.request_stop(); });
  EXPECT_LT(Took([&] { EXPECT_EQ(slow.next(), std::nullopt); }), 5000u) << "not due for half an hour";
  slow = {};
  EXPECT_EQ(gps::decode(BytesOf(bytes)).fixes(stop.get_token()).next(), std::nullopt);
}

TEST(Face, GivesRawDataOfBlocks) {
  const std::string blocks[] = {Blocks(kObservations[1], 2)[0], Blocks(kEphemerides[1], 2)[0]};
  const std::string bytes = blocks[0] + blocks[1];
  std::string told;
  for (const gps::Raw& raw : gps::decode(BytesOf(bytes), {.model = "gsr2650 lb"}).raw()) {
    EXPECT_EQ(2 * raw.words.size(), blocks[raw.epoch ? 0 : 1].size());
    told += raw.name + (raw.epoch ? " epoch " : "") + (raw.ephemeris ? " ephemeris" : "");
  }
  EXPECT_EQ(told, "OEM 43 epoch OEM 41 ephemeris");
}

TEST(Face, GivesAnAshtechsRawDataAsTheOthers) {
  std::string bytes = Snv().Message() + "\n";
  for (int prn = 29; prn <= 33; ++prn)
    bytes += Mbn{.prn = prn, .toFollow = 33 - prn, .count = 1499, .range = 0.07}.Message() + "\n";
  bytes += Pbn{.milliseconds = 5000}.Message() + "\n";
  std::vector<gps::Raw> all;
  for (const gps::Raw& raw : gps::decode(BytesOf(bytes), {.model = "Ashtech"}).raw()) all.push_back(raw);
  ASSERT_EQ(all.size(), 2u);
  EXPECT_EQ(all[0].name, "SNV");
  EXPECT_EQ(all[0].ephemeris->orbit.m_nPRN, 9);
  EXPECT_EQ(all[1].name, "MBN");
  EXPECT_EQ(all[1].epoch->week + all[1].epoch->time_of_week, 1455.0);
  EXPECT_EQ(all[1].epoch->signals.size(), 4u);
  const auto& last = all[1].epoch->signals[3];
  EXPECT_EQ(last.satellite, 32) << "the last one of GPS";
  EXPECT_EQ(std::string(last.code), "1C");
  EXPECT_DOUBLE_EQ(last.pseudorange, 0.93 * 299'792'458.0);
  EXPECT_EQ(last.cn0, 2.0);
  EXPECT_FALSE(last.slip) << "which they do not tell";
}

TEST(Face, IsUsedOnceAtATime) {
  const std::string bytes = Recorded();
  auto fixes = gps::decode(BytesOf(bytes)).fixes();  // outlives what it was made of
  EXPECT_EQ(
      ErrorOf([&] { gps::decode(BytesOf(bytes)); }),
      "7 another receiver or recording is in use in this process, which has room for one: end that one, or "
      "use a process for each");
  EXPECT_TRUE(Has(ErrorOf([] { gps::rehearse("Ashtech", "gga-only"); }), "7 "));
  std::thread([&] { EXPECT_TRUE(fixes.next()); }).join();
  EXPECT_TRUE(fixes.begin()->valid) << "on one thread and another";
  fixes = {};
  EXPECT_EQ(ErrorOf([&] { gps::decode(BytesOf(bytes)); }), "none");
  EXPECT_TRUE(Has(ErrorOf([&] { gps::decode(BytesOf(bytes), {.model = "Trimbel"}); }),
                  "2 no model is called \"Trimbel\" (did you mean \"Trimble\"?)"));
  EXPECT_EQ(gps::DidYouMean("monitr", {"monster", "monitor", "monster"}), " (did you mean \"monitor\"?)");
  EXPECT_EQ(gps::DidYouMean("sim", {"send", "simulate"}), " (did you mean \"simulate\"?)");
  for (const char* word : {"sims", "sin"}) EXPECT_NE(gps::DidYouMean(word, {"sim"}), "") << word;
  for (const char* word : {"cap", "--cap"})
    EXPECT_EQ(gps::DidYouMean(word, {"cut", "--cut"}), "") << "too far off";
}

TEST(Face, TellsWhatAReceiverTookAndWhatItRefused) {
  gps::AnswerReader answers;
  answers.Feed("$>\r\n<OK\r\n<ERROR:Invalid Message ID\r\n$PASHR,ACK*3D\r\n$GPGGA,\r\n$PASHR,NAK");
  EXPECT_TRUE(answers.HasHeard() && answers.Taken() == 3 && answers.Refused() == 1);
  EXPECT_EQ(answers.Refusal(), "<ERROR:Invalid Message ID");
  for (const char* line : {"$PASHS,NME", "$JSAVE", "LOG GPGGA", "UNLOG GPGGA", "SAVECONFIG", "ECUTOFF 5",
                           "ASSIGNOMNI", "RTKSOURCE", "PSRDIFFSOURCE", "SBASCONTROL ENABLE",
                           "UNDULATION USER", "DATUM WGS84", "datum user", "USERDATUM 6378137"})
    EXPECT_TRUE(gps::AnswerReader::IsDueTo(line)) << line;
  EXPECT_FALSE(gps::AnswerReader::IsDueTo("$PSRF103,00,00,02,01"));
  for (const auto& [text, is_answer] : {std::pair("$>\r\n", false),
                                        {"$>JI\r\n", true},
                                        {"#LOGLISTA\r\n", true},
                                        {"$RD1,1\r\n", true},
                                        {"$GPGGA,1", false}})
    EXPECT_EQ(gps::IsAnswer(text), is_answer) << text;
}

TEST(MessageBox, IsAPauseUntilEnterOnATerminal) {
  const PseudoTerminal terminal;
  const int before = dup(STDIN_FILENO);
  dup2(terminal.Keeper(), STDIN_FILENO);
  terminal.Send("yes\nx");
  AfxMessageBox("Turn the key", BoxKind::pause);
  char next = 0;
  EXPECT_TRUE(read(STDIN_FILENO, &next, 1) == 1 && next == 'x') << "and no key behind it is taken";
  dup2(before, STDIN_FILENO);
  close(before);
}

TEST(Face, RehearsesCommands) {
  EXPECT_EQ(gps::models().size(), 19u);
  const std::string calls = testing::PrintToString(gps::commands("CSI"));
  EXPECT_TRUE(Has(calls, "\"set-elevation-mask 10\""));
  EXPECT_FALSE(Has(calls, "set-lband"));
  EXPECT_TRUE(Has(gps::rehearse("CSI", "set-elevation-mask", {"7"}).Text(), "$PASHS,PEM,7"));
  EXPECT_EQ(gps::rehearse("CSI", "set-elevation-mask", {"7", "--wait"}).Text(),
            "write \"$PASHS,PEM,7\\r\\n\"\nwait 200\nwait-ack 1500\n");
  EXPECT_EQ(gps::rehearse("CSI", "reset", {"--wait"}).result, gps::Result::yes) << "as if acknowledged";
  const struct {
    std::string call, error;
  } refused[] = {
      {"set-elevation-mask 91", "2 \"91\" is not an elevation from 0 to 90 degrees"},
      {"set-elevation-mask x", "2 \"x\" is not a whole number of degrees"},
      {"set-elevation-mask", "2 an argument is missing: degrees"},
      {"set-elevation-mask 5 6", "2 \"6\" is one argument too many"},
      {"set-dgps", "2 an argument is missing: the source"},
      {"set-dgps x", "2 \"x\" is not none, beacon, lband, waas, cdgps or omnistar"},
      {"set-lband x", "2 \"x\" is not a number of MHz"},
      {"set-lband 1557.1", "2 an argument is missing: bits a second"},
      {"set-lband 1557.1 1.5", "2 \"1.5\" is not a whole number of bits a second"},
      {"set-cdgps-frequency nan", "2 \"nan\" is not a number of MHz"},
      {"post-processing 1", "2 \"1\" is not on or off"},
      {"post-processing", "2 an argument is missing: on or off"},
      {"raw-interval 0.5",
       "2 the model GSR2650 LB does not send raw data every 0.5 s; its intervals in seconds are whole "
       "numbers from "
       "1 to 86400"},
      {"send \u20AC", "2 the text has characters that a line to a receiver cannot hold"},
      {"send \x07", "2 the text has characters that a line to a receiver cannot hold"},
      {"send " + std::string(199, 'x'), "2 the text is longer than 198 characters"},
  };
  for (const auto& [call, error] : refused) {
    const gps::Arguments words = gps::ReadArguments(call);
    EXPECT_EQ(
        ErrorOf([&] {
          gps::rehearse("GSR2650 LB", words.words.front(), {words.words.begin() + 1, words.words.end()});
        }),
        error);
  }
  for (const char* frequency : {"283.4", "325.1", "3o0", "-300"}) {
    EXPECT_EQ(ErrorOf([&] { gps::rehearse("CSI", "set-beacon", {frequency}); }),
              std::string("2 \"") + frequency +
                  "\" is not \"auto\", nor a beacon's frequency from 283.5 to 325 kHz");
  }
  EXPECT_EQ(ErrorOf([] {
              gps::rehearse("CSI", "set-beacon", {"325", "150"});
            }),
            "2 \"150\" is not a beacon's bit rate: 25, 50, 100 or 200");
  EXPECT_TRUE(
      ErrorOf([] {
        gps::rehearse("CSI", "rest");
      }).starts_with("2 no operation is called \"rest\" (did you mean \"reset\"?); the operations are "));
  EXPECT_EQ(ErrorOf([] { gps::rehearse("CSI", "send", {std::string(198, 'x')}); }), "none");
  for (const char* rate : {"25", "50", "100", "200"})
    EXPECT_EQ(ErrorOf([&] { gps::rehearse("CSI", "set-beacon", {"283.5", rate}); }), "none");
  EXPECT_TRUE(Has(ErrorOf([] { gps::rehearse("Trimble", "gga-only"); }),
                  "6 the model Trimble does not offer gga-only; it offers start"));
  EXPECT_EQ(ErrorOf([] { gps::rehearse("SiRF", "query-dgps"); }),
            "6 the model SiRF has no query-dgps: nothing was sent");
  EXPECT_EQ(ErrorOf([] {
              gps::Prepare(gps::FindOperation("gga-only"), {{}, true});
            }),
            "2 --wait belongs to the operation reset");
  const auto fail = [](bool waits) {
    gps::CheckResult(gps::FindOperation("reset"), {{}, waits}, gps::Result::no);
  };
  EXPECT_EQ(ErrorOf([&] { fail(true); }), "6 reset was not acknowledged in time");
  EXPECT_EQ(ErrorOf([&] { fail(false); }),
            "6 reset did not work: the receiver's port did not take it, or the model does not take these "
            "arguments");
}

TEST(FaceLive, ReadsALineOfOnesOwnOnAnyThread) {
  Script script;
  std::stop_source stopped;
  stopped.request_stop();
  EXPECT_EQ(ErrorOf([&] { gps::Receiver({.line = script.Opener()}, stopped.get_token()); }),
            "130 stopped while the receiver was being set up");
  gps::Receiver receiver({.model = "other", .line = script.Opener()});
  EXPECT_EQ(receiver.model() + std::to_string(receiver.baud()), "Other9600");
  EXPECT_TRUE(Has(ErrorOf([] { gps::Receiver({.line = [] { return nullptr; }}); }), "7 "));
  script.Send(Recorded());
  std::thread other([&] {
    auto skies = receiver.satellites(kLong);
    EXPECT_EQ(skies.next().value().satellites.size(), 3u);
  });
  int fixes = 0;
  for (const gps::Fix& fix : receiver.fixes(kLong)) {
    EXPECT_TRUE(fix.valid);
    if (++fixes == 3) break;
  }
  other.join();
  EXPECT_EQ(testing::PrintToString(*receiver.reports(kLong).next()), "acknowledged yes") << "it has waited";
  EXPECT_TRUE(Has(ErrorOf([&] { receiver.fixes(1ms).next(); }), "4 no fix came from the line in 0.001 s"));
  EXPECT_TRUE(Has(ErrorOf([&] { receiver.raw(1ms).next(); }), "4 no raw data came from the line"));
  EXPECT_TRUE(Has(ErrorOf([&] { receiver.reports(1ms).next(); }), "4 no report came"));
  EXPECT_TRUE(Has(ErrorOf([&] { receiver.satellites(1ms).next(); }), "4 no satellites came"));
  EXPECT_TRUE(
      Has(ErrorOf([&] { std::ranges::for_each(receiver.records(1ms), [](auto&) {}); }), "4 no record came"));
  std::stop_source stop;
  const std::jthread stopping([&] { stop.request_stop(); });
  EXPECT_EQ(receiver.fixes({kLong, stop.get_token()}).next(), std::nullopt);
  EXPECT_EQ(receiver.lost(), 0u);
  EXPECT_GE(receiver.understood(), 7);
}

TEST(FaceLive, FitsIntoAnEventLoopAndRecords) {
  PseudoTerminal terminal;
  const std::string file = testing::TempDir() + "gpsengine-face-recorded.log";
  std::optional<gps::Receiver> receiver;
  receiver.emplace(gps::ReceiverOptions{.port = terminal.Name(), .record = file});
  pollfd wait{receiver->descriptor(), POLLIN, 0};
  EXPECT_EQ(poll(&wait, 1, 0), 0);
  const std::string sent = GgaAt("123519") + GgaAt("123520");
  terminal.Send(sent);
  int fixes = 0;
  const auto drain = [&] { receiver->drain([&](const gps::Record&) { ++fixes; }); };
  while (fixes < 2) {
    ASSERT_EQ(poll(&wait, 1, 10'000), 1);
    drain();
  }
  EXPECT_EQ(poll(&wait, 1, 0), 0);
  terminal.HangUp();
  std::string error = "none";
  for (; error == "none"; error = ErrorOf(drain)) ASSERT_EQ(poll(&wait, 1, 10'000), 1);
  EXPECT_TRUE(Has(error, "5 the port"));
  receiver.reset();
  EXPECT_EQ(ReadFile(file), sent) << "recorded";
  Script script;
  receiver.emplace(gps::ReceiverOptions{.line = script.Opener(), .record = "/no/such/folder/file"});
  script.Send(sent);
  auto reports = receiver->reports(kLong);
  const auto report = reports.next();
  EXPECT_EQ(report->key, "message");
  EXPECT_TRUE(Has(testing::PrintToString(*report), "message Could not open file"));
  receiver.reset();
  EXPECT_FALSE(reports.next()) << "there is no more";
  testing::internal::CaptureStderr();
  AfxMessageBox("of another one");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "of another one\n");
}

TEST(FaceLive, LosesTheOldestWhereNobodyReads) {
  Script script;
  gps::Receiver receiver({.line = script.Opener()});
  auto fixes = receiver.fixes(kLong);
  constexpr int kSent = 6000;
  std::string bytes;
  for (int i = 0; i < kSent; ++i) {
    const std::string digits = std::to_string(1'000'000 + i / 60 % 60 * 100 + i % 60 + i / 3600 * 10'000);
    bytes += GgaAt(digits.substr(1));
  }
  script.Send(bytes);
  while (receiver.understood() < kSent || receiver.lost() == 0) std::this_thread::sleep_for(1ms);
  int read = 0;
  gps::Fix last;
  while (last.time_of_day.value_or(0.0) < kSent % 3600 + 3600 - 1) last = fixes.next().value(), ++read;
  EXPECT_EQ(receiver.lost() + static_cast<unsigned long long>(read), static_cast<unsigned long long>(kSent));
}

TEST(FaceLive, CommandsAndEndsWithItsLine) {
  PseudoTerminal terminal;
  EXPECT_TRUE(Has(ErrorOf([] { gps::Receiver({.port = "/dev/no-such"}); }),
                  "3 cannot open /dev/no-such: No such file or directory"));
  EXPECT_EQ(ErrorOf([] { gps::Receiver(gps::ReceiverOptions{}); }),
            "2 no port is named, and no line in its place: .port = \"/dev/ttyUSB0\"");
  std::optional<gps::Receiver> receiver;
  MapComPort(1, "/dev/the-hosts");
  receiver.emplace(gps::ReceiverOptions{
      .model = "Ashtech", .port = terminal.Name(), .baud = 19200, .antenna_height = 2.0});
  terminal.Receive(1000, 50ms);
  EXPECT_TRUE(terminal.Speed() == 19200 && receiver->baud() == 19200);
  receiver->command("send", {"$PASHQ,PRT"});
  EXPECT_EQ(terminal.Receive(12), "$PASHQ,PRT\r\n");
  EXPECT_TRUE(
      Has(ErrorOf([&] { receiver->command("raw-interval", {"x"}); }), "2 \"x\" is not a number of seconds"));
  std::jthread refusing([&] {
    terminal.Receive(std::string("$PASHS,RCI,1.000000\r\n").size());
    std::this_thread::sleep_for(300ms);  // the command waits, and then for this
    terminal.Send("$PASHR,ACK*3D\r\n$PASHR,NAK\r\n");
  });
  const auto command = [&] { receiver->command("raw-interval", {"1", "--wait"}); };
  EXPECT_LT(Took([&] {
              EXPECT_EQ(
                  ErrorOf(command),
                  "6 raw-interval: the receiver took 1 line and refused 1, the last one with $PASHR,NAK");
            }),
            1650u);
  refusing.join();
  EXPECT_TRUE(Has(ErrorOf([&] { receiver->command("set-lband", {"0", "1200"}); }), "6 the model Ashtech"));
  EXPECT_EQ(ErrorOf([&] { receiver->command("start"); }),
            "6 start is what making a gps::Receiver and letting it go do by themselves");
  std::stop_source stop;
  stop.request_stop();
  EXPECT_EQ(ErrorOf([&] { receiver->command("default-nmea", {}, stop.get_token()); }),
            "130 default-nmea was stopped; give the command again and let it end");
  EXPECT_EQ(terminal.Receive(1, 50ms), "") << "stopped before its first line";

  auto fixes = receiver->fixes(kLong);
  auto skies = receiver->satellites(kLong);
  terminal.Send(GgaAt("123519") + WithChecksum("$GPGSV,1,1,01,07,45,180,41"));
  EXPECT_EQ(fixes.next()->height_msl, 543.4);
  EXPECT_TRUE(Soon([&] { return receiver->understood() == 4; })) << "with the refusal, which has one comma";
  std::jthread pulling([&] { std::this_thread::sleep_for(600ms), terminal.HangUp(); });
  EXPECT_LT(Took([&] { EXPECT_TRUE(Has(ErrorOf(command), "5 the port")); }), 1650u) << "while it waits";
  pulling.join();
  EXPECT_EQ(
      ErrorOf([&] { fixes.next(); }),
      "5 the port " + terminal.Name() +
          " was lost: it was unplugged, or the other side hung up. Plug it in again and start once more");
  EXPECT_TRUE(skies.next()) << "those that waited for more of their epoch";
  EXPECT_TRUE(Has(ErrorOf([&] { receiver->command("gga-only"); }), "5 the port"));
  receiver.reset();
  EXPECT_TRUE(Has(ErrorOf([&] { fixes.next(); }), "5 the port")) << "it outlives the receiver";
  EXPECT_EQ(GetComPortDevice(1), "/dev/the-hosts");
  MapComPort(1, "/dev/ttyS0");
}

TEST(FaceLive, GivesRawDataOfBlocksAtTheRateThatTheProgramHasFound) {
  Script script;
  const TemporaryFolder folder;
  std::filesystem::create_directories(folder / "gpsengine");
  WriteFile(folder / "gpsengine/gpsengine.ini", "[CSI - MAX]\nBaud=1200\n");
  setenv("XDG_CONFIG_HOME", folder.Path().c_str(), 1);
  gps::Receiver receiver({.model = "CSI - MAX", .line = script.Opener()});
  unsetenv("XDG_CONFIG_HOME");
  EXPECT_EQ(receiver.baud(), 1200);
  auto raw = receiver.raw(kLong);
  script.Send(Blocks(kObservations[0], 1)[0] + "\n" + GgaAt("123519"));
  EXPECT_TRUE(raw.next().value().epoch);
}

TEST(Face, WaitsForTheAnswersToACommand) {
  CRehearsal line;
  COtherGps receiver;
  const std::tuple<const char*, std::string, std::string, std::uint64_t> rows[] = {
      {"gga-only", "$PASHR,ACK*3D\r\n$PASHR,ACK*3D\r\n", "none", 0},
      {"gga-only", "$PASHR,ACK*3D\r\n",
       "6 gga-only: the receiver answered 1 of 2 lines: is it the model CSI, and its baud rate right?", 1500},
      {"query-dgps", "$PASHR,ACK*3D\r\n",
       "6 no report answered query-dgps: is it the model CSI, and its baud rate right?", 5000}};
  gps::Exchange exchange(receiver);
  for (const auto& [name, answers, error, waited] : rows) {
    exchange.Begin();
    for (int i = 0; i < 2; ++i) exchange.OnWritten("$PASHS,X\r\n");
    exchange.OnRead(answers);
    const auto await = [&, name = name] { exchange.Await(gps::FindOperation(name), "CSI", {}); };
    EXPECT_EQ(Took([&, expected = error] { EXPECT_EQ(ErrorOf(await), expected); }), waited);
    exchange.OnReport();
    EXPECT_EQ(Took([&] { ErrorOf(await); }), name[0] == 'q' ? 300u : waited) << "after its last one";
  }
}

TEST(FaceLive, WaitsForTheReportThatAnswersAQuery) {
  Script script;
  gps::Receiver receiver({.model = "Sokkia Axis", .line = script.Opener()});
  auto reports = receiver.reports(1ms);
  const std::jthread answering([&] {
    script.Send("$PASHR,ACK*3D\r\n" + GgaAt("123519"));
    std::this_thread::sleep_for(600ms), script.Send("PEM:07 SAV:N\r\n");
  });
  EXPECT_EQ(ErrorOf([&] { receiver.command("query-elevation-mask", {"--wait"}); }), "none");
  EXPECT_EQ(reports.next()->key, "ack") << "which is no answer";
  EXPECT_EQ(testing::PrintToString(reports.next().value()), "elevation mask 7 deg");
  const std::jthread later([&] { std::this_thread::sleep_for(20ms), script.Send("PEM:08 SAV:N\r\n"); });
  EXPECT_LT(Took([&] { receiver.reports(kLong).next(); }), 5000u) << "as it comes";
}

TEST(FaceLive, StopsACommandInTheMidstOfAWait) {
  Script script;
  gps::Receiver receiver({.model = "Sokkia Axis3", .line = script.Opener()});
  std::stop_source stop;
  const auto command = [&] { receiver.command("set-dgps", {"lband"}, stop.get_token()); };
  const std::jthread stopping([&] { std::this_thread::sleep_for(20ms), stop.request_stop(); });
  EXPECT_LT(Took([&] { EXPECT_TRUE(Has(ErrorOf(command), "130 set-dgps")); }), 4000u) << "of five seconds";
  // A wait for messages is one of short pieces.
  std::stop_source other;
  gps::StopClock clock(other.get_token());
  int pieces = 0;
  const auto block = [&](DWORD) { return ++pieces == 2 && other.request_stop() && false; };
  EXPECT_FALSE(clock.Wait(WaitKind::message, 5000, block));
  EXPECT_EQ(pieces, 2);
  EXPECT_TRUE(clock.Wait(WaitKind::message, 5000, [](DWORD ms) { return ms <= 50; }));
  EXPECT_FALSE(gps::StopClock({}).Wait(WaitKind::message, 5000, [](DWORD) { return false; }))
      << "it has an end";
}
