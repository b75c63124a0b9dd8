// Runs that outlive their port, and fixes that grow old.
#include "host/line/config.h"
#include "host/session/fixage.h"
#include "tests/support/monitorrun.h"

using namespace std::chrono_literals;

namespace {

TEST_F(PluggedRun, GoesOnUnderTheSameNameAndInTheSameRecording) {
  std::string second;
  const auto code = Run([&] {
    SendUntilShown(1);
    Unplug();
    std::this_thread::sleep_for(30ms);
    Plug();
    second = terminal->Name();
    SendUntilShown(2);
    CloseOutput();
  });
  EXPECT_EQ(code, host::ExitCode::done);
  EXPECT_TRUE(Has(errors, "the port was lost; waiting for " + options.port, "the port is back as " + second));
  const std::string recorded = ReadFile(options.record);
  EXPECT_TRUE(recorded.starts_with(FixAt(1)) && recorded.ends_with(FixAt(2))) << recorded;
  EXPECT_EQ(host::ReadConfig().port, options.port) << "remembered, since it was understood";
}

TEST_F(PluggedRun, WaitsForAPortThatIsNotThereYet) {
  Unplug();
  options.duration = 0.05;
  EXPECT_EQ(Run([] {}), host::ExitCode::port_closed) << "it was not lost";
  options.duration = 0.0;
  EXPECT_EQ(Run([&] {
              std::this_thread::sleep_for(30ms);
              Plug();
              SendUntilShown(1);
              CloseOutput();
            }),
            host::ExitCode::done);
  EXPECT_TRUE(Has(errors, "waiting for " + options.port + " to be plugged in",
                  "the port is there as " + terminal->Name()));
}

TEST(FixAge, TellsOnceThatThereIsNoFixAndOnceThatThereIsOne) {
  std::string out;
  long long messages = 0;
  host::Deadline::Moment now;
  host::FixAge age(
      out, [&] { return messages; }, [&] { return now; });
  const auto wait = [&](int new_messages, std::chrono::milliseconds half) {
    out.clear();
    for (int i = 0; i < 3; ++i) {
      now += half;
      messages += new_messages;
      age.Step();
    }
  };
  gps::FixReader epochs;
  CGPSData fix, no_fix;
  fix.m_bPositionValid = no_fix.m_bPositionValid = true;
  fix.m_nSignalType = UDF_SIGNAL_GPS;
  no_fix.m_nSignalType = UDF_SIGNAL_NONE;
  wait(0, 2500ms);
  EXPECT_EQ(out, "no fix yet after 5 s: nothing comes\n");
  age.OnData(host::ReadRecord(epochs, no_fix));
  age.OnData(host::ReadRecord(epochs, fix));
  EXPECT_TRUE(out.ends_with("comes\na first fix after 8 s\n")) << out;
  now += 4s;
  age.OnData(host::ReadRecord(epochs, fix));
  EXPECT_EQ(age.NextAt(), now + 5s) << "half of two and a half intervals";
  wait(1, 5s);
  EXPECT_EQ(out, "no fix for 10 s: messages come, but no position\n");
  age.OnData(host::ReadRecord(epochs, fix));
  age.OnData(host::ReadRecord(epochs, fix));
  EXPECT_TRUE(out.ends_with("position\na fix again after 15 s\n")) << out;
  now += 1h;
  age.Step();
  EXPECT_EQ(age.NextAt(), now + 2500ms) << "a machine that has slept hears its receiver first";
}

}  // namespace
