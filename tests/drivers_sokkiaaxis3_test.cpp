#include "gpsengine/drivers/sokkiaaxis3.h"
#include "tests/support/drivertest.h"

template <class Receiver>
class JDriver : public DriverTest<Receiver> {
 protected:
  // The interval of block 95 outlives the receivers: each test begins as a fresh process does.
  JDriver() {
    this->receiver.SetRawDataOutput(true, 5);
    this->line.ForgetSteps();
  }
};
using JReceivers = testing::Types<CSokkiaAxis3, CCSImax>;
TYPED_TEST_SUITE(JDriver, JReceivers);

namespace {

constexpr auto kRawFast = R"(
    write "$JBIN,96,0.2\r\n"
    write "$JBIN,95,0.2\r\n"
    write "$JSAVE\r\n"
    )";
constexpr auto kRawSlow = R"(
    write "$JBIN,96,1\r\n"
    write "$JBIN,95,1\r\n"
    write "$JSAVE\r\n"
    )";
constexpr auto kRawOff = R"(
    write "$JBIN,96,0\r\n"
    write "$JBIN,95,0\r\n"
    write "$JSAVE\r\n"
    )";

}  // namespace

TYPED_TEST(JDriver, SetsAllItHas) {
  this->Check({
      {[](auto& r) { return r.Initialize(); }, "wait 500; result true", "wait 10; wait 500; result true"},
  });
  this->receiver.Initialize();
  this->Check({
      {[](auto& r) { r.SetDefaultNMEA(); }, R"(
          write "$JOFF\r\n"; wait 1000
          write "$JASC,GPGGA,1\r\n"; wait 200
          write "$JASC,GPGSA,1\r\n"; wait 200
          write "$JASC,GPVTG,1\r\n"; wait 200
          write "$JASC,GPGSV,1\r\n"; wait 200
          write "$JSAVE\r\n"; wait 2000
          write "$JBIN,95,0.2\r\n"; wait 200)"},
      {[](auto& r) { r.SetGgaOnlyNMEA(); }, R"(
          write "$JOFF\r\n"; wait 1000
          write "$JASC,GPGGA,1\r\n"; wait 200
          write "$JSAVE\r\n"; wait 2000
          write "$JBIN,95,0.2\r\n"; wait 200)"},
      {[](auto& r) { r.SetSatElevMask(12); }, R"(
          write "$JMASK,12\r\n"; wait 800
          write "$JSAVE\r\n"; wait 2000
          write "$JBIN,95,0.2\r\n"; wait 200)"},
      {[](auto& r) { r.SetLbandFrequency(1530.5, 1200); }, R"(
          write "$JFREQ,1530500.000000,1200\r\n"; wait 800
          write "$JSAVE\r\n"; wait 2000
          write "$JBIN,95,0.2\r\n"; wait 200)"},
      {[](auto& r) { r.SetLbandFrequency(0, 600); }, R"(
          write "$JFREQ,0.000000,600\r\n"; wait 800
          write "$JSAVE\r\n"; wait 2000
          write "$JBIN,95,0.2\r\n"; wait 200)"},
      {[](auto& r) { r.SetBeacon(BEACON_MODE_AUTO, "290.5", "100"); }, R"(
          write "$GPMSK,,A,,A,0\r\n"; wait 200
          write "$JSAVE\r\n"; wait 2000)"},
      {[](auto& r) { r.SetBeacon(BEACON_MODE_MANUAL, "290.5", ""); }, R"(
          write "$GPMSK,290.5,M,,A,0\r\n"; wait 200
          write "$JSAVE\r\n"; wait 2000)"},
      {[](auto& r) { r.DgpsStatusMsg(true); }, R"(write "$JASC,D1,1\r\n")"},
      {[](auto& r) { r.DgpsStatusMsg(false); }, R"(write "$JASC,D1,0\r\n")"},
      {[](auto& r) { return r.ResetAll(true); }, "result false", "result false"},
  });
}

TYPED_TEST(JDriver, QueriesAllItHas) {
  constexpr auto kShow = R"(write "$JSHOW\r\n"; wait 200)";
  this->Check({
      {[](auto& r) { r.QueryJSHOW(); }, kShow},
      {[](auto& r) { r.QuerySatElevMask(); }, kShow},
      {[](auto& r) { r.QueryNmeaActive(); }, kShow},
      {[](auto& r) { r.QueryDgpsMode(); }, kShow},
      {[](auto& r) { r.QueryBeacon(); }, R"(
          write "$GPCRQ,MSS\r\n"; wait 200
          write "$GPCRQ,MSK\r\n"; wait 200)"},
      {[](auto& r) { r.QueryLbandSatellites(); }, R"(write "$JLBEAM\r\n"; wait 200)"},
      {[](auto& r) { r.QueryOmniStar(); }, R"(
          write "$JI\r\n"; wait 200
          write "$JGEO\r\n"; wait 200
          write "$JSHOW\r\n"; wait 200)"},
      {[](auto& r) { r.QueryWAAS(); }, ""},
  });
}

TYPED_TEST(JDriver, WaitsForAChangeOfSourceOnAClosedPortToo) {
  const auto to = [](int mode) { return [mode](auto& r) { r.SetDgpsMode(static_cast<DgpsMode>(mode)); }; };
  this->Check({
      {to(DGPS_MODE_NONE), R"(
          write "$JDIFF,OFF\r\n"; wait 1000
          write "$JSAVE\r\n"; wait 2000)",
       "wait 1000; wait 2000"},
      {to(DGPS_MODE_BEACON), R"(
          write "$JDIFF,BEACON\r\n"; wait 1000
          write "$JSAVE\r\n"; wait 2000)",
       "wait 1000; wait 2000"},
      {to(DGPS_MODE_LBAND), R"(
          write "$JAPP,2\r\n"; wait 5000
          write "$JDIFF,LBAND\r\n"; wait 5000
          write "$JSAVE\r\n"; wait 2000)",
       "wait 5000; wait 5000; wait 2000"},
      {to(DGPS_MODE_WAAS), R"(
          write "$JAPP,1\r\n"; wait 5000
          write "$JDIFF,WAAS\r\n"; wait 5000
          write "$JSAVE\r\n"; wait 2000)",
       "wait 5000; wait 5000; wait 2000"},
      {to(DGPS_MODE_CDGPS), R"(write "$JSAVE\r\n"; wait 2000)", "wait 2000"},
      {to(-1), R"(write "$JSAVE\r\n"; wait 2000)", "wait 2000"},
  });
}

TYPED_TEST(JDriver, SwitchesRawOutputAtOneOfTwoRates) {
  const auto on = [](double interval) {
    return [interval](auto& r) { return r.SetRawDataOutputInterval(interval); };
  };
  const std::string fast = std::string(kRawFast) + "result true",
                    slow = std::string(kRawSlow) + "result true", off = std::string(kRawOff) + "result true";
  this->Check({
      {on(5.0), fast, "result true"},
      {on(5.9), fast, "result true"},
      {on(0.2), slow, "result true"},
      {on(6.0), slow, "result true"},
      {on(1e300), slow, "result true"},
      {[](auto& r) { return r.EnablePostProcessing(true); }, slow, "result true"},
      {[](auto& r) { return r.EnablePostProcessing(false); }, off, "result true"},
      {[](auto& r) { r.SetRawDataOutput(true, 5); }, kRawFast},
      {[](auto& r) { r.SetRawDataOutput(false, 5); }, kRawOff},
  });
}

TYPED_TEST(JDriver, RepeatsTheLastIntervalOfBlock95BehindASave) {
  const auto closing = [this] {
    const std::string steps = this->Steps([](auto& r) { r.SetGgaOnlyNMEA(); });
    return steps.substr(steps.find("2000; ") + 6);
  };
  EXPECT_EQ(closing(), R"(write "$JBIN,95,0.2\r\n"; wait 200)");
  this->receiver.EnablePostProcessing(true);
  EXPECT_EQ(closing(), R"(write "$JBIN,95,1\r\n"; wait 200)");
  this->receiver.EnablePostProcessing(false);
  EXPECT_EQ(closing(), R"(write "$JBIN,95,1\r\n"; wait 200)");
  this->Close();
  this->receiver.SetRawDataOutput(true, 5);  // does not reach the receiver, so nothing changes
  this->receiver.Initialize();
  EXPECT_EQ(closing(), R"(write "$JBIN,95,1\r\n"; wait 200)");
}
