#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "gpsengine/sentences/moment.h"

#pragma GCC visibility push(default)

namespace gps {

/// Looks for the date in the bytes of a receiver, which is in sentences that the library recognises but does
/// not decode: RMC and ZDA, of any talker. A recording played years later so keeps its own date.
class DateScan {
 public:
  /// The next bytes of the stream, in pieces of any size.
  void Feed(std::string_view bytes);
  /// The moment that the last good RMC or ZDA stated. An RMC without a fix counts as long as there is no
  /// other.
  std::optional<Time> Latest() const { return latest_; }

 private:
  bool Scan(std::string_view bytes);
  bool Take(std::string_view bytes);
  bool ReadTaken();

  std::string head_;                     // a sentence that the end of the piece has cut
  std::vector<std::string_view> taken_;  // of the piece, with dates
  std::optional<Time> latest_;
  bool had_fix_ = false;
};

}  // namespace gps

#pragma GCC visibility pop
