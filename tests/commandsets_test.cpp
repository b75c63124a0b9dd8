// What each model is and is told, stated here by itself. docs/receivers.md, which the program prints, is no
// witness: it would be wrong where the drivers are.
#include "gpsengine/drivers/receivers.h"
#include "gpsengine/drivers/sokkiaaxis3.h"
#include "gpsengine/engine/gpsengine.h"
#include "gpsengine/face/rehearse.h"
#include "tests/support/conversation.h"
#include "tests/support/receivertest.h"

using namespace std::string_literals;

namespace {

// Class, name, baud rate, and the answers in the order of AnswersOf.
struct ModelRow {
  const char *className, *name;
  int baud;
  const char* answers;
};
constexpr ModelRow kModels[] = {
    {"CAshtech", "Ashtech", 9600, "Y------Y-"},
    {"CCSI", "CSI", 9600, "Y--YYYYYY"},
    {"CCSImax", "CSI - MAX", 9600, "Y-YY-YYY-"},
    {"CGarmin", "Garmin 17-N", 4800, "---------"},
    {"CHolux", "Holux", 4800, "--Y----YY"},
    {"CJavad", "Javad", 9600, "---------"},
    {"CLeica", "Leica", 9600, "---------"},
    {"COmnistar", "Omnistar", 4800, "---------"},
    {"CRacal", "Racal", 9600, "YY-----Y-"},
    {"CSatloc", "Satloc", 9600, "---------"},
    {"CSirf", "SiRF", 4800, "--Y----YY"},
    {"CSokkia", "Sokkia Axis", 9600, "-----YYY-"},
    {"CSokkiaAxis3", "Sokkia Axis3", 9600, "Y-YY-YYY-"},
    {"Cgsr2650lb", "GSR2650 LB", 9600, "Y-YY--YYY"},
    {"CStarlink", "Starlink", 9600, "-Y-Y-YYYY"},
    {"CToughbookGPS01", "Toughbook GPS01", 4800, "--Y----YY"},
    {"CTrimble", "Trimble", 4800, "---------"},
    {"CTrimblePocketGps", "Trimble Pocket", 9600, "---------"},
    {"COtherGps", "Other", 9600, "---------"},
};

std::string AnswersOf(CGPSReceiver& r) {
  std::string answers;
  for (const bool answer : {r.HasRawData(), r.GGASendsOrthoHeight(), r.HasDGPSSupport(),
                            r.ImplementsQueryNmea(), r.ImplementsQueryGpsSettings(), r.ImplementsBeacon(),
                            r.ImplementsSetElevMask(), r.ImplementsSetNmea(), r.ImplementsResetAll()})
    answers += answer ? 'Y' : '-';
  return answers;
}

// Every operation by the name that it has in the rows below, and as users give it. Those without words are
// for hosts alone.
const std::vector<std::string> kOperations = Split(
    "start=start;full=default-nmea;gga=gga-only;nmea?=query-nmea;settings?=query-settings;"
    "beacon?=query-beacon;beacon auto=set-beacon auto;beacon=set-beacon 290.5 100;beacon rate=;mask=;"
    "mask?=query-elevation-mask;none=set-dgps none;beacons=set-dgps beacon;lband=set-dgps lband;"
    "waas=set-dgps waas;cdgps=set-dgps cdgps;omnistar=set-dgps omnistar;unknown=;source?=query-dgps;"
    "omnistar?=query-omnistar;status on=dgps-status on;status off=dgps-status off;"
    "lband?=query-lband-satellites;tune auto=set-lband 0 1200;tune=set-lband 1530.5 1200;waas?=query-waas;"
    "datum=send-correction;tune cdgps=set-cdgps-frequency 1547.5;raw on=post-processing on;"
    "raw off=post-processing off;every 5=;every 1=raw-interval 1;reset=reset;keep alive=keep-alive;"
    "suspend=suspend",
    ';');

std::string NameOf(const std::string& operation) {
  return operation.substr(0, operation.find('='));
}

gps::Result Perform(const std::string& operation, CGPSReceiver& receiver) {
  const std::string name = NameOf(operation), words = operation.substr(name.size() + 1);
  if (!words.empty()) return Do(receiver, words);
  if (name == "every 5") return receiver.SetRawDataOutputInterval(5.0) ? gps::Result::yes : gps::Result::no;
  if (name == "mask") receiver.SetSatElevMask(-10);
  if (name == "unknown") receiver.SetDgpsMode(static_cast<DgpsMode>(6));
  if (name == "beacon rate") receiver.SetBeacon(static_cast<BEACON_MODE_TYPE>(2), "120", "");
  return gps::Result::none;
}

// The lines without their line ends, each with the wait after it; "*" stands for "*" and the checksum, "-"
// for no line, "0x" for bytes. "@" stands for the lines of another operation.
struct CommandRow {
  const char *classes, *operations, *lines;
};
constexpr char kAshtechs[] = "CAshtech CCSI CRacal", kJs[] = "CSokkiaAxis3 CCSImax",
               kSirfs[] = "CSirf CHolux CToughbookGPS01", kGsr[] = "Cgsr2650lb";
constexpr CommandRow kCommands[] = {
    {kAshtechs, "full",
     "$PASHS,NME,ALL,A,OFF 200; $PASHS,NME,GGA,A,ON 200; $PASHS,NME,GSA,A,ON 200; $PASHS,NME,VTG,A,ON 200; "
     "$PASHS,NME,SAT,A,ON 200; $PASHS,NME,GSV,A,ON 200"},
    {kAshtechs, "gga", "$PASHS,NME,ALL,A,OFF 200; $PASHS,NME,GGA,A,ON 200"},
    {kAshtechs, "raw on",
     "$PASHS,RAW,MBN,A,ON 200; $PASHS,RAW,PBN,A,ON 200; $PASHS,RAW,SNV,A,ON 200; = true"},
    {kAshtechs, "raw off",
     "$PASHS,RAW,MBN,A,OFF 200; $PASHS,RAW,PBN,A,OFF 200; $PASHS,RAW,SNV,A,OFF 200; = true"},
    {kAshtechs, "suspend", "$PASHS,RAW,MBN,A,OFF 200; $PASHS,RAW,PBN,A,OFF 200; $PASHS,RAW,SNV,A,OFF 200"},
    {kAshtechs, "every 5", "$PASHS,RCI,5.000000 200; = true"},
    {kAshtechs, "every 1", "$PASHS,RCI,1.000000 200; = true"},
    {"CCSI", "nmea?|settings?|mask?", "$PASHQ,PAR 500"},
    {"CCSI", "mask", "$PASHS,PEM,-10 200"},
    {"CCSI", "reset",
     "$PASHS,RST 10000; - 3000; $PASHS,RTC,AUT,Y 1000; $PASHS,RTC,REM,B 1000; $PASHS,NME,GGA,A,ON 1000; "
     "$PASHS,NME,GSA,A,ON 1000; $PASHS,NME,VTG,A,ON 1000; $PASHS,NME,SAT,A,ON 1000; $PASHS,PDP,14 1000; "
     "$PASHS,HDP,10 1000; $PASHS,VDP,10 1000; $PASHS,SAV,Y 1000; = true"},
    {"CCSI CSokkia CSokkiaAxis3 CCSImax", "beacon?", "$GPCRQ,MSS 200; $GPCRQ,MSK 200"},
    {"CCSI CSokkia CStarlink", "beacon auto", "$GPMSK,,A,,A,0 200"},
    {"CCSI CSokkia CStarlink", "beacon", "$GPMSK,290.5,M,100,M,0 200"},
    {"CCSI CSokkia CStarlink", "beacon rate", "$GPMSK,120,M,,A,0 200"},
    {"CTrimble CLeica", "keep alive", "QRV Zelo 0"},
    {"CLeica", "start",
     "$PMVXG,007,,1,,,,, 200; $PMVXG,007,GGA,0,1,,1,6,2 200; $PMVXG,007,GSA,0,1,,1,,, 200; "
     "$PMVXG,007,GSV,0,1,,5,,, 200; = true"},
    {"CStarlink", "full",
     "$PSLIS,NME,ALL,A,OFF 200; $PSLIS,NME,GGA,A,ON 200; $PSLIS,NME,GSA,A,ON 200; $PSLIS,NME,VTG,A,ON 200; "
     "$PSLIS,NME,GSV,A,ON 200"},
    {"CStarlink", "gga", "$PSLIS,NME,ALL,A,OFF 200; $PSLIS,NME,GGA,A,ON 200"},
    {"CStarlink", "beacon?", "$PSLIQ,NME,MSS 200; $PSLIQ,NME,MSK 200"},
    {"CStarlink", "nmea?|mask?", "$PSLIQ,PAR 500"},
    {"CStarlink", "mask", "$PSLIS,ELM,-10 200"},
    {"CStarlink", "reset", "$PSLIS,RST,CLR 100; - 5000; @full; = true"},
    {"CSokkia", "start", "$PMCAG,008,15,,,,,,,,,,5,,,,, 500; = true"},
    {"CSokkia", "mask?", "$PMCAG,004,908 200"},
    {"CSokkia", "mask", "$PMCAG,008,15,,,,-10,,,,,,,,,,, 800"},
    {"CSokkia", "full", "$PMCAG,005,0,900,0,906,0,907,0,GGA,1,GSA,1,VTG,1,GSV,1,ZDA,0,RMC,0,GLL,0 1000"},
    {"CSokkia", "gga", "$PMCAG,005,0,900,0,906,0,907,0,GGA,1,GSA,0,VTG,0,GSV,0,ZDA,0,RMC,0,GLL,0 1000"},
    {kJs, "start", "- 500; = true"},
    {kJs, "full",
     "$JOFF 1000; $JASC,GPGGA,1 200; $JASC,GPGSA,1 200; $JASC,GPVTG,1 200; $JASC,GPGSV,1 200; $JSAVE 2000; "
     "$JBIN,95,0.2 200"},
    {kJs, "gga", "$JOFF 1000; $JASC,GPGGA,1 200; $JSAVE 2000; $JBIN,95,0.2 200"},
    {kJs, "nmea?|mask?|source?", "$JSHOW 200"},
    {kJs, "mask", "$JMASK,-10 800; $JSAVE 2000; $JBIN,95,0.2 200"},
    {kJs, "beacon auto", "$GPMSK,,A,,A,0 200; $JSAVE 2000"},
    {kJs, "beacon", "$GPMSK,290.5,M,100,M,0 200; $JSAVE 2000"},
    {kJs, "beacon rate", "$GPMSK,120,M,,A,0 200; $JSAVE 2000"},
    {kJs, "none", "$JDIFF,OFF 1000; $JSAVE 2000"},
    {kJs, "beacons", "$JDIFF,BEACON 1000; $JSAVE 2000"},
    {kJs, "lband", "$JAPP,2 5000; $JDIFF,LBAND 5000; $JSAVE 2000"},
    {kJs, "waas", "$JAPP,1 5000; $JDIFF,WAAS 5000; $JSAVE 2000"},
    {kJs, "cdgps|omnistar|unknown", "$JSAVE 2000"},
    {kJs, "omnistar?", "$JI 200; $JGEO 200; $JSHOW 200"},
    {kJs, "lband?", "$JLBEAM 200"},
    {kJs, "status on", "$JASC,D1,1 0"},
    {kJs, "status off", "$JASC,D1,0 0"},
    {kJs, "tune auto", "$JFREQ,0.000000,1200 800; $JSAVE 2000; $JBIN,95,0.2 200"},
    {kJs, "tune", "$JFREQ,1530500.000000,1200 800; $JSAVE 2000; $JBIN,95,0.2 200"},
    {kJs, "raw on|every 1", "$JBIN,96,1 0; $JBIN,95,1 0; $JSAVE 0; = true"},
    {kJs, "raw off", "$JBIN,96,0 0; $JBIN,95,0 0; $JSAVE 0; = true"},
    {kJs, "suspend", "$JBIN,96,0 0; $JBIN,95,0 0; $JSAVE 0"},
    {kJs, "every 5", "$JBIN,96,0.2 0; $JBIN,95,0.2 0; $JSAVE 0; = true"},
    {kSirfs, "full",
     "$PSRF103,00,00,02,01* 400; $PSRF103,02,00,02,01* 400; $PSRF103,05,00,02,01* 400; $PSRF103,03,00,02,01* "
     "400; $PSRF103,04,00,00,01* 400; $PSRF103,01,00,00,01* 400"},
    {kSirfs, "gga",
     "$PSRF103,00,00,02,01* 400; $PSRF103,02,00,00,01* 400; $PSRF103,05,00,00,01* 400; $PSRF103,03,00,00,01* "
     "400; $PSRF103,04,00,00,01* 400; $PSRF103,01,00,00,01* 400"},
    {kSirfs, "none", "$PSRF100,0,4800,8,1,0* 3000; 0xA0A20007850000000000000085B0B3 3000; @nmea"},
    {kSirfs, "waas", "$PSRF100,0,4800,8,1,0* 3000; 0xA0A20007850100000000000086B0B3 3000; @nmea"},
    {kSirfs, "beacons|lband|cdgps|omnistar|unknown", "@none"},
    {kSirfs, "nmea", "0xA0A200188102000000000000000000000000000000000000000012C00155B0B3 3000; @full"},
    {kSirfs, "reset", "@nmea; = true"},
    {kGsr, "start", "@full; = true"},
    {kGsr, "full",
     "LOG  GPGGA ONTIME 1 0 NOHOLD 200; UNLOG  GPGGALONG 200; UNLOG  GPGGARTK 200; UNLOG  GPGLL 200; UNLOG  "
     "GPGRS 200; LOG  GPGSA ONTIME 1 0 NOHOLD 200; UNLOG  GPGST 200; LOG  GPGSV ONTIME 1 0 NOHOLD 200; UNLOG "
     " GPRMB 200; UNLOG  GPRMC 200; LOG  GPVTG ONTIME 1 0 NOHOLD 200; UNLOG  GPZDA 200; UNLOG  GPALM 200"},
    {kGsr, "gga",
     "UNLOG  GPALM 200; LOG  GPGGA ONTIME 1 0 NOHOLD 200; UNLOG  GPGGALONG 200; UNLOG  GPGGARTK 200; UNLOG  "
     "GPGLL 200; UNLOG  GPGRS 200; UNLOG  GPGSA 200; UNLOG  GPGST 200; UNLOG  GPGSV 200; UNLOG  GPRMB 200; "
     "UNLOG  GPRMC 200; UNLOG  GPVTG 200; UNLOG  GPZDA 200"},
    {kGsr, "mask?|settings?", "LOG COM2 ECUTOFFA ONCE 100"},
    {kGsr, "nmea?", "LOG LOGLISTA ONCE 200"},
    {kGsr, "beacon?", "LOG COM2 RXCONFIGA ONCE 100"},
    {kGsr, "source?",
     "LOG COM2 RTKSOURCEA ONCE 100; LOG COM2 SBASCONTROLA ONCE 100; LOG COM2 PSRDIFFSOURCEA ONCE 100"},
    {kGsr, "waas?", "LOG WAAS1A ONCE 200"},
    {kGsr, "omnistar?", "LOG OMNIINFOA ONCE 200; LOG OMNISTATA ONCE 200; LOG OMNIHPPOSA ONCE 200"},
    {kGsr, "lband?", "@omnistar?"},
    {kGsr, "mask", "ECUTOFF -10 200; SAVECONFIG 500"},
    {kGsr, "beacon", "RTKSOURCE AUTO ANY 100; PSRDIFFSOURCE AUTO ANY 100; SBASCONTROL ENABLE AUTO 100"},
    {kGsr, "beacon auto|beacon rate", "@beacon"},
    {kGsr, "datum lines", "UNDULATION TABLE 100; DATUM WGS84 100"},
    {kGsr, "save", "SAVECONFIG 2000"},
    {kGsr, "no sbas", "SBASCONTROL DISABLE AUTO 100; @save"},
    {kGsr, "none", "@datum lines; RTKSOURCE NONE 100; PSRDIFFSOURCE NONE 100; @no sbas"},
    {kGsr, "beacons", "@datum lines; @beacon; @save"},
    {kGsr, "lband", "@datum lines; RTKSOURCE OMNISTAR 100; PSRDIFFSOURCE NONE 100; @no sbas"},
    {kGsr, "waas",
     "@datum lines; RTKSOURCE NONE 100; PSRDIFFSOURCE NONE 100; SBASCONTROL ENABLE AUTO 100; @save"},
    {kGsr, "cdgps", "@datum lines; PSRDIFFSOURCE CDGPS 100; RTKSOURCE NONE 100; @no sbas"},
    {kGsr, "omnistar", "@datum lines; PSRDIFFSOURCE OMNISTAR 100; RTKSOURCE NONE 100; @no sbas"},
    {kGsr, "unknown", "@datum lines; @save"},
    {kGsr, "datum",
     "USERDATUM 6378137 298.257222101 -.9910 1.9072 .5129 .000000125033 .0000000467845 .0000000565292 0  "
     "100; datum user 100; UNDULATION USER -1.09 100; SAVECONFIG 1000"},
    {kGsr, "tune cdgps", "ASSIGNLBAND CDGPS 1547000 4800 100; SAVECONFIG 1000"},
    {kGsr, "tune auto", "RTKSOURCE OMNISTAR ANY 800; SAVECONFIG 2000"},
    {kGsr, "tune", "ASSIGNOMNI USER 1530500 1200 800; SAVECONFIG 2000"},
    {kGsr, "reset", "RESET 0 10000; @full; @beacons; - 3000; = true"},
    {kGsr, "raw on",
     "LOG RANGEB ONTIME 1 100; LOG RAWEPHEMB ONCHANGED 100; LOG ALMANACB ONCHANGED 100; SAVECONFIG 1000; = "
     "true"},
    {kGsr, "every 5", "UNLOG RANGEB 100; UNLOG RAWEPHEMB 100; UNLOG ALMANACB 100; SAVECONFIG 1000; = true"},
    {kGsr, "every 1", "@every 5"},
    // Of all others.
    {"", "start|raw on|raw off", "= true"},
    {"", "every 5|every 1|reset", "= false"},
};

std::string Expected(const std::string& className, const std::string& operation);

// One entry of a row as CRehearsal puts it.
std::string Spelled(const std::string& className, const std::string& entry) {
  if (entry[0] == '=') return "result" + entry.substr(1);
  if (entry[0] == '@') return Expected(className, entry.substr(1));
  const auto blank = entry.rfind(' ');
  std::string line = entry.substr(0, blank), wait = entry.substr(blank + 1);
  if (line.ends_with('*')) {
    line = WithChecksum(line.substr(0, line.size() - 1));
    line.resize(line.size() - 2);
  }
  std::string steps = line == "-"              ? ""
                      : line.starts_with("0x") ? "write-hex " + line.substr(2)
                                               : "write \"" + line + "\\r\\n\"";
  if (wait == "0") return steps;
  return (steps.empty() ? "" : steps + "; ") + "wait " + wait;
}

std::string Expected(const std::string& className, const std::string& operation) {
  for (const CommandRow& row : kCommands) {
    if ((*row.classes != '\0' &&
         (' ' + std::string(row.classes) + ' ').find(' ' + className + ' ') == std::string::npos) ||
        ('|' + std::string(row.operations) + '|').find('|' + operation + '|') == std::string::npos)
      continue;
    std::string lines = row.lines, steps;
    for (std::size_t end = 0; !lines.empty(); lines.erase(0, end + 2)) {
      end = std::min(lines.find("; "), lines.size());
      steps += (steps.empty() ? "" : "; ") + Spelled(className, lines.substr(0, end));
      if (end == lines.size()) break;
    }
    return steps;
  }
  return "";
}

class Receivers : public testing::Test {
 protected:
  Receivers() { CSokkiaAxis3().SetRawDataOutput(true, 5); }

  // A new receiver on an open port.
  void Begin(CGPSReceiver& receiver) {
    receiver.SetProperties();
    receiver.SetupReceiver(1, 0, 0.0, "", false);
    receiver.Initialize();
    line.ForgetSteps();
  }

  CWinApp app{"gpsengine-test"};
  const CGPSReceiver::SharedState shared;
  CRehearsal line;
};

}  // namespace

TEST_F(Receivers, AreNineteenWithTheirNamesRatesAndAnswers) {
  const auto receivers = MakeReceivers();
  ASSERT_EQ(receivers.size(), std::size(kModels));
  for (std::size_t i = 0; i < std::size(kModels); ++i) {
    const ModelRow& row = kModels[i];
    CGPSReceiver& receiver = *receivers[i];
    EXPECT_STREQ(receiver.GetRuntimeClass()->m_lpszClassName, row.className);
    EXPECT_STREQ(receiver.GetRuntimeClass()->m_pBaseClass->m_lpszClassName, "CObject");
    EXPECT_EQ(receiver.GetName(), row.name);
    EXPECT_EQ(receiver.GetCurrentBaudrate(), 9600) << "until the properties are set";
    EXPECT_EQ(receiver.GetDefaultBaudrate(), row.baud) << row.name;
    EXPECT_EQ(AnswersOf(receiver), row.answers) << row.name;
    EXPECT_TRUE(receiver.IsAvailable());
    EXPECT_FALSE(receiver.IsRtkReceiver() || receiver.IsExternalDriver() || receiver.UseExternalSettings());
  }
}

TEST_F(Receivers, AreToldWhatTheirLanguageHas) {
  for (std::size_t i = 0; i < std::size(kModels); ++i) {
    for (const std::string& operation : kOperations) {
      const CGPSReceiver::SharedState asItWas;
      const auto receiver = std::move(MakeReceivers()[i]);
      Begin(*receiver);
      const gps::Result result = Perform(operation, *receiver);
      std::string steps = line.Transcript();
      if (result != gps::Result::none)
        steps += (steps.empty() ? "result "s : "; result "s) + gps::NameOf(result);
      EXPECT_EQ(steps, Expected(kModels[i].className, NameOf(operation))) << kModels[i].name << operation;
    }
  }
}

TEST_F(Receivers, CanBeUnderstoodWhereverASequenceIsStopped) {
  constexpr DWORD kNever = 1'000'000;
  // Stops an operation after so long, and starts the next run. Gives how long the operation took.
  const auto run = [this](const char* name, const std::string& operation, DWORD stop) {
    const CGPSReceiver::SharedState asItWas;
    const auto simulated = simulator::MakeReceiver({.model = name});
    CGPSEngine engine;
    CGPSReceiver& receiver = *engine.FindReceiver(name);
    line.SetStepHandler([&](const CRehearsal::Step& step) {
      simulated->Receive(step.bytes);
      simulated->Advance(step.ms / 1000.0);
    });
    Begin(receiver);
    line.StopAfter(stop);
    Perform(operation, receiver);
    DWORD time = 0;
    for (const CRehearsal::Step& step : line.GetSteps()) time += step.ms;
    line.StopAfter(kNever);
    receiver.Suspend();
    receiver.Initialize();
    EXPECT_NE(simulated->Advance(3.0).find("GGA,"), std::string::npos)
        << name << ", " << NameOf(operation) << " stopped after " << stop;
    line.SetStepHandler(nullptr);
    return time;
  };
  for (const char* name : {"CSI", "Leica", "SiRF", "Sokkia Axis", "Sokkia Axis3", "GSR2650 LB", "Starlink"}) {
    for (const std::string& operation : kOperations) {
      const DWORD whole = run(name, operation, kNever);
      for (DWORD stop = 0; stop < whole; stop += 190) run(name, operation, stop);
    }
  }
}

TEST_F(Receivers, WaitForNobodyOnAClosedPort) {
  for (const auto& receiver : MakeReceivers()) {
    const std::string name = receiver->GetName().ToUtf8();
    RunEverything(*receiver);
    receiver->SendCorrection(), receiver->ChangeCDGPS_Freq(1547), receiver->SetGgaOnlyNMEA();
    receiver->Suspend();
    const bool changesSource = name == "CSI - MAX" || name == "Sokkia Axis3";
    EXPECT_EQ(line.Transcript(), changesSource ? "wait 5000; wait 5000; wait 2000" : "") << name;
    line.ForgetSteps();
  }
}
