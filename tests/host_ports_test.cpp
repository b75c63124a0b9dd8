// The serial ports of a system, from trees that stand for /sys, /dev and /proc, and what is remembered of
// them.
#include <sys/file.h>

#include "gpsengine/engine/gpsengine.h"
#include "gpsengine/face/models.h"
#include "host/line/config.h"
#include "host/line/ports.h"
#include "host/line/portsearch.h"
#include "host/run/failure.h"
#include "tests/support/conversation.h"
#include "tests/support/pseudoterminal.h"
#include "tests/support/receivertest.h"

using namespace std::chrono_literals;
namespace fs = std::filesystem;

namespace {

/// A system of the test's own.
class System {
 public:
  System() {
    for (const char* folder : {"sys/class/tty/tty0", "dev/serial/by-id", "proc"})
      fs::create_directories(top_ / folder);
  }

  host::SystemRoots Roots() const { return {top_ / "sys", top_ / "dev", top_ / "proc"}; }
  void Write(const fs::path& file, const std::string& text) const {
    fs::create_directories((top_ / file).parent_path());
    std::ofstream(top_ / file) << text << '\n';
  }
  void Link(const fs::path& name, const fs::path& target) const {
    fs::create_directories((top_ / name).parent_path());
    fs::create_symlink(target, top_ / name);
  }
  /// A port of that name, at a device of /sys, whose driver has its place there too.
  void AddPort(const std::string& name, const std::string& device, const std::string& driver,
               const fs::path& node) const {
    fs::create_directories(top_ / "sys" / device);
    fs::create_directories(top_ / "sys/bus" / driver);
    Link("sys/class/tty/" + name + "/device", top_ / "sys" / device);
    Link("sys/" + device + "/driver", top_ / "sys/bus" / driver);
    Link("dev/" + name, node);
  }
  std::string Dev(const std::string& name) const { return top_ / "dev" / name; }

 private:
  const TemporaryFolder folder_;
  const fs::path top_ = folder_.Path();
};

TEST(Ports, AreThoseWithHardwareAndSayWhatTheyAreAndWhetherTheyOpen) {
  const System system;
  const PseudoTerminal first, locked, held;
  system.Write("sys/devices/usb1/1-1/idVendor", "0403");
  system.Write("sys/devices/usb1/1-1/idProduct", "6011");
  system.Write("sys/devices/usb1/1-1/product", "Quad \x1B[2J");
  system.Write("sys/devices/usb1/1-1/1-1:1.0/interface", "Port A");
  system.AddPort("ttyUSB10", "devices/usb1/1-1/1-1:1.0/ttyUSB10", "usb-serial/drivers/ftdi_sio",
                 locked.Name());
  system.AddPort("ttyUSB2", "devices/usb1/1-1/1-1:1.0/ttyUSB2", "usb-serial/drivers/ftdi_sio", first.Name());
  system.Link("dev/serial/by-id/usb-Quad-if00", "../../ttyUSB2");
  // The kernel's serial core stands between a port and the driver of its chip.
  system.AddPort("ttyS0", "devices/pnp0/00:00", "pnp/drivers/serial", held.Name());
  system.AddPort("ttyS0x", "devices/pnp0/00:00/00:00:0/00:00:0.0", "serial-base/drivers/port", "/dev/null");
  system.Write("sys/class/tty/ttyS0/type", "4");
  system.AddPort("ttyS1", "devices/platform/serial8250", "platform/drivers/serial8250", "/dev/null");
  system.Write("sys/class/tty/ttyS1/type", "0");
  system.AddPort("ttyS2", "devices/pnp0/00:01", "pnp/drivers/serial", "/dev/null");
  system.Write("sys/class/tty/ttyS2/console", "Y");
  system.Link("dev/gps", "ttyUSB2");
  system.Write("proc/4711/comm", "gpsd");
  system.Link("proc/4711/fd/3", held.Name());
  const int lock = open(locked.Name().c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC);
  ASSERT_EQ(flock(lock, LOCK_EX), 0);

  const auto ports = host::FindPorts(system.Roots());
  close(lock);
  ASSERT_EQ(ports.size(), 5u) << "neither a console nor a port that is only assumed";
  EXPECT_EQ(ports[0].device, system.Dev("ttyUSB2"));
  EXPECT_EQ(ports[0].state, host::PortState::free);
  EXPECT_EQ(ports[0].by_id, system.Dev("serial/by-id/usb-Quad-if00"));
  EXPECT_EQ(ports[1].device, system.Dev("ttyUSB10"));
  EXPECT_EQ(ports[1].state, host::PortState::busy);
  EXPECT_EQ(ports[2].note, "in use by gpsd (process 4711)");
  EXPECT_EQ(ports[3].note, "in use by the system, as its console");
  EXPECT_EQ(ports[4].state, host::PortState::broken) << "no terminal";
  EXPECT_EQ(ports[4].driver, "serial");

  const std::string table = host::PortsAsTable(ports);
  EXPECT_TRUE(
      Has(table, "free           ftdi_sio    0403:6011  Quad ?[2J, Port A\n  " + ports[0].by_id + '\n'));
  const std::string json = host::PortsAsJson(ports);
  EXPECT_TRUE(Has(json, "\"vendorId\":\"0403\""));
  EXPECT_EQ(host::StableName(system.Dev("ttyUSB2"), system.Roots()), ports[0].by_id);
  EXPECT_EQ(host::StableName(system.Dev("ttyUSB10"), system.Roots()), system.Dev("ttyUSB10"));
  EXPECT_EQ(host::StableName(system.Dev("gps"), system.Roots()), system.Dev("gps"));
  EXPECT_TRUE(Has(host::WhyNotOpen(system.Dev("ttyUSB3"), system.Roots()), "gpsengine ports"));
}

TEST(Ports, OfWhichThereAreNoneSayWhatToCheck) {
  const System system;
  const auto ports = host::FindPorts(system.Roots());
  EXPECT_TRUE(Has(host::PortsAsTable(ports), "plugged in"));
  EXPECT_EQ(host::PortsAsJson(ports), "[]\n");
  EXPECT_TRUE(host::FindPorts({"/nonexistent", "/nonexistent", "/nonexistent"}).empty());
}

// The search, which is heard on standard error.
class SearchTest : public testing::Test {
 protected:
  /// Looks on these devices at these rates, for as long as a line at a hundred times its speed takes.
  std::string Look(const std::vector<std::string>& devices, const std::vector<int>& rates) {
    host::SearchPlan plan{devices, rates, 120ms, 30ms};
    testing::internal::CaptureStderr();
    host::FoundLine line;
    const std::string error = ErrorOf([&] { line = host::SearchLine(plan, interrupt); });
    heard = testing::internal::GetCapturedStderr();
    return error == "none" ? "found " + line.device + ' ' + std::to_string(line.baud) : error;
  }
  void ExpectHeard(const std::string& text) const { EXPECT_TRUE(Has(heard, text)); }

  const host::Interrupt interrupt{};
  std::string heard;
};

TEST_F(SearchTest, TellsSilenceNoiseAndMessagesApartAndTakesTheMessages) {
  const PseudoTerminal silent;
  const auto runner = RunSimulated("Trimble", 100);  // at 4800 baud
  const std::string& device = runner->PortName();
  EXPECT_EQ(Look({silent.Name(), device, "/dev/no-such-port"}, {9600, 4800}), "found " + device + " 4800");
  ExpectHeard("0.72 s at most");
  ExpectHeard(silent.Name() + " at 9600 baud: no bytes\n");
  ExpectHeard(device + " at 9600 baud: bytes that make no message\n");
  ExpectHeard("The port /dev/no-such-port does not exist");
  ExpectHeard(device + " at 4800 baud: NMEA (GGA, GSA, GSV");
  EXPECT_FALSE(Has(heard, silent.Name() + " at 4800")) << "a line that speaks comes first";
}

TEST_F(SearchTest, SaysWhatToCheckWhenItFindsNothing) {
  const PseudoTerminal line;
  EXPECT_TRUE(Look({line.Name()}, {9600, 4800}).starts_with("4 no data came"));
  EXPECT_TRUE(Look({"/dev/no-such-port"}, {9600}).starts_with("3 "));
  const std::jthread compass([&line](const std::stop_token& stop) {
    while (!stop.stop_requested()) {
      line.Exchange(WithChecksum("$HCHDG,98.3,0.0,E,12.6,W"));
      std::this_thread::sleep_for(10ms);
    }
  });
  EXPECT_TRUE(Look({line.Name()}, {9600, 4800}).starts_with("4 no message was understood"));
  ExpectHeard("NMEA, but no GPS receiver's ($HCHDG)");
  EXPECT_FALSE(Has(heard, "4800")) << "the rate was right";
}

TEST_F(SearchTest, EndsAtASignal) {
  const PseudoTerminal line;
  raise(SIGINT);
  EXPECT_TRUE(Look({line.Name()}, std::vector<int>(100, 9600)).starts_with("130 "));
}

TEST_F(SearchTest, TakesTheRememberedLineOnlyWhenAsked) {
  const System system;
  CWinApp app{"gpsengine-test"};
  app.SetProfilePath(CString::FromUtf8(system.Dev("host.ini")));
  EXPECT_THROW(host::ChooseLine({"last", 0, "Other"}, false, interrupt), host::Failure);
  CGPSEngine engine;
  CGPSReceiver& receiver = *engine.FindReceiver("Trimble");
  receiver.UseBaudrate(4800);
  host::Remember("/dev/ttyX7", receiver);
  EXPECT_EQ(host::ChooseLine({"", 0, "Other"}, false, interrupt).port, "");
  const host::LineChoice last = host::ChooseLine({"last", 0, "Other"}, false, interrupt);
  EXPECT_EQ(last.port + last.model, "/dev/ttyX7Trimble");
  EXPECT_EQ(host::ChooseLine({"last", 0, "SiRF"}, true, interrupt).model, "SiRF");
  EXPECT_EQ(host::LikelyRates("Trimble")[0], 4800);
  EXPECT_TRUE(host::ReadConfig().rates.empty()) << "that is the model's own";
  receiver.UseBaudrate(1200);
  EXPECT_EQ(host::LikelyRates("Trimble")[0], 4800) << "until something was understood";
  host::Remember("/dev/ttyX7", receiver);
  EXPECT_EQ(host::LikelyRates("Trimble")[0], 1200);
  EXPECT_TRUE(host::IsKeptRate(receiver));
  host::ForgetRate("Trimble");
  EXPECT_EQ(host::LikelyRates("Trimble")[0], 4800);
}

TEST(Config, IsWhatWasRememberedSetOrForgotten) {
  const System system;
  CWinApp app{"gpsengine-test"};
  app.SetProfilePath(CString::FromUtf8(system.Dev("host.ini")));
  CGPSEngine engine;
  EXPECT_TRUE(Has(host::ConfigAsText(host::ReadConfig()), "host.ini (not there yet)\nport   none yet\n"));
  engine.InitReceivers();
  host::Remember("/dev/../dev/ttyX7", *engine.FindReceiver("Trimble"));
  app.WriteProfileInt("SiRF", "Baud", 57600);
  EXPECT_TRUE(Has(host::ConfigAsText(host::ReadConfig()),
                  "port   /dev/ttyX7\nmodel  Trimble\nbaud   57600 for SiRF\n"));
  testing::internal::CaptureStderr();
  host::SetConfig("port", "/dev/ttyX8");
  EXPECT_TRUE(Has(testing::internal::GetCapturedStderr(), "there is no /dev/ttyX8 now"));
  EXPECT_THROW(host::SetConfig("model", "Nobody's"), gps::Error);
  EXPECT_EQ(host::ConfigAsJson(host::ReadConfig()),
            R"({"file":")" + system.Dev("host.ini") +
                R"(","port":"/dev/ttyX8","model":"Trimble","baud":{"SiRF":57600}})"
                "\n");
  host::ResetConfig();
  EXPECT_EQ(host::ReadConfig().port + host::ReadConfig().model, "");
  EXPECT_TRUE(host::ReadConfig().rates.empty());
  app.SetProfilePath("/proc/nowhere/host.ini");
  EXPECT_EQ(ErrorOf([] { host::SetConfig("model", "SiRF"); }),
            "1 cannot write /proc/nowhere/host.ini: No such file or directory");
}

}  // namespace
