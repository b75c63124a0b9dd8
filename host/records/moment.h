#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace host {

/// A moment of UTC in milliseconds since 1970.
using Moment = std::int64_t;

constexpr Moment kDay = 86'400'000;

/// A position sentence has a time of day alone. Gives it the date that puts it within half a day of `near`.
Moment DateTimeOfDay(double seconds_of_day, Moment near);

/// Appends "2024-05-14T08:00:01.000Z".
void AppendIso(std::string& out, Moment moment);

/// A field of a sentence by its number, 0 being the tag; empty if it has fewer.
std::string_view FieldOf(std::string_view sentence, int number);

/// The time of day, in seconds, that a line of a receiver's output tells, with a good checksum and in a
/// sentence of the standard that has one.
std::optional<double> TimeOfDayOf(std::string_view line);

/// Looks for the date in the bytes of a receiver, which is in sentences that the library recognises but does
/// not decode: RMC and ZDA, of any talker. A recording played years later so keeps its own date.
class DateScan {
 public:
  /// The next bytes of the stream, in pieces of any size.
  void Feed(std::string_view bytes);
  /// The moment that the last good RMC or ZDA stated. An RMC without a fix counts as long as there is no
  /// other.
  std::optional<Moment> Latest() const { return latest_; }

 private:
  void FeedSentence(std::string_view sentence);

  std::string head_;  // a sentence that the end of the piece has cut
  std::optional<Moment> latest_;
  bool had_fix_ = false;
};

}  // namespace host
