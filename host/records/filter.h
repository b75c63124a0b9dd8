#pragma once

#include <optional>

#include "host/records/epoch.h"
#include "host/records/kinds.h"

namespace host {

struct FilterOptions {
  Kinds only = Kinds::All();
  double min_distance = 0.0;  ///< Metres that a fix has to lie off the last one that passed.
  double min_interval = 0.0;  ///< Seconds that have to lie between two epochs that pass.
  double duration = 0.0;      ///< Seconds of the receiver's time to pass from the first epoch on; 0 for all.
};

/// Decides what of a run is shown and exported.
class Filter {
 public:
  explicit Filter(const FilterOptions& options) : options_(options) {}

  /// Whether it matters where and when a position is.
  bool WantsEpochs() const {
    return options_.min_distance > 0.0 || options_.min_interval > 0.0 || options_.duration > 0.0;
  }
  /// The kinds of `data` that pass; none for a record that does not. `epoch` is that of its position
  /// sentence, if it has one; it then begins a segment if one that was held back did.
  Kinds Pass(const CGPSData& data, PositionEpoch* epoch);
  bool Passes(Kind kind) const { return Passing().Has(kind); }
  Kinds Passing() const { return over_ ? Kinds() : options_.only; }
  /// The stated time of the receiver is over: nothing passes any more.
  bool IsOver() const { return over_; }

 private:
  bool IsDue(const PositionEpoch& epoch) const;

  const FilterOptions options_;
  std::optional<PositionEpoch> passed_;  // the last one
  std::optional<Moment> first_;
  bool held_start_ = false;  // of a segment
  bool over_ = false;
};

}  // namespace host
