#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "gpsengine/face/values.h"

namespace gps {

/// The records that have come and are to be taken, each once by who wants its kind and once by who wants all.
/// The oldest make room for newer ones.
class Shelf {
 public:
  static constexpr std::size_t kMost = 4096;
  static constexpr std::size_t kKinds = std::variant_size_v<Record>;

  /// The place among the readers of an alternative, or of all (std::variant_npos).
  static std::size_t ReaderOf(std::size_t alternative) {
    return alternative == std::variant_npos ? kKinds : alternative;
  }

  void Put(Record&& record) {
    if (records_.size() < kMost) {
      records_.push_back(std::move(record));
    } else {
      if (IsUnread(first_)) ++lost_;
      records_[first_ % kMost] = std::move(record);
      ++first_;
    }
    ++end_;
  }
  /// The next record for that reader; false if none is here.
  bool Take(std::size_t reader, Record& record) {
    std::uint64_t& next = next_[reader];
    for (next = std::max(next, first_); next < end_;) {
      const Record& here = records_[next++ % kMost];
      if (reader != kKinds && !IsFor(reader, here)) continue;
      record = here;
      return true;
    }
    return false;
  }
  /// Whether something is here that some reader has not looked at.
  bool HasMore() const {
    for (std::size_t reader = 0; reader <= kKinds; ++reader) {
      if (wanted_[reader] && next_[reader] < end_) return true;
    }
    return false;
  }
  /// Somebody reads those from now on.
  void Want(std::size_t reader) { wanted_[reader] = true; }
  bool IsWanted(std::size_t kind) const { return wanted_[kKinds] || wanted_[kind]; }
  /// Empties it, when there is nothing left for those who read.
  void Forget() {
    records_.clear();
    next_.fill(0);
    first_ = end_ = 0;
  }
  unsigned long long Lost() const { return lost_; }

 private:
  // Positions are for whom they are new.
  static bool IsFor(std::size_t kind, const Record& record) {
    if (record.index() != kind) return false;
    const Fix* const fix = std::get_if<Fix>(&record);
    return fix == nullptr || (fix->valid && !fix->repeats);
  }
  bool IsUnread(std::uint64_t number) const {
    const Record& record = records_[number % kMost];
    const std::size_t kind = record.index();
    return (wanted_[kind] && next_[kind] <= number && IsFor(kind, record)) ||
           (wanted_[kKinds] && next_[kKinds] <= number);
  }

  std::vector<Record> records_;                   // number n at n % kMost
  std::uint64_t first_ = 0, end_ = 0;             // numbers
  std::array<std::uint64_t, kKinds + 1> next_{};  // of each reader
  std::array<bool, kKinds + 1> wanted_{};
  unsigned long long lost_ = 0;
};

}  // namespace gps
