#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>

#include "gpsengine/datalog/datalog.h"
#include "gpsengine/platform/rehearsal.h"

namespace {

/// A log of nothing.
class NullLog : public CDataLog {
 public:
  using CDataLog::CDataLog;
  bool Open() override { return true; }
  void Close() override {}
  bool IsOpen() const override { return false; }
  bool IsEpochDue(const CGPSDataRaw&) const override { return true; }
  CString GetFileExtension() override { return ".raw"; }
  bool WriteEpoch(const CGPSDataRaw&) override { return true; }
  bool WriteEphemeris(const CGPSDataEphemeris&) override { return true; }
  bool WriteRemark(const CString&) override { return true; }
  bool Flush() override { return true; }
  int GetNumEphemerides() override { return 0; }
  int GetNumEpochs() override { return 42; }
  CString GetFormatName() override { return "nothing"; }
  CString GetLastErrorString() override { return ""; }
  CString Port() const { return m_strPort; }
};

class DataLog : public testing::Test {
 protected:
  CRehearsal time;
  NullLog log{nullptr};
};

TEST_F(DataLog, IsReadyWithANameAnIntervalAndTheSwitchOn) {
  EXPECT_FALSE(log.IsReady());
  log.Enable(true);
  EXPECT_FALSE(log.IsReady());
  log.SetFilename("line7");
  EXPECT_TRUE(log.IsReady());
  log.SetLogInterval(0.1);
  EXPECT_TRUE(log.IsReady());
  log.SetLogInterval(0.09);
  EXPECT_FALSE(log.IsReady());
  log.SetLogInterval(5.0);
  log.Enable(false);
  EXPECT_FALSE(log.IsReady());
}

TEST_F(DataLog, FilenameEndsAtItsFirstDotAndTakesTheExtension) {
  for (const auto& [name, expected] :
       {std::pair("line7", "line7.raw"), std::pair("line7.dat.old", "line7.raw"),
        std::pair("a.d/line7", "a.raw"), std::pair("", ".raw")}) {
    EXPECT_TRUE(log.SetFilename(name));
    EXPECT_EQ(log.GetFilename(), expected);
  }
}

TEST_F(DataLog, DefaultFilenameHasTheLocalDateAndTimeWithoutZeros) {
  std::tm local{};
  local.tm_year = 2009 - 1900;
  local.tm_mon = 2;
  local.tm_mday = 3;
  local.tm_hour = 9;
  local.tm_min = 5;
  local.tm_sec = 7;
  local.tm_isdst = -1;
  time.SetUnixSeconds(std::mktime(&local));
  EXPECT_EQ(log.GenerateDefaultFilename("job.txt"), "job_3Mar_9h5m7s.raw");
  EXPECT_EQ(log.GetFilename(), "");
  EXPECT_TRUE(log.SetDefaultFilename("night"));
  EXPECT_EQ(log.GetFilename(), "night_3Mar_9h5m7s.raw");
}

TEST_F(DataLog, MinutesElapsedPassOverWholeDays) {
  constexpr struct {
    DWORD seconds;
    int minutes;
  } kSpans[] = {{0, 0}, {59, 0}, {90, 1}, {3'600, 60}, {86'399, 1'439}, {86'400, 0}, {25 * 3'600, 60}};
  for (const auto& span : kSpans) {
    time.SetUnixSeconds(1'000'000'000);
    log.SetTimeMark();
    time.SetUnixSeconds(1'000'000'000 + span.seconds);
    EXPECT_EQ(log.GetMinutesElapsed(), span.minutes) << span.seconds;
  }
  EXPECT_EQ(log.GetStatusString(), "Num Epochs: 42, Time: 60 min.");
  EXPECT_EQ(NullLog(nullptr).GetMinutesElapsed(), 0);
}

TEST_F(DataLog, OnlyPortTwoIsNotComOne) {
  EXPECT_EQ(log.Port(), "COM1");
  log.SetPort(2);
  EXPECT_EQ(NullLog(log).Port(), "COM2");
  for (const int port : {0, 1, 3}) {
    log.SetPort(port);
    EXPECT_EQ(log.Port(), "COM1");
  }
}

}  // namespace
