#include "gpsengine/face/pacer.h"

#include <algorithm>
#include <cmath>

#include "gpsengine/sentences/fields.h"

namespace gps {

namespace {

constexpr double kDayInSeconds = 86'400.0;
// A sentence may tell of a moment a little earlier than one before it. What goes back further begins again.
constexpr double kDisorder = 60.0;

bool HasTimes(std::string_view bytes) {
  while (!bytes.empty()) {
    const auto end = std::min(bytes.find('\n'), bytes.size() - 1);
    if (TimeOfDayOf(bytes.substr(0, end))) return true;
    bytes.remove_prefix(end + 1);
  }
  return false;
}

}  // namespace

Pacer::Pacer(double speed, std::string_view head, int baud)
    : speed_(speed), timed_(HasTimes(head)), seconds_per_byte_(10.0 / std::max(baud, 1)) {}

Pacer::Clock::time_point Pacer::DueOf(std::string_view line) {
  if (!timed_) return Wait(static_cast<double>(line.size()) * seconds_per_byte_), due_;
  const auto time = TimeOfDayOf(line);
  if (!time) return due_;
  const double step = time_ ? std::remainder(*time - *time_, kDayInSeconds) : 0.0;
  if (step < 0.0 && step > -kDisorder) return due_;
  time_ = time;
  if (step > 0.0) Wait(step);
  return due_;
}

void Pacer::Wait(double seconds) {
  due_ += std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(seconds / speed_));
}

}  // namespace gps
