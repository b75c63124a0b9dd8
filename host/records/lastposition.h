#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <string_view>
#include <utility>

#include "host/records/epoch.h"
#include "host/records/jsonwriter.h"

namespace host {

/// What the receiver said last of its position, and how long ago. A line that is read later than it was made
/// does not tell that by itself, nor does a receiver that has fallen silent.
class LastPosition {
 public:
  using Clock = std::chrono::steady_clock;

  explicit LastPosition(std::function<Clock::time_point()> now = &Clock::now) : now_(std::move(now)) {}

  void Note(const Record& record);
  /// Whether another kind of fix came, or any after a silence, since the last call.
  bool TakeNews() { return std::exchange(has_news_, false); }
  /// The name of its kind of fix; empty if there was none.
  std::string_view Kind() const;
  /// Adds the kind of fix and the ages to an object that is being written, as far as there are any.
  void Write(JsonWriter& json) const;

 private:
  void WriteAge(JsonWriter& json, std::string_view key, const std::optional<Clock::time_point>& since) const;

  const std::function<Clock::time_point()> now_;
  int signal_ = UDF_SIGNAL_NONE;
  std::optional<Clock::time_point> fix_at_, position_at_;
  bool has_news_ = false;
};

}  // namespace host
