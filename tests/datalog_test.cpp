#include <ctime>

#include "gpsengine/platform/messagebox.h"
#include "gpsengine/platform/rehearsal.h"
#include "host/exports/rinexlog.h"
#include "tests/support/basics.h"

namespace {

/// A log of a host's own, with what it inherits.
class Log : public host::RinexLog {
 public:
  using CDataLog::m_strDefaultFilename;
  using CDataLog::m_strPort;
  int GetNumEpochs() override { return 42; }
};

class DataLog : public testing::Test {
 protected:
  CRehearsal time;
  Log log;
};

TEST_F(DataLog, IsReadyWithANameAnIntervalAndTheSwitchOn) {
  for (const std::string name : {"", "line7"}) {
    for (const double interval : {0.09, 0.1, 5.0}) {
      for (const bool on : {false, true}) {
        if (!name.empty()) log.SetFilename(name.c_str());
        log.SetLogInterval(interval);
        log.Enable(on);
        EXPECT_EQ(log.IsReady(), !name.empty() && interval >= 0.1 && on) << name << interval << on;
      }
    }
  }
}

TEST_F(DataLog, FilenameEndsAtItsFirstDotAndTakesTheExtension) {
  for (const auto& [name, expected] :
       {std::pair("line7", "line7.obs"), std::pair("line7.dat.old", "line7.obs"),
        std::pair("a.d/line7", "a.obs"), std::pair("", ".obs"), std::pair(".line7", ".obs")}) {
    EXPECT_TRUE(log.SetFilename(name));
    EXPECT_EQ(log.GetFilename(), expected);
  }
}

TEST_F(DataLog, DefaultFilenameHasTheLocalDateAndTimeWithoutZeros) {
  std::tm local{};
  strptime("2009-03-03 09:05:07", "%F %T", &local);
  local.tm_isdst = -1;
  time.SetUnixSeconds(std::mktime(&local));
  EXPECT_EQ(log.GenerateDefaultFilename("job.txt"), "job_3Mar_9h5m7s.obs");
  EXPECT_EQ(log.GetFilename(), "");
  EXPECT_TRUE(log.SetDefaultFilename("night"));
  EXPECT_EQ(log.GetFilename(), log.m_strDefaultFilename + "_3Mar_9h5m7s.obs");
  std::string months;
  for (local.tm_mon = 0; local.tm_mon < 12; ++local.tm_mon) {
    std::tm moment = local;
    time.SetUnixSeconds(std::mktime(&moment));
    months += log.GenerateDefaultFilename("").ToUtf8().substr(2, 3);
  }
  EXPECT_EQ(months, "JanFebMarAprMayJunJulAugSepOctNovDec");
}

TEST_F(DataLog, MinutesElapsedPassOverWholeDays) {
  constexpr std::pair<int, int> kSpans[] = {{0, 0},          {59, 0},     {90, 1},         {3'600, 60},
                                            {86'399, 1'439}, {86'400, 0}, {25 * 3'600, 60}};
  for (const auto& [seconds, minutes] : kSpans) {
    time.SetUnixSeconds(1'000'000'000);
    log.SetTimeMark();
    time.SetUnixSeconds(1'000'000'000 + seconds);
    EXPECT_EQ(log.GetMinutesElapsed(), minutes) << seconds;
  }
  SetMessageBoxHandler([](const CString& text, BoxKind) { ADD_FAILURE() << text.ToUtf8(); });
  EXPECT_EQ(log.GetStatusString(), "Num Epochs: 42, Time: 60 min.");
  SetMessageBoxHandler(nullptr);
  EXPECT_EQ(Log().GetMinutesElapsed(), 0);
}

TEST_F(DataLog, OnlyPortTwoIsNotComOne) {
  std::string ports = log.m_strPort.ToUtf8();
  for (const int port : {2, 0, 2, 1, 2, 3}) log.SetPort(port), ports += log.m_strPort.ToUtf8();
  EXPECT_EQ(ports, "COM1COM2COM1COM2COM1COM2COM1");
}

}  // namespace
