#include <algorithm>
#include <cmath>
#include <iterator>

#include "simulator/bytes.h"
#include "simulator/core.h"
#include "simulator/languages.h"
#include "simulator/text.h"

namespace simulator {
namespace {

constexpr std::string_view kFrameStart = "\xA0\xA2", kFrameEnd = "\xB0\xB3";
constexpr std::size_t kLongestPayload = 1023, kFrameOverhead = 8;
constexpr const char* kSentences[] = {"GGA", "GLL", "GSA", "GSV", "RMC", "VTG"};  // by message number
constexpr int kRates[] = {1200, 2400, 4800, 9600, 19200, 38400, 57600, 115200};

unsigned Byte(std::string_view bytes, std::size_t i) {
  return static_cast<unsigned char>(bytes[i]);
}
unsigned Pair(std::string_view bytes, std::size_t i) {
  return Byte(bytes, i) << 8 | Byte(bytes, i + 1);
}

unsigned PayloadSum(std::string_view payload) {
  unsigned sum = 0;
  for (std::size_t i = 0; i < payload.size(); ++i) sum += Byte(payload, i);
  return sum & 0x7FFF;
}

std::string Frame(const std::string& payload) {
  std::string frame(kFrameStart);
  AppendBig(frame, static_cast<std::uint16_t>(payload.size()));
  frame += payload;
  AppendBig(frame, static_cast<std::uint16_t>(PayloadSum(payload)));
  return frame.append(kFrameEnd);
}

/// Two protocols on one line: "$PSRF" sentences, which must have a checksum, and binary frames. In the text
/// protocol a frame is taken in as well, as far as it leads to the text protocol.
class Sirf final : public Core {
 public:
  Sirf(const Options& options, const Model& model) : Core(options, model.baud) {
    AddMessage("navigation", [](const Epoch& e) { return Navigation(e); });
    LeaveFactory({"GGA", "GSA", "GSV", "VTG"});
  }

 private:
  Verdict Understand(std::string_view line) override {
    static constexpr Command<Sirf> kCommands[] = {
        {{"$PSRF100", ""}, &Sirf::SetProtocol},
        {{"$PSRF103", ""}, &Sirf::SetSentence},
    };
    if (IsBinary()) return Verdict::kUnknown;
    const Fields fields = Fields::OfSentence(line);
    return fields.checksum() == Fields::Checksum::kGood ? Obey(*this, kCommands, fields)
                                                        : Verdict::kBadChecksum;
  }

  std::size_t TakeFrame(std::string_view input) override {
    const std::size_t known = std::min(input.size(), kFrameStart.size());
    if (input.substr(0, known) != kFrameStart.substr(0, known)) return 0;
    if (input.size() < 4) return input.npos;
    const std::size_t length = Pair(input, 2);
    if (length <= kLongestPayload && input.size() < length + kFrameOverhead) return input.npos;
    if (length > kLongestPayload || input.substr(length + 6, 2) != kFrameEnd) {
      Complain(input.substr(0, 4), "frame without an end");
      return kFrameStart.size();
    }
    const std::string_view payload = input.substr(4, length);
    if (PayloadSum(payload) != Pair(input, length + 4)) {
      Complain(input.substr(0, length + kFrameOverhead), "bad checksum");
    } else if (!TakeMessage(payload)) {
      Complain(input.substr(0, length + kFrameOverhead), "unknown message");
    }
    return length + kFrameOverhead;
  }

  void Adapt(Epoch& epoch) const override { epoch.quality = Value("source") == "1" ? 2 : 1; }

  bool IsBinary() const { return Value("protocol") == "binary"; }

  void SetBaud(int baud) {
    if (std::find(std::begin(kRates), std::end(kRates), baud) != std::end(kRates)) baud_ = baud;
  }

  // Protocol (0 binary, 1 text), rate, data bits, stop bits, parity.
  bool SetProtocol(const Fields& f) {
    const auto protocol = Whole(f[1], 0, 1), baud = Whole(f[2], 1200, 115200);
    if (!protocol || !baud || f[3] != "8" || f[4] != "1" || f[5] != "0") {
      return false;
    }
    SetBaud(*baud);
    if (*protocol == 1) return true;
    SetValue("protocol", "binary");
    settings_.output = {{"navigation", std::chrono::seconds(1)}};
    return true;
  }

  // Sentence, mode (0 sets the rate), seconds between two of them, whether they have a checksum.
  bool SetSentence(const Fields& f) {
    const auto sentence = Whole(f[1], 0, static_cast<int>(std::size(kSentences)) - 1);
    const auto seconds = Whole(f[3], 0, 255);
    if (!sentence || f[2] != "00" || !seconds) return false;
    Switch(kSentences[*sentence], *seconds > 0, std::chrono::seconds(*seconds));
    return true;
  }

  bool TakeMessage(std::string_view payload) {
    if (payload.size() == 24 && Byte(payload, 0) == 0x81) return SwitchToText(payload);
    if (payload.size() != 7 || Byte(payload, 0) != 0x85 || !IsBinary()) return false;
    SetValue("source", std::to_string(Byte(payload, 1)));
    return true;
  }

  // After identifier and mode: seconds between two sentences and a checksum flag for each, and the rate at
  // the end.
  bool SwitchToText(std::string_view payload) {
    SetValue("protocol", "text");
    settings_.output.clear();
    for (std::size_t i = 0; i < std::size(kSentences); ++i) {
      const unsigned seconds = Byte(payload, 2 + 2 * i);
      Switch(kSentences[i], seconds > 0, std::chrono::seconds(seconds));
    }
    SetBaud(static_cast<int>(Pair(payload, 22)));
    return true;
  }

  // Message 2: position and velocity in whole metres and eighths, modes, HDOP in fifths, time, satellites.
  static std::string Navigation(const Epoch& e) {
    std::string payload(1, '\x02');
    for (const double x : {e.truth.position.x, e.truth.position.y, e.truth.position.z}) {
      AppendBig(payload, static_cast<std::int32_t>(std::lround(x)));
    }
    for (const double v : {e.truth.velocity.x, e.truth.velocity.y, e.truth.velocity.z}) {
      AppendBig(payload, static_cast<std::int16_t>(std::lround(v * 8)));
    }
    payload += static_cast<char>(e.quality == 0 ? 0 : 4);
    payload += static_cast<char>(std::min(255L, std::lround(e.dilution.hdop * 5)));
    payload += '\0';
    AppendBig(payload, static_cast<std::uint16_t>(e.truth.time.week % 1024));
    AppendBig(payload, static_cast<std::uint32_t>(std::lround(e.truth.time.seconds * 100)));
    payload += static_cast<char>(UsedCount(e.views));
    for (const View& view : e.views) {
      if (view.used) payload += static_cast<char>(view.prn);
    }
    payload.resize(41, '\0');
    return Frame(payload);
  }
};

}  // namespace

std::unique_ptr<Receiver> MakeSirf(const Options& options, const Model& model) {
  return std::make_unique<Sirf>(options, model);
}

}  // namespace simulator
