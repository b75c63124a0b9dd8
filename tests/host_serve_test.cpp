#include "gpsengine/sentences/sentencefinder.h"
#include "host/run/failure.h"
#include "host/serve.h"
#include "host/server/gpsdserver.h"
#include "host/server/pagehub.h"
#include "host/server/pageserver.h"
#include "tests/support/browser.h"
#include "tests/support/monitorrun.h"
#include "tests/support/program.h"
#include "tests/support/tcppeer.h"

using namespace host;
using namespace std::chrono_literals;
using Strings = std::vector<std::string>;

namespace {

/// A connection of a client, which never blocks.
class Peer {
 public:
  explicit Peer(int port, int buffer = 0) : socket_(ConnectTo(port, SOCK_STREAM, buffer)) {}
  void Send(std::string_view bytes) const {
    EXPECT_EQ(send(socket_.Get(), bytes.data(), bytes.size(), MSG_NOSIGNAL),
              static_cast<ssize_t>(bytes.size()));
  }
  /// Takes what has come; false at the end of the connection.
  bool Take() {
    char space[16384];
    const ssize_t count = recv(socket_.Get(), space, sizeof space, MSG_DONTWAIT);
    if (count > 0) bytes_.append(space, static_cast<std::size_t>(count));
    return count > 0 || (count < 0 && errno == EAGAIN);
  }
  /// The next whole line without its end, or nothing.
  std::optional<std::string> Line() {
    const auto end = bytes_.find('\n');
    if (end == std::string::npos) return std::nullopt;
    std::string line = bytes_.substr(0, end);
    bytes_.erase(0, end + 1);
    if (line.ends_with('\r')) line.pop_back();
    return line;
  }
  const std::string& Rest() const { return bytes_; }

 private:
  UniqueDescriptor socket_;
  std::string bytes_;
};

class GpsdServerTest : public testing::Test {
 protected:
  void Begin(const GpsdLimits& limits = {}) {
    server_.emplace("127.0.0.1", 0, limits);
    server_->SetDevice({"/dev/x", "Other", 4800, "2024-05-14T12:00:00.000Z"});
  }
  void SetUp() override { Begin(); }

  /// A turn of the server's loop.
  void Step() {
    std::vector<pollfd> waits(2, pollfd{-1, 0, 0});  // of others
    server_->AddWaits(waits);
    poll(waits.data(), waits.size(),
         std::min(MillisecondsUntil(server_->Earlier(Deadline::Clock::now() + 2ms)), 2));
    server_->Handle(waits, 2);
  }
  /// The next line that the peer gets; "end" at the end of the connection, "nothing" if none comes.
  std::string Next(Peer& peer) {
    const auto end = std::chrono::steady_clock::now() + 3s;
    while (std::chrono::steady_clock::now() < end) {
      if (auto line = peer.Line()) return *line;
      Step();
      const bool isOpen = peer.Take();
      if (auto line = peer.Line()) return *line;
      if (!isOpen) return "end";
    }
    return "nothing";
  }
  std::string NextClass(Peer& peer) {
    const std::string line = Next(peer);
    constexpr std::string_view kHead = R"({"class":")";
    return line.starts_with(kHead) ? line.substr(kHead.size(), line.find('"', kHead.size()) - kHead.size())
                                   : line;
  }
  /// A client that has been greeted and has sent that.
  std::unique_ptr<Peer> Connect(std::string_view request = "", int buffer = 0) {
    auto peer = std::make_unique<Peer>(server_->Port(), buffer);
    EXPECT_EQ(NextClass(*peer), "VERSION");
    peer->Send(request);
    return peer;
  }
  std::unique_ptr<Peer> Watch(std::string_view argument, int buffer = 0) {
    auto peer = Connect("?WATCH=" + std::string(argument) + ";", buffer);
    EXPECT_EQ(NextClass(*peer), "DEVICES");
    EXPECT_EQ(NextClass(*peer), "WATCH");
    return peer;
  }

  std::optional<GpsdServer> server_;
};

const std::string kLongName(5000, 'x');

/// The port of an address that the server has told of.
int PortOf(const std::string& line) {
  return std::atoi(line.substr(line.rfind(':') + 1).c_str());
}

std::optional<std::string> LookAtServer(int port) {
  return LookAtPage("http://127.0.0.1:" + std::to_string(port) + "/?once");
}

const std::string kEpoch = GgaAt("123519") + WithChecksum("$GPGSA,A,3,07,,,,,,,,,,,,1.9,0.9,1.7") +
                           WithChecksum("$GPGSV,1,1,02,07,45,180,41,40,05,359,33") + "$PXYZ,<b id=x>&\"\r\n" +
                           WithChecksum("$GPGLL,4807.038,N,01131.000,E,123520,A");  // the next epoch

/// `gpsengine serve` on a line that sends an epoch again and again.
struct Serving {
  explicit Serving(const std::string& more = "")
      : program(Split("serve --tcp 0 --port " + line.Name() + " --record " + record + more, ' ')) {}

  const TemporaryFolder folder;
  const std::string record = folder / "served";
  const PseudoTerminal line;
  Program program;
  const int tcp = PortOf(program.Line());
  const std::jthread sender{[this](const std::stop_token& stop) {
    while (!stop.stop_requested()) {
      line.Exchange(kEpoch);
      std::this_thread::sleep_for(50ms);
    }
  }};
};

}  // namespace

TEST_F(GpsdServerTest, AnswersRequestsHoweverTheyComeAndEnd) {
  const std::pair<Strings, Strings> cases[] = {
      {{"?WATCH={\"enable\":true,\"json\":true};\r\n"}, {"DEVICES", "WATCH"}},
      {{"?WATCH={\"enable\":true}"}, {"DEVICES", "WATCH"}},
      {{"?WAT", "CH={\"ena", "ble\":true,\"device\":\"/dev", "/x\"", "}"}, {"DEVICES", "WATCH"}},
      {{"?VERSION"}, {"VERSION"}},  // without any end
      {{"?DEVICES\n?DEVICE\r\n;; \n?VERSION;?POLL;"}, {"DEVICES", "DEVICE", "VERSION", "POLL"}},
      {{"?POLL?VERSION\n"}, {"POLL", "VERSION"}},
      {{"?WATCH={\"device\":\"a;b?}\\\"\"};"}, {"ERROR"}},  // one string, and no such device
      {{"?WATCH={\"enable\":tru};?WATCH={\"raw\":3};?WATCH={\"raw\":-1};?WATCH={\"json\":1};"},
       {"ERROR", "ERROR", "ERROR", "ERROR"}},
      {{"?WATCH={\"enable\":{\"a\":[{}]}};"}, {"ERROR"}},
      {{"?WATCH=" + std::string(2000, '[') + std::string(2000, ']') + ";"}, {"ERROR"}},
      {{"?WATCH={\"x\":\"" + kLongName + "\"};?VERSION;"}, {"ERROR", "VERSION"}},
      {{"?POLL=" + kLongName + kLongName + "\n?VERSION;"}, {"ERROR", "VERSION"}},
      {{"?WATCH={\"enable\":\"\n?VERSION\n"}, {"ERROR", "VERSION"}},  // lost with its line alone
      {{"?DEVICE={\"bps\":9600};"}, {"ERROR"}},
      {{"GET / HTTP/1.0\r\n\r\n"}, {"ERROR"}},
      {{std::string("\0\xFF\xC3;", 4)}, {"ERROR"}},
  };
  for (const auto& [pieces, classes] : cases) {
    const auto peer = Connect();
    for (const auto& piece : pieces) {
      peer->Send(piece);
      Step();
    }
    for (const auto& expected : classes) EXPECT_EQ(NextClass(*peer), expected) << pieces[0].substr(0, 60);
    peer->Send("?POLL;");
    EXPECT_EQ(NextClass(*peer), "POLL") << pieces[0].substr(0, 60);
  }
}

TEST_F(GpsdServerTest, SendsToEachWhatItWatches) {
  const std::pair<std::string_view, Strings> cases[] = {
      {"{}", {R"({"class":"TPV"})"}},
      {R"({"enable":true,"json":true,"nmea":true})", {"$GPZDA", R"({"class":"TPV"})"}},
      {R"({"nmea":true})", {"$GPZDA"}},
      {R"({"raw":1})", {"$GPZDA"}},
      {R"({"raw":2,"nmea":true})", {"\xA0$GPZDA"}},
      {R"({"enable":false,"json":true})", {}},
  };
  std::vector<std::unique_ptr<Peer>> peers;
  for (const auto& [argument, lines] : cases) peers.push_back(Watch(argument));
  server_->PublishBytes("\xA0$GPZDA\r\n");
  server_->PublishSentence("$GPZDA\r\n");
  server_->PublishJson("{\"class\":\"TPV\"}\n");
  for (std::size_t i = 0; i < peers.size(); ++i) {
    for (const auto& line : cases[i].second) EXPECT_EQ(Next(*peers[i]), line) << cases[i].first;
    peers[i]->Send("?POLL;");
    EXPECT_TRUE(Has(Next(*peers[i]), R"("tpv":[{"class":"TPV"}],"gst":[],"sky":[]})"));
  }
}

TEST_F(GpsdServerTest, SparesOthersASlowClientAndTellsItWhatItLost) {
  Begin({.queue = 50'000, .stall = 1h});
  const auto slow = Watch("{}", 4096), quick = Watch("{}");
  constexpr int kLines = 300;  // more than the kernel keeps for a connection, which may cut one
  const auto line = [](int i) {
    return std::to_string(i) + std::string(12'000, static_cast<char>('a' + i % 26));
  };
  for (int i = 0; i < kLines; ++i) {
    server_->PublishJson(line(i) + "\n");
    Step();
    quick->Take();
  }
  for (int i = 0; i < kLines; ++i) ASSERT_EQ(Next(*quick), line(i));
  const auto dropped = server_->Counts().dropped;
  EXPECT_GT(dropped, 0);
  slow->Send("?POLL;");
  std::string last;
  long long lines = 0;
  for (std::string next = Next(*slow); !next.starts_with(R"({"class":"POLL")"); next = Next(*slow), ++lines) {
    ASSERT_EQ(next, line(std::atoi(next.c_str())));  // whole, and in order
    ASSERT_TRUE(last.empty() || std::atoi(last.c_str()) < std::atoi(next.c_str()));
    last = next;
  }
  EXPECT_EQ(last, line(kLines - 1));
  EXPECT_GE(lines + server_->Counts().dropped, kLines);  // the answer may have cost one more
}

TEST_F(GpsdServerTest, EndsTheConnectionOfAClientThatTakesNothing) {
  Begin({.queue = 1 << 20, .stall = 30ms});
  const auto stalled = Watch("{}", 4096), other = Watch("{}");
  for (int i = 0; i < 900; ++i) server_->PublishJson("{" + std::string(1000, ' ') + "}\n");
  for (const auto end = std::chrono::steady_clock::now() + 3s;
       server_->Clients() == 2 && std::chrono::steady_clock::now() < end;) {
    Step();
    other->Take();
  }
  EXPECT_EQ(server_->Counts().stalled, 1);
  EXPECT_EQ(Next(*other).size(), 1002u);
}

TEST_F(GpsdServerTest, HasFiftyClientsAndRefusesMore) {
  Begin({.clients = 50});
  std::vector<std::unique_ptr<Peer>> peers;
  for (int i = 0; i < 50; ++i) peers.push_back(Watch("{}"));
  Peer tooMany(server_->Port());
  EXPECT_EQ(NextClass(tooMany), "ERROR");
  EXPECT_EQ(Next(tooMany), "end");
  // Half of them go away with something on its way to them, some with a request half said.
  for (int i = 0; i < 50; i += 2) peers[static_cast<std::size_t>(i)]->Send("?WATCH={");
  for (int i = 0; i < 20; ++i) server_->PublishJson("{" + std::string(10'000, ' ') + "}\n");
  for (int i = 0; i < 50; i += 2) peers[static_cast<std::size_t>(i)].reset();
  for (int i = 1; i < 50; i += 2)
    for (int n = 0; n < 20; ++n) ASSERT_EQ(Next(*peers[static_cast<std::size_t>(i)]).size(), 10'002u);
  EXPECT_EQ(server_->Clients(), 25u);
  EXPECT_EQ(NextClass(*Connect("?POLL;")), "POLL");
  EXPECT_EQ(server_->Counts().refused, 1);
}

TEST(SentenceFinder, FindsSentencesBetweenAnythingElse) {
  const std::string stream = "47*2D$GPZDA,1*00\r\n\x81$\x02\xA0$GP\x80$GPVTG,!*11\n\nx!AIVDM,1*22\r$" +
                             std::string(2000, 'x') + "\r\n$GPGLL*33\r\nPMD:1\rPER:2\nPEM:3\r\nPRTA: 4\r$GPG";
  const Strings expected = {"$GPZDA,1*00\r\n", "$GPVTG,!*11\r\n", "!AIVDM,1*22\r\n", "$GPGLL*33\r\n",
                            "PMD:1\r\n",       "PER:2\r\n",       "PEM:3\r\n",       "PRTA: 4\r\n"};
  for (const std::size_t size : {std::size_t{1}, std::size_t{7}, stream.size()}) {
    SentenceFinder finder;
    Strings found;
    for (std::size_t at = 0; at < stream.size(); at += size) {
      finder.Feed(std::string_view(stream).substr(at, size),
                  [&](auto sentence) { found.emplace_back(sentence); });
    }
    EXPECT_EQ(found, expected) << size;
  }
}

TEST(PageHub, KeepsSoMuchForSoMany) {
  PageHub hub(/*history=*/30, /*readers=*/2);
  hub.SetStatus("S");
  for (const char* line : {"0123456789", "1123456789", "2123456789", "3123456789"}) hub.Publish(line);
  EXPECT_EQ(hub.History(), "S\n1123456789\n2123456789\n3123456789\n");
  const auto taken = [](auto& reader) {
    std::string events;
    return reader->Take(events, 0ms) ? events : "none";
  };
  auto reader = hub.Join(-1);
  EXPECT_EQ(taken(reader),
            "data: S\n\nid: 2\ndata: 1123456789\n\nid: 3\ndata: 2123456789\n\nid: 4\ndata: 3123456789\n\n");
  for (int i = 0; i < 5; ++i) hub.Publish(std::to_string(i) + "abcdefghi");  // two of which it misses
  EXPECT_TRUE(taken(reader).starts_with("id: 7\ndata: 2abc"));
  EXPECT_EQ(hub.GetCounts().dropped, 2);

  const auto back = hub.Join(8);
  EXPECT_EQ(taken(back), "data: S\n\nid: 9\ndata: 4abcdefghi\n\n");
  EXPECT_EQ(hub.Join(-1), nullptr);
  reader.reset();
  EXPECT_NE(hub.Join(1000), nullptr);
  const std::jthread closing([&] { hub.Close(); });
  std::string events;
  EXPECT_FALSE(back->Take(events, 1h));
}

TEST(Serve, GivesGpspipePositionsAndSentences) {
  Serving serving;
  const std::string server = "127.0.0.1:" + std::to_string(serving.tcp);
  const auto json = RunTool("gpspipe", "-w -n 9 " + server);
  if (!json) GTEST_SKIP() << "gpspipe is in gpsd-clients";
  EXPECT_TRUE(Has(*json, R"("lat":48.117300000,"lon":11.516666667,"altMSL":545.4000)",
                  R"({"PRN":7,"gnssid":0,"svid":7,"el":45.0,"az":180.0,"ss":41,"used":true})"));
  EXPECT_TRUE(Has(*RunTool("gpspipe", "-r -n 9 " + server), kEpoch.substr(0, 60)));
  serving.program.Signal(SIGTERM);
  EXPECT_EQ(serving.program.Wait(), 130);
  EXPECT_TRUE(Has(RunToEnd("decode --format text " + serving.record).output, "48.1173000N"));
}

TEST_F(PluggedRun, KeepsTheClientsOfAServer) {
  ServeOptions serve;
  serve.port = options.port;
  serve.tcp = 0;
  serve.reconnect = 20ms;
  const auto story = [&] {
    Peer peer(PortOf(Shown(5000)));
    peer.Send("?WATCH={};");
    const auto sendUntil = [&](std::string_view part) {
      EXPECT_TRUE(Soon([&, seen = peer.Rest().size()] {
        terminal->Exchange(kEpoch);
        return peer.Take() && peer.Rest().find(part, seen) != std::string::npos;
      })) << part;
    };
    sendUntil(R"("class":"TPV")");
    Unplug();
    sendUntil(R"("activated":0)");
    Plug();
    sendUntil(R"("class":"TPV")");
    kill(getpid(), SIGTERM);
  };
  const auto run = [&](const auto& interrupt, auto& output) { return Serve(serve, interrupt, output); };
  EXPECT_EQ(Do(run, story), ExitCode::interrupted);
}

TEST(Serve, ShowsOnThePageHowOldAFixIs) {
  constexpr std::pair<const char*, const char*> cases[] = {
      {R"("lost":false,"fix":"SBAS","fixAge":60,"positionAge":60)", ">silent, last fix 60 s ago<"},
      {R"("lost":true,"fix":"SBAS","fixAge":1,"positionAge":1)", ">port lost, last fix 1 s ago<"}};
  for (const auto& [server, shows] : cases) {
    PageHub hub, sentences;
    hub.SetStatus(R"({"class":"SERVER","corrections":{"source":"ntrip://caster:2101/BASE","age":2.5,)"
                  R"("messages":7,"types":{"1005":3,"1077":4}},)" +
                  std::string(server) + "}");
    hub.Publish(
        R"({"class":"TPV","mode":3,"status":4,"time":"2024-05-14T12:35:19.250Z","lat":48.1,"lon":11.5})");
    std::unique_ptr<PageServer> page_server;
    try {
      page_server = StartPageServer(hub, sentences, "127.0.0.1", 0);
    } catch (const Failure&) {
      GTEST_SKIP() << "built without libcpp-httplib-dev";
    }
    const auto page = LookAtServer(page_server->Port());
    if (!page) GTEST_SKIP() << "no chromium to look at the page with";
    EXPECT_TRUE(Has(*page, shows, "<body class=\"old\">",
                    "2.5 s old, 7 messages (1005 1077) from ntrip://caster:2101/BASE"));
  }
}

TEST(Serve, ShowsAPage) {
  Serving serving(" --http 0");
  const int http = PortOf(serving.program.Line());
  if (http == 0) GTEST_SKIP() << "built without libcpp-httplib-dev";
  const auto fetch = [&](const std::string& path, const std::string& host = "localhost:1") {
    Peer peer(http);
    peer.Send("GET " + path + " HTTP/1.0\r\nHost: " + host + "\r\n\r\n");
    while (peer.Take()) std::this_thread::sleep_for(1ms);
    return peer.Rest();
  };
  EXPECT_TRUE(Soon([&] { return Has(fetch("/history"), "<b id=x>&\\\""); }));
  EXPECT_TRUE(Soon([&] { return Has(fetch("/status"), R"("lost":false,"understood":true)"); }));
  EXPECT_TRUE(Has(fetch("/", "127.0.0.1"), "<title>gpsengine</title>"));
  EXPECT_TRUE(Has(fetch("/status", "localhost.example:80"), "403"));
  EXPECT_TRUE(Has(fetch("/../CMakeLists.txt"), "404"));
  Peer events(http);
  events.Send("GET /events HTTP/1.0\r\nHost: [::1]\r\n\r\n");
  while (!Has(events.Rest(), "data: {\"class\":\"SKY\"")) ASSERT_TRUE(events.Take());

  Peer sentences(http);
  sentences.Send("GET /sentences HTTP/1.0\r\nHost: [::1]\r\n\r\n");
  while (!Has(sentences.Rest(), "data: $GPGSV,1,1,02,07,45,180,41,40,05,359,33*"))
    ASSERT_TRUE(sentences.Take());

  const auto page = LookAtServer(http);
  serving.program.Signal(SIGTERM);  // with a stream of events still open
  EXPECT_EQ(serving.program.Wait(10s), 130);
  if (!page) GTEST_SKIP() << "no chromium to look at the page with";
  EXPECT_TRUE(Has(*page, "48.1173000\u00B0 N", ">GPS<", "class=\"sat sys-gps used\"",
                  "class=\"sat sys-sbas\"", "class=\"fix-gps way\"", "&lt;b id=x&gt;&amp;\""));
  EXPECT_FALSE(Has(*page, "class=\"old\"") || Has(*page, "<b id="));
}
