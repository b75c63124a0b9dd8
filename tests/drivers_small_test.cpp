#include "gpsengine/drivers/sokkia.h"
#include "gpsengine/drivers/starlink.h"
#include "gpsengine/drivers/trimble.h"
#include "tests/support/drivertest.h"

// Trimble, Leica, Starlink and Sokkia Axis.

using TrimbleDriver = DriverTest<CTrimble>;
using LeicaDriver = DriverTest<CLeica>;
using StarlinkDriver = DriverTest<CStarlink>;
using SokkiaDriver = DriverTest<CSokkia>;

namespace {

constexpr auto kAutoBeacon = R"(write "$GPMSK,,A,,A,0\r\n"; wait 200)";
constexpr auto kTunedBeacon = R"(write "$GPMSK,305,M,200,M,0\r\n"; wait 200)";

constexpr auto kLeicaStart = R"(
    write "$PMVXG,007,,1,,,,,\r\n"; wait 200
    write "$PMVXG,007,GGA,0,1,,1,6,2\r\n"; wait 200
    write "$PMVXG,007,GSA,0,1,,1,,,\r\n"; wait 200
    write "$PMVXG,007,GSV,0,1,,5,,,\r\n"; wait 200
    result true)";

constexpr auto kStarlinkNmea = R"(
    write "$PSLIS,NME,ALL,A,OFF\r\n"; wait 200
    write "$PSLIS,NME,GGA,A,ON\r\n"; wait 200
    write "$PSLIS,NME,GSA,A,ON\r\n"; wait 200
    write "$PSLIS,NME,VTG,A,ON\r\n"; wait 200
    write "$PSLIS,NME,GSV,A,ON\r\n"; wait 200)";
constexpr auto kStarlinkReset = R"(write "$PSLIS,RST,CLR\r\n"; wait 100; wait 5000)";

constexpr auto kSokkiaStart = R"(write "$PMCAG,008,15,,,,,,,,,,5,,,,,\r\n"; wait 500; result true)";

}  // namespace

TEST_F(TrimbleDriver, IsKeptAliveWithAText) {
  Check({{&CTrimble::KeepAlive, R"(write "QRV Zelo\r\n")"}});
}

TEST_F(LeicaDriver, GetsItsOutputAtEveryStart) {
  Check({{&CLeica::Initialize, kLeicaStart, std::string("wait 10\n") + kLeicaStart}});
  Check({{&CLeica::KeepAlive, R"(write "QRV Zelo\r\n")"}});
}

TEST_F(StarlinkDriver, SetsAndQueriesAllItHas) {
  constexpr auto kQueryPar = R"(write "$PSLIQ,PAR\r\n"; wait 500)";
  Check({
      {&CStarlink::SetDefaultNMEA, kStarlinkNmea},
      {&CStarlink::SetGgaOnlyNMEA, R"(
          write "$PSLIS,NME,ALL,A,OFF\r\n"; wait 200
          write "$PSLIS,NME,GGA,A,ON\r\n"; wait 200)"},
      {&CStarlink::QueryPAR, kQueryPar},
      {&CStarlink::QueryNmeaActive, kQueryPar},
      {&CStarlink::QuerySatElevMask, kQueryPar},
      {&CStarlink::QueryGpsSettings, ""},
      {&CStarlink::QueryBeacon, R"(
          write "$PSLIQ,NME,MSS\r\n"; wait 200
          write "$PSLIQ,NME,MSK\r\n"; wait 200)"},
      {[](auto& r) { r.SetBeacon(BEACON_MODE_AUTO, "", ""); }, kAutoBeacon},
      {[](auto& r) { r.SetBeacon(BEACON_MODE_MANUAL, "305", "200"); }, kTunedBeacon},
      {[](auto& r) { r.SetSatElevMask(15); }, R"(write "$PSLIS,ELM,15\r\n"; wait 200)"},
  });
}

TEST_F(StarlinkDriver, ResetsWithoutAcknowledgement) {
  const std::string reset = Joined(std::string(kStarlinkReset) + kStarlinkNmea + "\nresult ");
  EXPECT_EQ(Steps([](auto& r) { return r.ResetAll(false); }), reset + "true");
  EXPECT_EQ(Steps([](auto& r) { return r.ResetAll(true); }), reset + "true");
  Unplug();
  EXPECT_EQ(Steps([](auto& r) { return r.ResetAll(false); }), "result false");
}

TEST_F(StarlinkDriver, GoesOnWithAResetThatDoesNotGoOut) {
  line.LimitWrites(1);
  EXPECT_EQ(Steps([](auto& r) { return r.ResetAll(false); }), Joined(R"(
      write "$"; wait 5000
      write "$"; wait 200
      write "$"; wait 200
      write "$"; wait 200
      write "$"; wait 200
      write "$"; wait 200
      result false)"));
}

TEST_F(SokkiaDriver, SetsAndQueriesAllItHas) {
  Check({
      {&CSokkia::SetDefaultNMEA,
       R"(write "$PMCAG,005,0,900,0,906,0,907,0,GGA,1,GSA,1,VTG,1,GSV,1,ZDA,0,RMC,0,GLL,0\r\n"; wait 1000)"},
      {&CSokkia::SetGgaOnlyNMEA,
       R"(write "$PMCAG,005,0,900,0,906,0,907,0,GGA,1,GSA,0,VTG,0,GSV,0,ZDA,0,RMC,0,GLL,0\r\n"; wait 1000)"},
      {&CSokkia::QuerySatElevMask, R"(write "$PMCAG,004,908\r\n"; wait 200)"},
      {[](auto& r) { r.SetSatElevMask(10); }, R"(write "$PMCAG,008,15,,,,10,,,,,,,,,,,\r\n"; wait 800)"},
      {&CSokkia::QueryNmeaActive, ""},
      {&CSokkia::QueryBeacon, R"(
          write "$GPCRQ,MSS\r\n"; wait 200
          write "$GPCRQ,MSK\r\n"; wait 200)"},
      {[](auto& r) { r.SetBeacon(BEACON_MODE_AUTO, "", ""); }, kAutoBeacon},
      {[](auto& r) { r.SetBeacon(BEACON_MODE_MANUAL, "305", "200"); }, kTunedBeacon},
      {[](auto& r) { return r.ResetAll(false); }, "result false", "result false"},
  });
}

TEST_F(SokkiaDriver, IsSetUpAtEveryStart) {
  EXPECT_EQ(Steps(&CSokkia::Initialize), kSokkiaStart);
  Unplug();
  EXPECT_EQ(Steps(&CSokkia::Initialize), "result false");
}

// The host moves the bytes: nothing is opened, so that the lines are lost, but the start succeeds in its own
// time.
TEST_F(SokkiaDriver, IsSetUpWithAnExternalPortToo) {
  Close();
  receiver.SetupReceiver(1, 0, 0.0, "", true);
  EXPECT_EQ(Steps(&CSokkia::Initialize), "wait 500; result true");
}
