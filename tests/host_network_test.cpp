// Receivers at addresses: what is taken for one, lines to peers that do as they like, and runs on them.
#include "host/command.h"
#include "host/line/config.h"
#include "host/line/port.h"
#include "host/line/portsearch.h"
#include "host/network/dial.h"
#include "host/network/gpsdlines.h"
#include "host/network/rfc2217line.h"
#include "tests/support/conversation.h"
#include "tests/support/monitorrun.h"
#include "tests/support/program.h"
#include "tests/support/tcppeer.h"

using namespace std::chrono_literals;

namespace {

TEST(Addresses, AreReadOrRefusedWithTheRightForm) {
  const std::tuple<const char*, const char*, int> kGood[] = {
      {"tcp://gps.example:3001", "gps.example", 3001},
      {"rfc2217://[2001:db8::1]:3001", "2001:db8::1", 3001},
      {"tcp://[fe80::1%eth0]:1", "fe80::1%eth0", 1},
      {"udp://:10110", "", 10110},
      {"udp://127.0.0.1:65535", "127.0.0.1", 65535},
      {"gpsd://gps.example", "gps.example", 2947},
      {"gpsd://[::1]", "::1", 2947},
      {"-", "", 0}};
  for (const auto& [name, where, port] : kGood) {
    ASSERT_TRUE(host::IsAddress(name));
    const host::Address address = host::ReadAddress(name);
    EXPECT_EQ(address.host, where) << name;
    EXPECT_EQ(address.port, port) << name;
  }
  for (const char* device : {"/dev/ttyUSB0", "./odd:1", "COM3", "auto"})
    EXPECT_FALSE(host::IsAddress(device));
  const std::pair<const char*, const char*> kBad[] = {
      {"gps.example:3001", "no device; an address looks like tcp://gps.example:3001"},
      {"http://gps.example", "no \"http\"; an address looks like tcp://HOST:PORT, rfc2217://"},
      {"tcp://gps.example", "the port is missing; an address looks like tcp://gps.example:3001"},
      {"tcp://:3001", "the host is missing"},
      {"tcp://gps.example:", "the port is missing"},
      {"tcp://gps.example:65536", "no number from 1 to 65535"},
      {"tcp://gps.example:+1", "no number from 1 to 65535"},
      {"tcp://gps.example:1/x", "no path"},
      {"tcp://me@gps.example:1", "no user"},
      {"tcp://::1:3001", "in brackets"},
      {"tcp://[::1:3001", "in brackets"},
      {"tcp://[gps]:3001", "in brackets"}};
  for (const auto& [name, what] : kBad) {
    const std::string error = ErrorOf([name = name] { host::Port::Of(name); });
    EXPECT_TRUE(error.starts_with("2 ") && Has(error, what)) << error;
  }
}

/// The line at an address, or the reason why there is none in `*reason`.
std::unique_ptr<SerialLine> OpenAt(const std::string& name, std::string* reason = nullptr) {
  const auto port = host::Port::Of(name);
  while (!port->Prepare()) {
    pollfd over{port->Descriptor(), POLLIN, 0};
    poll(&over, 1, -1);
  }
  auto line = port->Open();
  if (reason != nullptr) *reason = port->WhyNot();
  return line;
}

/// What comes until that much has come, or the line is gone.
std::string ReadFrom(SerialLine& line, std::size_t least) {
  std::string bytes;
  char piece[100];
  for (int count = 0; bytes.size() < least && (count = line.Read(piece, sizeof piece, 5000)) > 0;)
    bytes.append(piece, static_cast<std::size_t>(count));
  return bytes;
}

TEST(NetworkLine, CarriesBytesBothWaysUntilThePeerHasGone) {
  TcpPeer peer;
  const auto line = OpenAt("tcp://localhost:" + std::to_string(peer.Port()));
  peer.Accept();
  peer.Send(std::string("to\0you", 6));
  EXPECT_TRUE(line->PurgeInput());
  char first = 0;
  EXPECT_EQ(line->Read(&first, 1, 5000), 1);
  DWORD errors = 1;
  EXPECT_EQ(line->BytesWaiting(errors), 5);
  EXPECT_EQ(first + ReadFrom(*line, 5), std::string("to\0you", 6)) << "nothing is purged";
  EXPECT_EQ(line->Write("to me", 5, 1000), 5);
  EXPECT_EQ(peer.Receive(5), "to me");
  EXPECT_EQ(line->Read(&first, 1, 1), 0) << "silence is no loss";
  line->WakeReader();
  EXPECT_EQ(line->Read(&first, 1, 60'000), 0);
  peer.Send("bye");
  peer.HangUp();
  EXPECT_EQ(ReadFrom(*line, 3), "bye");
  EXPECT_EQ(line->Read(&first, 1, 60'000), -1);
  EXPECT_EQ(line->Read(&first, 1, 60'000), -1);
}

TEST(NetworkLine, GivesUpOnAPeerThatTakesNothing) {
  TcpPeer peer;
  const auto line = OpenAt("tcp://" + peer.Host());
  peer.Accept();
  const std::string much(16 << 20, 'x');
  const int taken = line->Write(much.data(), static_cast<int>(much.size()), 30);
  EXPECT_TRUE(taken > 0 && taken < static_cast<int>(much.size())) << taken;
  const std::jthread canceller([&] {
    std::this_thread::sleep_for(10ms);
    line->Cancel();
  });
  EXPECT_EQ(line->Write("x", 1, 60'000), 0);
  char byte;
  EXPECT_EQ(line->Read(&byte, 1, 60'000), 0);
}

TEST(NetworkLine, IsNotOpenedWithoutWordsOnWhatWasTried) {
  std::string reason;
  const int port = FreePort();
  EXPECT_EQ(OpenAt("tcp://localhost:" + std::to_string(port), &reason), nullptr);
  EXPECT_TRUE(
      Has(reason, "cannot connect to localhost:" + std::to_string(port) + ": connection refused (tried "));
  EXPECT_EQ(OpenAt("tcp://no-such-host.invalid:1", &reason), nullptr);
  EXPECT_TRUE(Has(reason, "cannot look up no-such-host.invalid: "));
  const auto first = OpenAt("udp://127.0.0.1:" + std::to_string(port));
  EXPECT_EQ(OpenAt("udp://127.0.0.1:" + std::to_string(port), &reason), nullptr);
  EXPECT_TRUE(Has(reason, "cannot listen on 127.0.0.1:" + std::to_string(port) + ": address already in use"));
  if (host::Rfc2217Version() == "without gensio") return;
  TcpPeer closing;
  std::jthread closer([&] { closing.Accept(), closing.HangUp(); });
  EXPECT_EQ(OpenAt("rfc2217://" + closing.Host(), &reason), nullptr);
  EXPECT_TRUE(Has(reason, "closed the connection at once"));
  closer.join();
  closer = std::jthread([&] {
    closing.Accept();
    closing.Send("\xFF\xFC\x2C\xFF\xFE\x2C");  // neither will nor shall there be RFC 2217
    closing.Receive(1000);
  });
  EXPECT_EQ(OpenAt("rfc2217://" + closing.Host(), &reason), nullptr);
  EXPECT_TRUE(Has(reason, "does not set a serial line by RFC 2217: tcp://"));
}

TEST(NetworkLine, TakesGpsdsOwnLinesOutOfItsStreamAndAsksForNothingButThat) {
  const std::string stream = "{\"class\":\"VERSION\",\"release\":\"3\"}\r\n" + FixAt(1) +
                             "{\"clash\"}{{\"class\":\"DEVICE\"}\r\n\x02{";
  for (std::size_t cut = 0; cut <= stream.size(); ++cut) {
    host::GpsdLines lines("gps.example:2947");
    std::string bytes = lines.Strip(stream.substr(0, cut));
    bytes += lines.Strip(stream.substr(cut));
    bytes += lines.Strip("$");
    ASSERT_EQ(bytes, FixAt(1) + "{\"clash\"}{\x02{$") << cut;
  }
  host::GpsdLines endless("gps.example:2947");
  std::string bytes = endless.Strip("{\"class\":\"");
  for (int i = 0; i < 1000; ++i) bytes += endless.Strip(FixAt(1).substr(0, 60));
  EXPECT_GT(bytes.size(), 30'000u) << "an object without an end is given up";

  TcpPeer peer;
  const auto line = OpenAt("gpsd://" + peer.Host());
  peer.Accept();
  EXPECT_EQ(line->Write("$PTNL", 5, 1000), 0);
  peer.Send("{\"class\":\"ERROR\",\"message\":\"no\"}\n" + FixAt(1));
  testing::internal::CaptureStderr();
  EXPECT_EQ(ReadFrom(*line, 1), FixAt(1));
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "gpsengine: " + peer.Host() + " says {\"class\":\"ERROR\",\"message\":\"no\"}\n");
  line->Cancel();
  EXPECT_EQ(peer.Receive(1000), "?WATCH={\"enable\":true,\"raw\":2};\n");
}

class NetworkRun : public MonitorRun {
 protected:
  host::ExitCode Command(const std::string& port) {
    host::CommandOptions order;
    order.port = port;
    order.model = "CSI";
    order.operation = "gga-only";
    return Do([&](const auto& interrupt, auto& output) { return host::Command(order, interrupt, output); });
  }
};

TEST_F(NetworkRun, GoesOnWhenItsPeerIsThereAndIsBack) {
  auto peer = std::make_unique<TcpPeer>();
  const int port = peer->Port();
  options.port = "tcp://" + peer->Host();
  peer.reset();
  const auto begin = [&](int second) {
    peer = std::make_unique<TcpPeer>(port);
    peer->Accept();
    peer->Send(FixAt(second));
  };
  EXPECT_EQ(Run([&] {
              std::this_thread::sleep_for(50ms);
              begin(1);
              UntilShown(1, [] {});
              peer.reset();
              begin(2);
              UntilShown(2, [] {});
              CloseOutput();
              peer.reset();
            }),
            host::ExitCode::done);
  EXPECT_TRUE(
      Has(errors, "waiting for " + options.port + " to answer", "the port is back as " + options.port));
  EXPECT_LE(Count(errors, "connection refused"), 2) << "once for each wait\n" << errors;
  EXPECT_EQ(ReadFile(options.record), FixAt(1) + FixAt(2)) << "from the first byte on";
  EXPECT_EQ(host::ReadConfig().port, options.port);
}

TEST_F(NetworkRun, EndsAtOnceWhileNobodyAnswers) {
  const TcpPeer peer;
  // The one place in its queue is taken, so that whoever comes next gets no answer.
  std::vector<std::unique_ptr<host::Dial>> callers;
  for (int i = 0; i < 2; ++i)
    callers.push_back(std::make_unique<host::Dial>(host::ReadAddress("tcp://" + peer.Host())));
  for (const auto& caller : callers) {
    pollfd over{caller->Descriptor(), POLLIN, 0};
    poll(&over, 1, 100);
  }
  options.port = "tcp://" + peer.Host();
  const auto interrupt = [self = pthread_self()] { Sleep(30), pthread_kill(self, SIGINT); };
  EXPECT_LT(Took([&] { EXPECT_EQ(Run(interrupt), host::ExitCode::interrupted); }), 3000u);
}

TEST_F(NetworkRun, TakesDatagrams) {
  const int port = FreePort();
  options.port = "udp://127.0.0.1:" + std::to_string(port);
  const auto sender = ConnectTo(port, SOCK_DGRAM);
  EXPECT_EQ(Run([&] {
              UntilShown(1, [&] {
                for (const std::string& datagram : {FixAt(1), std::string()})
                  send(sender.Get(), datagram.data(), datagram.size(), 0);
              });
              CloseOutput();
            }),
            host::ExitCode::done);
}

TEST_F(NetworkRun, TakesStandardInputAsItComesAndEndsWithIt) {
  int input[2];
  ASSERT_EQ(pipe2(input, O_CLOEXEC), 0);
  const int before = dup(STDIN_FILENO);
  dup2(input[0], STDIN_FILENO);
  close(input[0]);
  options.port = "-";
  const auto send = [&](int second) {
    const std::string fix = FixAt(second);
    EXPECT_EQ(write(input[1], fix.data(), fix.size()), static_cast<ssize_t>(fix.size()));
  };
  EXPECT_EQ(Run([&] {
              send(1);
              UntilShown(1, [] {});
              send(2);
              close(input[1]);
            }),
            host::ExitCode::done)
      << errors;
  EXPECT_TRUE(Has(Shown(0), "00:00:12")) << "the last of it";
  EXPECT_EQ(host::ReadConfig().port, "") << "it is not there another time";
  EXPECT_EQ(Run([] {}), host::ExitCode::nothing_understood);
  EXPECT_TRUE(Has(errors, "standard input"));
  dup2(before, STDIN_FILENO);
  close(before);
}

TEST_F(NetworkRun, RefusesWhatAnAddressDoesNotTake) {
  EXPECT_EQ(Command("udp://:1"), host::ExitCode::refused);
  EXPECT_TRUE(Has(errors, "nothing can be sent to udp://:1"));
  for (const int baud : {9600, host::kAutoBaud}) {
    const auto choose = [&] { host::ChooseLine({"tcp://gps.example:1", baud, "Other"}, true, {}); };
    EXPECT_TRUE(Has(ErrorOf(choose), "2 --baud has no effect on tcp://gps.example:1"));
  }
  options.format = host::Format::tui;
  options.port = "-";
  EXPECT_EQ(Run([] {}), host::ExitCode::usage) << "the screen has its keys from there";
  host::SetConfig("port", "tcp://gps.example:1");
  EXPECT_EQ(host::ReadConfig().port, "tcp://gps.example:1");
  EXPECT_THROW(host::SetConfig("port", "tcp://gps.example"), host::Failure);
}

// A server that no one here wrote, which gives rubbish where the speed is wrong, as a real line does.
TEST_F(NetworkRun, FindsAndCommandsAReceiverBehindSer2net) {
  if (!HasTool("ser2net") || host::Rfc2217Version() == "without gensio")
    GTEST_SKIP() << "ser2net is missing, or gensio";
  const auto runner = RunSimulated("CSI", 20);  // at 9600 baud
  const int port = FreePort();
  WriteFile(folder / "ser2net.yaml", "connection: &c\n  accepter: telnet(rfc2217),tcp,127.0.0.1," +
                                         std::to_string(port) + "\n  connector: serialdev," +
                                         runner->PortName() + ",4800n81,local\n");
  std::optional<Program> server;
  const auto start = [&] {
    server.emplace(std::vector<std::string>{"-n", "-d", "-u", "-c", folder / "ser2net.yaml"}, "", "ser2net");
  };
  options.port = "rfc2217://127.0.0.1:" + std::to_string(port);
  options.model = "CSI";
  options.count = 3;
  EXPECT_EQ(Run(start), host::ExitCode::done) << errors;
  options.count = 0;
  host::FoundLine found;
  Do([&](const auto& interrupt, auto&) {
    found = host::SearchLine({{options.port}, {38400, 9600}, 600ms, 50ms}, interrupt);
    return host::ExitCode::done;
  });
  EXPECT_EQ(found.baud, 9600) << errors;
  EXPECT_TRUE(Has(errors, "at 38400 baud: bytes that make no message"));
  Command(options.port);
  EXPECT_TRUE(Has(errors, "the receiver acknowledged"));
  EXPECT_EQ(Run([&] {
              while (!Shown(0).empty()) continue;
              EXPECT_NE(Shown(5000), "");
              server.reset();
              while (!Shown(200).empty()) continue;
              start();
              EXPECT_NE(Shown(5000), "");
              CloseOutput();
            }),
            host::ExitCode::done);
  EXPECT_TRUE(Has(errors, "the port is back as " + options.port));
}

}  // namespace
