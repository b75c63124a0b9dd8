#include <gtest/gtest.h>

#include <sstream>
#include <vector>

#include "gpsengine/engine/gpsengine.h"
#include "gpsengine/platform/application.h"
#include "host/commands/models.h"
#include "host/commands/rehearse.h"
#include "host/run/failure.h"

using namespace host;

namespace {

class HostOperations : public testing::Test {
 protected:
  /// The steps and the result of an operation, its words as a user writes them.
  static std::string Steps(const std::string& model, std::vector<std::string> words, bool wait = false,
                           bool port_opens = true) {
    const Operation& operation = FindOperation(words[0]);
    words.erase(words.begin());
    const auto transcript =
        Rehearse(model, operation, Prepare(operation, Arguments{std::move(words), wait}), port_opens);
    return transcript.Text() + NameOf(transcript.result);
  }

  /// The text of the failure that these words give, empty if they are taken.
  static std::string Refusal(const std::vector<std::string>& words, bool wait = false) {
    try {
      const Operation& operation = FindOperation(words[0]);
      Prepare(operation, Arguments{{words.begin() + 1, words.end()}, wait});
    } catch (const Failure& failure) {
      EXPECT_EQ(failure.Code(), ExitCode::usage);
      return failure.what();
    }
    return "";
  }

  CWinApp app_{"gpsengine-test"};
};

}  // namespace

// The lines of the others stand in docs/receivers.md.
TEST_F(HostOperations, WriteAndResultInWhatTheModelSays) {
  const struct {
    const char* model;
    std::vector<std::string> words;
    const char* steps;
  } cases[] = {
      {"Ashtech", {"start"}, "true"},
      {"CSI", {"set-elevation-mask", "12"}, "write \"$PASHS,PEM,12\\r\\n\"\nwait 200\nnone"},
      {"CSI", {"set-beacon", "304.50", "200"}, "write \"$GPMSK,304.50,M,200,M,0\\r\\n\"\nwait 200\nnone"},
      {"Ashtech", {"raw-interval", "5"}, "write \"$PASHS,RCI,5.000000\\r\\n\"\nwait 200\ntrue"},
      {"Ashtech", {"raw-interval", "0.1"}, "false"},
      {"Other", {"send", "$JSHOW"}, "write \"$JSHOW\\r\\n\"\nnone"},
      {"Other", {"set-dgps", "waas"}, "none"},
  };
  for (const auto& [model, words, steps] : cases) EXPECT_EQ(Steps(model, words), steps) << words[0];
}

TEST_F(HostOperations, CountAWaitForAnAcknowledgementAsAcknowledged) {
  const std::string steps = Steps("CSI", {"reset"}, true);
  EXPECT_TRUE(steps.starts_with("write \"$PASHS,RST\\r\\n\"\nwait-ack 10000\nwait 3000\n")) << steps;
  EXPECT_TRUE(steps.ends_with("write \"$PASHS,SAV,Y\\r\\n\"\nwait-ack 1000\ntrue")) << steps;
}

TEST_F(HostOperations, DoNothingOnAPortThatDoesNotOpen) {
  EXPECT_EQ(Steps("CSI", {"default-nmea"}, false, false), "none");
  EXPECT_EQ(Steps("CSI", {"reset"}, true, false), "false");
  EXPECT_EQ(Steps("Leica", {"start"}, false, false), "false");
}

TEST_F(HostOperations, TakeNoArgumentsButTheirOwn) {
  const char* const wrong[] = {"set-elevation-mask",
                               "set-elevation-mask ten",
                               "set-elevation-mask 91",
                               "set-elevation-mask 10 20",
                               "set-beacon 304.5\r\n$JRESET",
                               "set-beacon -1",
                               "set-beacon auto 200",
                               "set-dgps WAAS",
                               "set-lband 1557.845",
                               "set-lband inf 1200",
                               "dgps-status yes",
                               "raw-interval 1s",
                               "gga-only now",
                               "send $JSHOW\r\n$JRESET",
                               "send \u20AC",
                               "no-such-thing"};
  for (const char* call : wrong) {
    std::istringstream stream(call);
    std::vector<std::string> words;
    for (std::string word; std::getline(stream, word, ' ');) words.push_back(word);
    EXPECT_NE(Refusal(words), "") << call;
  }
  EXPECT_NE(Refusal({"send", std::string(199, 'x')}), "");
  EXPECT_NE(Refusal({"gga-only"}, true), "") << "only a reset is acknowledged";
  EXPECT_EQ(Refusal({"send", std::string(198, 'x')}), "");
  EXPECT_EQ(Refusal({"set-beacon", "304.5"}), "") << "the bit rate may be left to the receiver";
}

TEST_F(HostOperations, AreListedWhereTheModelHasThem) {
  CGPSEngine engine;
  const auto names = [&](const char* model) {
    std::string list;
    for (const Operation* operation : OperationsOf(SelectModel(engine, model)))
      list += std::string(operation->name) + ' ';
    return list;
  };
  EXPECT_EQ(names("Other"), "start send keep-alive suspend ");
  // The capability answer for the source of corrections opens more than this make has.
  EXPECT_EQ(names("SiRF"), "start default-nmea gga-only set-dgps reset send keep-alive suspend ");
}
