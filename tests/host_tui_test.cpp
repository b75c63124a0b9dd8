#include <cstdio>

#include "gpsengine/engine/gpsengine.h"
#include "gpsengine/face/models.h"
#include "host/run/failure.h"
#include "host/tui/commandmenu.h"
#include "host/tui/dashboard.h"
#include "host/tui/keys.h"
#include "tests/support/program.h"
#include "tests/support/pseudoterminal.h"
#include "tests/support/receivertest.h"

using namespace host;

namespace {

CGPSData FixOf() {
  CGPSData data = FixRecord();
  data.m_dLongitude = -9.99999999 * kDegree;
  data.m_nSatellitesUsed = 1;
  data.m_nSignalType = UDF_SIGNAL_RTK_FLOAT;
  data.m_dHeading = 270.0 * kDegree;
  return data;
}

Sky InView() {
  Sky sky;
  sky.in_view = 2;
  sky.satellites = {{{Gnss::gps, 7}, 90, 0, 50, true}, {{Gnss::glonass, 4}, 45, 90, 25}};
  return sky;
}

std::string TextOf(const Canvas& canvas) {
  std::string text;
  for (int row = 0; row < canvas.Rows(); ++row) text += canvas.Row(row) + '\n';
  return text;
}

/// A screen of readings whose time stands still until it is told to go on.
class HostScreen : public testing::Test {
 protected:
  std::string Screen(int rows = 24, int columns = 80, bool unicode = false) const {
    Canvas canvas(rows, columns, unicode);
    DrawDashboard(canvas, view_);
    return TextOf(canvas);
  }
  std::string Row(std::size_t row) const { return Split(Screen(), '\n').at(row); }
  /// Of a satellite's bar and of its place in the sky.
  std::pair<Style, Style> Styles() const {
    Canvas canvas(24, 80, false);
    DrawDashboard(canvas, view_);
    return {canvas.At(19, 3).style, canvas.At(7, 60).style};
  }
  template <class... Parts>
  testing::AssertionResult Shows(const Parts&... parts) const {
    return Has(Screen(), parts...);
  }

  bool Take(const CGPSData& data) { return readings_.OnData(ReadRecord(epochs_, data)); }

  Readings::Clock::time_point now_{};
  FixReader epochs_;
  Readings readings_{[this] { return now_; }};
  View view_{readings_};
};

TEST_F(HostScreen, ShowsAFixAtAGlance) {
  Take(FixOf());
  readings_.OnSky(InView());
  view_.model = "Trimble";
  view_.source = "/dev/ttyUSB0";
  view_.counters = {0, 12, 3, 4, 5, 0};
  view_.is_live = false;
  EXPECT_EQ(Row(0), " gpsengine  Trimble  /dev/ttyUSB0");
  const char* const fix[] = {
      "+- Fix --------------------------------+", "| RTK float                    age 0 s |",
      "| Latitude         48.1173000  N       |", "| Longitude        10.0000000  W       |",
      "| Speed           9.7 kn  18.0 km/h    |", "| Course          180  true            |",
      "| Height       545.40 m                |", "| Time       12:35:19 UTC              |",
      "| Satellites        1 used   2 in view |", "| HDOP   0.9   PDOP     -   VDOP     - |"};
  for (std::size_t row = 0; row < 10; ++row) EXPECT_EQ(Row(1 + row).substr(0, 40), fix[row]);
  // Half of the strength is half of the bar, in other marks than those of a used satellite.
  const char* const bars[] = {"| 50        ", "| ####      ", "| #### 25   ", "| #### :::: ",
                              "| #### :::: ", "| #### :::: ", "| G07  R04  "};
  for (std::size_t row = 0; row < 7; ++row) EXPECT_EQ(Row(13 + row).substr(0, 12), bars[row]) << row;
  EXPECT_EQ(Row(7).substr(40), "|         W    .    *G07 oR04 E        |")
      << "the zenith, and halfway to the east";
  EXPECT_EQ(Row(21), " sentences 12  bad 3  binary 4  bad 5  epochs 0  eph 0  BIN 0");
  EXPECT_TRUE(Has(Screen(24, 80, true), "●G07 ○R04"));
  view_.corrections.emplace().state = CorrectionStatus::State::waiting;
  EXPECT_TRUE(Shows("Corrections waiting        0 msgs"));
  view_.corrections->age = 12.34;
  EXPECT_TRUE(Shows("Corrections    12.3 s old  0 msgs"));
}

TEST_F(HostScreen, MakesRoomForManySatellites) {
  Sky sky;
  for (int i = 1; i <= 30; ++i) {
    const Gnss system = i <= 20 ? Gnss::gps : Gnss::galileo;
    sky.satellites.push_back({{system, i}, 45, {}, i % 3 == 0 ? std::nullopt : std::optional(50), i == 30});
  }
  readings_.OnSky(sky);
  const std::string bars = std::string(14, ':') + ' ' + std::string(6, ':');
  EXPECT_TRUE(Shows("| " + bars, "| G              E"));
  const std::string tall = Screen(40, 100);
  EXPECT_TRUE(Has(tall, "*  E30        45        -        -", "and 19 more")) << "used ones first";
}

TEST_F(HostScreen, TellsBothHeightsAndTheDateWhereTheyAreKnown) {
  view_.is_live = false;
  readings_.SetReference(Moment(std::chrono::seconds(1'700'000'000)));
  epochs_.SetReference(Moment(std::chrono::seconds(1'700'000'000)));
  Take(FixOf());
  readings_.OnString(WithChecksum("$GPGGA,123519,4807.038,N,01000.000,W,5,08,0.9,545.4,M,46.9,M,,").c_str());
  EXPECT_EQ(Row(7).substr(0, 40), "| Height MSL   545.40 m 592.30 m HAE   |");
  EXPECT_EQ(Row(8).substr(0, 40), "| Time       12:35:19 UTC  2023-11-14  |");
  view_.geoid = Geoid::add;
  view_.display.units = Units::imperial;
  EXPECT_EQ(Row(7).substr(0, 40), "| Height HAE  1789.37 ft  1635 ft MSL  |");
  EXPECT_EQ(Row(5).substr(0, 40), "| Speed          11.2 mph  9.7 kn      |");
}

TEST_F(HostScreen, ShowsWhereAStillReceiverStands) {
  view_.survey = true;
  EXPECT_TRUE(Shows("no fix so far"));
  CGPSData data = FixOf();
  for (int i = 0; i < 10; ++i) {
    data.m_dTimeOfDay += 1.0;
    data.m_dLatitude = 48.1173 * kDegree + (i % 2) * 2.0 / 6'371'000.0;
    data.m_nSignalType = i < 8 ? UDF_SIGNAL_RTK_FLOAT : UDF_SIGNAL_RTK_FIXED;
    Take(data);
    Take(data);  // another sentence of the same epoch
  }
  EXPECT_TRUE(Shows("Fixes                       10", "RTK fixed      0.000   1.4"));
  readings_.survey.Clear();
  EXPECT_TRUE(Shows("no fix so far"));
}

TEST_F(HostScreen, TellsAnOldFixFromAFreshOne) {
  EXPECT_TRUE(Shows("waiting"));
  Take(FixOf());
  readings_.OnSky(InView());
  now_ += std::chrono::seconds(4);
  EXPECT_TRUE(Shows("STALE 4 s"));
  EXPECT_EQ(Styles(), std::pair(Style::dim, Style::dim)) << "satellites are as old";
  Take(FixOf());
  EXPECT_EQ(Styles(), std::pair(Style::used, Style::used));
  now_ += std::chrono::seconds(9);
  EXPECT_TRUE(Shows("  age 9 s")) << "a receiver that sends every four seconds";
  CGPSData none = FixOf();
  none.m_nSignalType = UDF_SIGNAL_NONE;
  none.m_dLatitude = 0.0;
  Take(none);
  EXPECT_TRUE(Shows("no fix", "48.1173000")) << "the kind of fix is news, the place is the last known";
  now_ += std::chrono::seconds(200);
  EXPECT_TRUE(Shows("STALE 3 min"));
}

TEST_F(HostScreen, KeepsReportsAndSentences) {
  CGPSData data;
  data.m_Status.m_bStatusUpdated = data.m_Status.m_bElevationMaskValid = true;
  data.m_Status.m_nElevationMask = 12;
  EXPECT_TRUE(Take(data));
  EXPECT_TRUE(Shows(" elevation mask 12 deg"));
  readings_.Log("a complaint of the program that is too long for one row", Style::warn);
  EXPECT_TRUE(Shows(" a complaint of the program", "          that is too long for one"));
  readings_.OnString("$GPGSV,1\x1B[2J\r\n");
  EXPECT_FALSE(Shows("$GPGSV"));
  view_.sentences = true;
  EXPECT_TRUE(Shows("$GPGSV,1?[2J")) << "no byte of a receiver commands the terminal";
}

TEST_F(HostScreen, FitsAnySize) {
  Take(FixOf());
  for (int i = 0; i < 50; ++i) readings_.Log("a report", Style::normal);
  for (const bool sentences : {false, true}) {
    view_.sentences = sentences;
    view_.survey = sentences;
    for (int rows = 0; rows < 60; rows += 2) {
      for (int columns = 0; columns < 150; columns += 3) {
        const std::string screen = Screen(rows, columns);
        const bool fits = rows >= 8 && columns >= 36;
        EXPECT_EQ(screen.find("too small") != std::string::npos, !fits && rows >= 1 && columns >= 18);
        EXPECT_TRUE(!fits || sentences || Has(screen, "48.1173000")) << rows << ' ' << columns;
        EXPECT_TRUE(std::all_of(screen.begin(), screen.end(), [](char c) { return c > 0; }));
      }
    }
  }
}

/// What a model's menu makes of keys.
class Menu {
 public:
  explicit Menu(const char* model) : menu_(FindModel(model)) { menu_.Open(); }
  std::optional<CommandMenu::Order> Type(const std::string& text) {
    std::optional<CommandMenu::Order> order;
    for (const char c : text) order = menu_.OnKey(c == '\n' ? key::kEnter : c);
    return order;
  }
  testing::AssertionResult Shows(const std::string& text) const {
    Canvas canvas(40, 80, false);
    menu_.Draw(canvas);
    return Has(TextOf(canvas), text);
  }

  CommandMenu menu_;
};

TEST(HostCommandMenu, OffersWhatTheModelHasAndARunBears) {
  const Menu trimble("Trimble");
  EXPECT_TRUE(trimble.Shows(" send "));
  for (const char* absent : {"gga-only", "suspend", "start"}) EXPECT_FALSE(trimble.Shows(absent)) << absent;
  EXPECT_TRUE(Menu("CSI").Shows(" set-elevation-mask "));
}

TEST(HostCommandMenu, AsksForArgumentsUntilTheyAreGood) {
  Menu menu("CSI");  // default-nmea, gga-only, query-nmea, query-settings, set-elevation-mask ...
  EXPECT_FALSE(menu.Type("jjjj\n95\n"));
  EXPECT_TRUE(menu.Shows("\"95\" is not an elevation from 0 to 90 degrees"));
  menu.menu_.OnKey(key::kClear);
  const auto order = menu.Type("12\n");
  ASSERT_TRUE(order);
  EXPECT_EQ(order->text, "set-elevation-mask 12");
  EXPECT_EQ(order->time, 200);
  EXPECT_FALSE(menu.menu_.IsOpen());
  menu.menu_.Open();
  const auto query = menu.Type("k\n");
  ASSERT_TRUE(query) << "a request needs no second thought";
  EXPECT_EQ(query->text, "query-settings");
  Menu trimble("Trimble");
  EXPECT_EQ(trimble.Type("\n$X a  b\n")->text, "send $X a  b");
}

/// The program on a terminal of its own.
class OnTerminal {
 public:
  explicit OnTerminal(std::vector<std::string> arguments)
      : before_(Prepare()), program_(std::move(arguments), terminal_.Name()) {}

  /// Waits for a text among what is written to the terminal.
  bool Writes(const std::string& text) {
    std::string bytes;
    for (int i = 0; i < 1000 && bytes.find(text) == std::string::npos; ++i)
      bytes += terminal_.Receive(1, std::chrono::milliseconds(10));
    return bytes.find(text) != std::string::npos;
  }
  void Type(std::string_view keys) const { terminal_.Send(keys); }
  bool IsAsItWas() const {
    const termios now = State();
    return now.c_lflag == before_.c_lflag && now.c_iflag == before_.c_iflag && now.c_oflag == before_.c_oflag;
  }
  Program& Run() { return program_; }

 private:
  termios State() const {
    termios state{};
    tcgetattr(terminal_.Keeper(), &state);
    return state;
  }
  /// A size, and what a terminal of a shell does with lines.
  termios Prepare() const {
    termios state = State();
    state.c_lflag |= ICANON | ECHO | ISIG;
    state.c_oflag |= OPOST | ONLCR;
    tcsetattr(terminal_.Keeper(), TCSANOW, &state);
    const winsize size{24, 80, 0, 0};
    EXPECT_EQ(ioctl(terminal_.Keeper(), TIOCSWINSZ, &size), 0);
    return state;
  }

  PseudoTerminal terminal_;
  termios before_;
  Program program_;
};

TEST(HostLiveScreen, HoldsThePauseOfARecordingAndGivesTheTerminalBack) {
  const TemporaryFolder folder;
  const std::string path = folder / "pause.log";
  WriteFile(path, GgaAt("123519", 4) + "QRV PAUSE,turn the antenna\r\n" + GgaAt("123520", 5));
  OnTerminal terminal({"monitor", "--play", path, "--speed", "engine"});
  EXPECT_TRUE(terminal.Writes("turn the antenna"));
  EXPECT_FALSE(terminal.IsAsItWas());
  terminal.Type("\r");
  EXPECT_TRUE(terminal.Writes("loat")) << "RTK float in place of RTK fixed";
  terminal.Type("q");
  EXPECT_EQ(terminal.Run().Wait(), 0);
  EXPECT_EQ(terminal.Run().Errors(), "");
  EXPECT_TRUE(terminal.IsAsItWas());
}

TEST(HostLiveScreen, EndsInTheMidstOfALongStart) {
  OnTerminal terminal({"monitor", "--model", "GSR2650 LB"});
  EXPECT_TRUE(terminal.Writes("starting the receiver"));
  terminal.Run().Signal(SIGTERM);
  EXPECT_EQ(terminal.Run().Wait(), static_cast<int>(ExitCode::interrupted));
  EXPECT_TRUE(terminal.IsAsItWas());
}

TEST(HostLiveScreen, CommandsTheReceiver) {
  const TemporaryFolder folder;
  const std::string record = folder / "port.log";
  for (const bool records : {false, true}) {
    std::vector<std::string> arguments = {"monitor", "--model", "CSI"};
    if (records) arguments.insert(arguments.end(), {"--record", record});
    OnTerminal terminal(arguments);
    EXPECT_TRUE(terminal.Writes("DGPS"));
    terminal.Type("cjjjjj\r");
    EXPECT_TRUE(terminal.Writes("EM:05 SAV")) << "what answers query-elevation-mask is no sentence";
    terminal.Type("q");
    EXPECT_EQ(terminal.Run().Wait(), 0);
  }
  EXPECT_EQ(std::remove(record.c_str()), 0);
}

}  // namespace
