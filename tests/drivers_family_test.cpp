#include <map>

#include "gpsengine/drivers/receivers.h"
#include "tests/support/drivertest.h"

namespace {

// What a model answers, in the order of the columns: Y or -.
struct Model {
  const char* pszClass;
  const char* pszName;
  int nBaud;
  // HasRawData, GGASendsOrthoHeight, HasDGPSSupport, ImplementsQueryNmea, ImplementsQueryGpsSettings,
  // ImplementsBeacon, ImplementsSetElevMask, ImplementsSetNmea, ImplementsResetAll
  const char* pszAnswers;
};

constexpr Model kModels[] = {
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

std::string Answers(CGPSReceiver& r) {
  std::string answers;
  for (const bool answer : {r.HasRawData(), r.GGASendsOrthoHeight(), r.HasDGPSSupport(),
                            r.ImplementsQueryNmea(), r.ImplementsQueryGpsSettings(), r.ImplementsBeacon(),
                            r.ImplementsSetElevMask(), r.ImplementsSetNmea(), r.ImplementsResetAll()})
    answers += answer ? 'Y' : '-';
  return answers;
}

}  // namespace

TEST(Receivers, AreNineteenAndAnswerForThemselves) {
  CRehearsal line;
  const auto receivers = MakeReceivers();
  EXPECT_EQ(line.Transcript(), "") << "making them tells no receiver anything";
  ASSERT_EQ(receivers.size(), std::size(kModels));
  for (std::size_t i = 0; i < receivers.size(); ++i) {
    const Model& model = kModels[i];
    CGPSReceiver& receiver = *receivers[i];
    SCOPED_TRACE(model.pszName);
    EXPECT_STREQ(receiver.GetRuntimeClass()->m_lpszClassName, model.pszClass);
    EXPECT_STREQ(receiver.GetRuntimeClass()->m_pBaseClass->m_lpszClassName, "CObject");
    EXPECT_EQ(receiver.GetName().ToUtf8(), model.pszName);
    EXPECT_EQ(receiver.GetDefaultBaudrate(), model.nBaud);
    EXPECT_EQ(receiver.GetCurrentBaudrate(), 9600) << "until the properties are set";
    EXPECT_EQ(Answers(receiver), model.pszAnswers);
    EXPECT_TRUE(receiver.IsAvailable());
    EXPECT_FALSE(receiver.IsRtkReceiver() || receiver.IsExternalDriver() || receiver.UseExternalSettings());
  }
}

// What a start writes, what a second of silence writes and what a stop writes, for the models with the full
// row of operations elsewhere. All others only listen.
TEST(Receivers, WriteAtStartAtSilenceAndAtStopOnlyWhatTheirMakeNeeds) {
  const std::map<std::string, std::vector<std::size_t>> kWrites = {
      {"Ashtech", {0, 0, 3}},     {"CSI", {0, 0, 3}},          {"Racal", {0, 0, 3}},
      {"CSI - MAX", {0, 0, 3}},   {"Sokkia Axis3", {0, 0, 3}}, {"Sokkia Axis", {1, 0, 0}},
      {"GSR2650 LB", {13, 0, 0}}, {"Leica", {4, 1, 0}},        {"Trimble", {0, 1, 0}},
  };
  CRehearsal line;
  const auto writes = [&line] {
    const auto& steps = line.GetSteps();
    const auto n = std::count_if(steps.begin(), steps.end(),
                                 [](const auto& step) { return step.kind == CRehearsal::StepKind::write; });
    line.ForgetSteps();
    return static_cast<std::size_t>(n);
  };
  for (const auto& receiver : MakeReceivers()) {
    const std::string name = receiver->GetName().ToUtf8();
    receiver->SetupReceiver(1, 0, 0.0, "", false);
    std::vector<std::size_t> counts;
    EXPECT_TRUE(receiver->Initialize());
    counts.push_back(writes());
    receiver->KeepAlive();
    counts.push_back(writes());
    receiver->Suspend();
    counts.push_back(writes());
    const auto known = kWrites.find(name);
    EXPECT_EQ(counts, known == kWrites.end() ? std::vector<std::size_t>(3) : known->second) << name;
  }
}

// An operation that a make lacks may be called all the same.
TEST(Receivers, ThatOnlyListenIgnoreEveryCommand) {
  CRehearsal line;
  for (const auto& receiver : MakeReceivers()) {
    if (Answers(*receiver) != "---------") continue;
    CGPSReceiver& r = *receiver;
    r.SetupReceiver(1, 0, 0.0, "", false);
    r.Initialize();
    line.ForgetSteps();
    r.SetDefaultNMEA(), r.SetGgaOnlyNMEA(), r.QueryNmeaActive(), r.QueryGpsSettings();
    r.QueryBeacon(), r.SetBeacon(BEACON_MODE_AUTO, "", ""), r.QuerySatElevMask(), r.SetSatElevMask(5);
    r.QueryDgpsMode(), r.SetDgpsMode(DGPS_MODE_WAAS), r.QueryOmniStar(), r.DgpsStatusMsg(true);
    r.QueryLbandSatellites(), r.SetLbandFrequency(0, 0), r.SendCorrection(), r.ChangeCDGPS_Freq(0),
        r.QueryWAAS();
    EXPECT_FALSE(r.ResetAll(true));
    EXPECT_FALSE(r.SetRawDataOutputInterval(1));
    EXPECT_TRUE(r.EnablePostProcessing(true));
    r.Suspend();
    EXPECT_EQ(line.Transcript(), "") << r.GetName().ToUtf8();
  }
}
