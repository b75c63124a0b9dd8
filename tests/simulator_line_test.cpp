#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

#include <chrono>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "simulator/linespeed.h"
#include "simulator/simulator.h"

namespace simulator {
namespace {

std::unique_ptr<Receiver> Make(const std::string& model) {
  Options options;
  options.model = model;
  return MakeReceiver(options);
}

// The host's end of the pseudo-terminal.
class Peer {
 public:
  explicit Peer(const std::string& port, speed_t rate = B9600)
      : descriptor_(open(port.c_str(), O_RDWR | O_NOCTTY)) {
    termios settings{};
    tcgetattr(descriptor_, &settings);
    cfmakeraw(&settings);
    cfsetspeed(&settings, rate);
    tcsetattr(descriptor_, TCSANOW, &settings);
    tcflush(descriptor_, TCIFLUSH);
  }
  ~Peer() { close(descriptor_); }
  Peer(const Peer&) = delete;
  Peer& operator=(const Peer&) = delete;

  void Write(const std::string& text) const {
    ASSERT_EQ(write(descriptor_, text.data(), text.size()), static_cast<ssize_t>(text.size()));
  }

  // Reads until `what` has come, the line is gone or the time is up; true in the first case.
  bool Sees(const std::string& what, int milliseconds = 2000) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds);
    while (read_.find(what) == read_.npos && !gone_ && std::chrono::steady_clock::now() < end) Read(50);
    return read_.find(what) != read_.npos;
  }
  bool SeesHangUp() {
    for (int i = 0; i < 100 && !gone_; ++i) Read(20);
    return gone_;
  }
  const std::string& Seen() const { return read_; }

 private:
  void Read(int milliseconds) {
    pollfd descriptor{descriptor_, POLLIN, 0};
    if (poll(&descriptor, 1, milliseconds) <= 0) return;
    char buffer[1024];
    const auto count = read(descriptor_, buffer, sizeof buffer);
    gone_ = count <= 0;
    if (count > 0) read_.append(buffer, static_cast<std::size_t>(count));
  }

  int descriptor_;
  std::string read_;
  bool gone_ = false;
};

PtyRunner::Settings Fast() {
  PtyRunner::Settings settings;
  settings.speed_up = 20;
  return settings;
}

TEST(HeardAt, IsThePlainTextOnlyAtTheRateOfTheSender) {
  const std::string text = "$GPGGA,080001.00";
  EXPECT_EQ(HeardAt(text, 9600, 9600), text);
  EXPECT_EQ(HeardAt(text, 9600, 9700), text);  // a port stands a few percent
  for (const int rate : {2400, 4800, 19200, 115200}) {
    const std::string heard = HeardAt(text, 9600, rate);
    EXPECT_FALSE(heard.empty());
    EXPECT_EQ(heard.find("GPG"), std::string::npos) << rate;
  }
}

TEST(PtyRunner, AnswersOnTheLineAndPassesComplaintsOn) {
  PtyRunner runner(Make("CSI"), Fast());
  runner.Start();
  Peer peer(runner.PortName());
  EXPECT_TRUE(peer.Sees("$PASHR,SAT"));
  peer.Write("$PASHS,PEM,10\r\nFOO\r\n$GPCRQ,MSK\r\n");
  EXPECT_TRUE(peer.Sees("$PASHR,ACK*3D\r\n"));
  EXPECT_TRUE(peer.Sees("$CRMSK"));
  runner.Stop();
  EXPECT_EQ(runner.TakeComplaints(), std::vector<std::string>{"unknown line: FOO"});
}

TEST(PtyRunner, OutlivesPeersThatComeAndGo) {
  PtyRunner runner(Make("Other"), Fast());
  runner.Start();
  for (int i = 0; i < 3; ++i) EXPECT_TRUE(Peer(runner.PortName()).Sees("$GPVTG"));
  runner.Stop();
  runner.Start();
  EXPECT_TRUE(Peer(runner.PortName()).Sees("$GPVTG"));
}

TEST(PtyRunner, GarblesBothWaysAtAWrongRate) {
  PtyRunner runner(Make("CSI"), Fast());
  runner.Start();
  {
    Peer wrong(runner.PortName(), B4800);
    wrong.Write("$GPCRQ,MSK\r\n");
    EXPECT_FALSE(wrong.Sees("$GP", 200));
    EXPECT_GT(wrong.Seen().size(), 100U);
  }
  Peer right(runner.PortName(), B9600);
  EXPECT_TRUE(right.Sees("$GPGGA"));
}

TEST(PtyRunner, StopsAtOnceWhenNobodyReads) {
  PtyRunner::Settings settings = Fast();
  settings.speed_up = 1e5;  // the terminal is full in no time
  PtyRunner runner(Make("Other"), settings);
  Peer peer(runner.PortName());
  runner.Start();
  std::this_thread::sleep_for(std::chrono::milliseconds(50));
  const auto start = std::chrono::steady_clock::now();
  runner.Stop();
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(500));
  EXPECT_TRUE(peer.Sees("$GPGGA"));
}

TEST(PtyRunner, HangsUp) {
  PtyRunner runner(Make("Other"));
  runner.Start();
  Peer peer(runner.PortName());
  runner.HangUp();
  EXPECT_TRUE(peer.SeesHangUp());
  runner.Start();  // has no line any more
  runner.Stop();
}

}  // namespace
}  // namespace simulator
