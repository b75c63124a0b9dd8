#pragma once

#include <cstdint>
#include <string>

namespace host {

/// A moment of UTC in milliseconds since 1970.
using Moment = std::int64_t;

constexpr Moment kDay = 86'400'000;

/// A position sentence has a time of day alone. Gives it the date that puts it within half a day of `near`.
Moment DateTimeOfDay(double seconds_of_day, Moment near);

/// Now, by this computer's clock.
Moment Now();

/// Appends "2024-05-14T08:00:01.000Z".
void AppendIso(std::string& out, Moment moment);
std::string IsoText(Moment moment);

}  // namespace host
