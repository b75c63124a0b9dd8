#include "simulator/core.h"
#include "simulator/languages.h"

namespace simulator {
namespace {

/// Talks, and takes no command.
class Plain final : public Core {
 public:
  Plain(const Options& options, const Model& model)
      : Core(options, model.baud), knows_keep_alive_(model.knows_keep_alive) {
    LeaveFactory({"GGA", "GSA", "GSV", "VTG"});
  }

 private:
  Verdict Understand(std::string_view line) override {
    return knows_keep_alive_ && line == "QRV Zelo" ? Verdict::kDone : Verdict::kUnknown;
  }

  const bool knows_keep_alive_;
};

}  // namespace

std::unique_ptr<Receiver> MakePlain(const Options& options, const Model& model) {
  return std::make_unique<Plain>(options, model);
}

}  // namespace simulator
