#include <optional>

#include "tests/support/receivertest.h"

namespace {

class Gsr2650Log : public ReceiverTest<> {
 protected:
  /// Every log is taken; whether it is published tells whether it said anything.
  const CGPSStatusData& StatusAfter(const std::string& log, bool published = true) {
    EXPECT_EQ(Feed(log), published) << log;
    if (!published) Feed("$PASHR,ACK*3D\r\n");
    return Last().m_Status;
  }
};

TEST_F(Gsr2650Log, LoglistSaysOnOrOffOfAllSeven) {
  constexpr struct {
    const char* name;
    NmeaMsgStatus CGPSStatusData::*field;
  } kNames[] = {{"GPGGA", &CGPSStatusData::m_nNmeaGGA}, {"GPGSA", &CGPSStatusData::m_nNmeaGSA},
                {"GPZDA", &CGPSStatusData::m_nNmeaZDA}, {"GPGLL", &CGPSStatusData::m_nNmeaGLL},
                {"GPVTG", &CGPSStatusData::m_nNmeaVTG}, {"GPSAT", &CGPSStatusData::m_nNmeaSAT},
                {"GPGSV", &CGPSStatusData::m_nNmeaGSV}};
  for (const auto& named : kNames) {
    const auto& status =
        StatusAfter(std::string("#LOGLISTA,COM1,0;2,COM1,") + named.name + "A,ONTIME*12345678\r\n");
    EXPECT_TRUE(status.m_bNmeaStatusValid);
    for (const auto& other : kNames)
      EXPECT_EQ(status.*other.field, &other == &named ? NMEA_MSG_ON : NMEA_MSG_OFF)
          << named.name << other.name;
  }
}

TEST_F(Gsr2650Log, ElevationMask) {
  constexpr struct {
    const char* log;
    std::optional<int> mask;
  } kLogs[] = {{"#ECUTOFFA,COM1,0;5.0*ABCD\r\n", 5}, {"#ECUTOFFA,COM1,0;7.9*ABCD\r\n", 7},
               {"#ECUTOFFA,COM1,0;x*ABCD\r\n", {}},  {"#ECUTOFFA,COM1,0;9.0\r\n", {}},
               {"#ECUTOFFA,COM1,0*12\r\n", {}},      {"#ECUTOFFA;1e300*12\r\n", {}}};
  int mask = 0;
  for (const auto& [log, reported] : kLogs) {
    const auto& status = StatusAfter(log, reported.has_value());
    mask = reported.value_or(mask);
    EXPECT_EQ(status.m_bElevationMaskValid, reported.has_value()) << log;
    EXPECT_EQ(status.m_nElevationMask, mask) << log;
  }
}

TEST_F(Gsr2650Log, TextsStandBehindAShortName) {
  constexpr struct {
    const char* log;
    const char* text;
  } kLogs[] = {{"#OMNIINFOA,COM1;AAA,BBB*1234\r\n", "$OMNII,AAA,BBB*"},
               {"#OMNISTATA,COM1;CCC*12\r\n", "$OMNIS,CCC*"},
               {"#WAAS1A,COM1;122,ffffffff*12\r\n", "$WAAS1,122,ffffffff*"},
               {"#OMNIHPPOSA,COM1;A,B,C,D,E,F,G*12\r\n", "$OMNIP,A,B,C,D,E,"},
               {"#OMNIHPPOSA,COM1,1,2,3,4;A,B,C,D*12\r\n", "$OMNIP,"},
               {"#OMNIINFOA,COM1;AAA,BBB\r\n", "$OMNII,"},
               {"#WAAS1A,COM1,AAA*12\r\n", "$WAAS1,"}};
  for (const auto& [log, text] : kLogs) {
    const auto& status = StatusAfter(log);
    EXPECT_TRUE(status.m_bTextValid);
    EXPECT_STREQ(status.m_szText, text) << log;
  }
  const auto& status = StatusAfter("#OMNISTATA;" + std::string(200, 'x') + "*12\r\n");
  EXPECT_EQ(std::string(status.m_szText), "$OMNIS," + std::string(72, 'x'));
}

TEST_F(Gsr2650Log, SourceOfCorrectionsIsInOneOfThreeLogs) {
  constexpr struct {
    const char* log;
    std::optional<DgpsMode> mode;
  } kLogs[] = {{"#RTKSOURCEA,COM1;OMNISTAR,ANY*12\r\n", DGPS_MODE_LBAND},
               {"#RTKSOURCEA,COM1;AUTO,ANY*12\r\n", DGPS_MODE_BEACON},
               {"#RTKSOURCEA,COM1;NONE,ANY*12\r\n", {}},
               {"#RTKSOURCEA,COM1,AUTO,ANY*12\r\n", {}},
               {"#RTKSOURCEA,COM1;AUTO*12\r\n", {}},
               {"#PSRDIFFSOURCEA,COM1;OMNISTAR,ANY*12\r\n", DGPS_MODE_OMNISTAR},
               {"#PSRDIFFSOURCEA,COM1;CDGPS,ANY*12\r\n", DGPS_MODE_CDGPS},
               {"#PSRDIFFSOURCEA,COM1;AUTO,ANY*12\r\n", {}},
               {"#SBASCONTROLA,COM1;ENABLE,AUTO,0,NONE*12\r\n", DGPS_MODE_WAAS},
               {"#SBASCONTROLA,COM1;ENABLE,WAAS,0,NONE*12\r\n", {}},
               {"#SBASCONTROLA,COM1;DISABLE,AUTO,0,NONE*12\r\n", {}}};
  DgpsMode mode = DGPS_MODE_NONE;
  for (const auto& [log, reported] : kLogs) {
    const auto& status = StatusAfter(log, reported.has_value());
    mode = reported.value_or(mode);
    EXPECT_EQ(status.m_bDgpsModeValid, reported.has_value()) << log;
    EXPECT_EQ(status.m_nDgpsMode, reported ? mode : status.m_nDgpsMode) << log;
  }
}

TEST_F(Gsr2650Log, ConfigurationSaysNothing) {
  EXPECT_FALSE(Feed("#RXCONFIGA,COM1;GPGGA*12\r\n"));
  EXPECT_EQ(Published(), 0U);
}

}  // namespace
