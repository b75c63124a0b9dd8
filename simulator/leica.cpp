#include "simulator/core.h"
#include "simulator/languages.h"

namespace simulator {
namespace {

/// "$PMVXG,007" manages the list of sentences: label, clear the list first, add (1) or take off (2), unused,
/// seconds between two of them, decimals of the minutes, decimals of the height.
class Leica final : public Core {
 public:
  Leica(const Options& options, const Model& model) : Core(options, model.baud) {
    LeaveFactory({"GGA", "GSA", "GSV", "VTG"});
  }

 private:
  Verdict Understand(std::string_view line) override {
    static constexpr Command<Leica> kCommands[] = {
        {{"$PMVXG", "007"}, &Leica::SetList},
        {{"QRV Zelo", ""}, &Leica::StayAlive},
    };
    return Obey(*this, kCommands, Fields::OfSentence(line));
  }

  void Adapt(Epoch& epoch) const override {
    epoch.minute_digits = Whole(Value("minute digits"), 2, 6).value_or(epoch.minute_digits);
  }

  bool SetList(const Fields& f) {
    if (f[3] == "1") settings_.output.clear();
    if (f[2].empty()) return f[3] == "1";
    const auto action = Whole(f[4], 1, 2);
    const auto interval = Whole(f[6], 1, 999);
    if (!HasMessage(f[2]) || !action || (*action == 1 && !interval)) return false;
    Switch(f[2], *action == 1, FromSeconds(interval.value_or(1)));
    if (!f[7].empty()) SetValue("minute digits", f[7]);
    return true;
  }

  bool StayAlive(const Fields&) { return true; }
};

}  // namespace

std::unique_ptr<Receiver> MakeLeica(const Options& options, const Model& model) {
  return std::make_unique<Leica>(options, model);
}

}  // namespace simulator
