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

  /// Leaves the record the kinds that pass, which are none if it does not. Its epoch begins a segment if one
  /// that was held back did.
  void Pass(Record& record);
  bool Passes(Kind kind) const { return !over_ && options_.only.Has(kind); }
  /// Everything passes.
  bool IsNone() const {
    return options_.only == Kinds::All() && options_.min_distance + options_.min_interval == 0.0 && !Ends();
  }
  /// There is a stated time of the receiver.
  bool Ends() const { return options_.duration > 0.0; }
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
