#include "host/exports/timescale.h"

#include <algorithm>
#include <functional>

namespace host {

namespace {

constexpr Moment kSecond = 1000, kMinute = 60 * kSecond, kHour = 60 * kMinute;
constexpr Moment kSteps[] = {100,          200,          500,          kSecond,   2 * kSecond, 5 * kSecond,
                             10 * kSecond, 15 * kSecond, 30 * kSecond, kMinute,   2 * kMinute, 5 * kMinute,
                             10 * kMinute, 15 * kMinute, 30 * kMinute, kHour,     2 * kHour,   3 * kHour,
                             6 * kHour,    12 * kHour,   kDay,         2 * kDay,  7 * kDay,    14 * kDay,
                             28 * kDay,    91 * kDay,    182 * kDay,   365 * kDay};
constexpr int kTicks = 8;
// Pixels.
constexpr double kCutWidth = 52.0;
constexpr double kLeastWidth = 14.0;
constexpr double kLabelWidth = 66.0;
// A pause is long if it takes this part of the time in which something came.
constexpr Moment kLongPart = 5;
constexpr std::size_t kMostCuts = 4;

std::string TimeLabel(Moment time, Moment step) {
  std::string iso;
  AppendIso(iso, time);
  if (step >= kDay) return iso.substr(0, 10);
  if (step >= kMinute) return iso.substr(11, 5);
  return iso.substr(11, step >= kSecond ? 8 : 10);
}

}  // namespace

std::string RoughSpan(Moment span) {
  constexpr std::pair<Moment, const char*> kUnits[] = {{kDay, " d"}, {kHour, " h"}, {kMinute, " min"}};
  for (const auto& [unit, name] : kUnits) {
    if (span >= 2 * unit) return std::to_string((span + unit / 2) / unit) + name;
  }
  return std::to_string((span + kSecond / 2) / kSecond) + " s";
}

TimeScale::TimeScale(const std::vector<SignalSpan>& spans, double left, double width) {
  Split(spans);
  Place(left, width);
  Label();
}

Moment TimeScale::Busy() const {
  Moment busy = 0;
  for (const Piece& piece : pieces_) busy += piece.end - piece.start;
  return busy;
}

void TimeScale::Split(const std::vector<SignalSpan>& spans) {
  // A recording that was played twice has its times twice.
  std::vector<SignalSpan> sorted = spans;
  std::sort(sorted.begin(), sorted.end(), [](const auto& a, const auto& b) { return a.start < b.start; });
  for (const SignalSpan& span : sorted) {
    if (pieces_.empty() || span.start > pieces_.back().end) {
      pieces_.push_back({span.start, span.end, 0.0, 0.0});
    } else {
      pieces_.back().end = std::max(pieces_.back().end, span.end);
    }
  }
  std::vector<Moment> pauses;
  for (std::size_t i = 1; i < pieces_.size(); ++i) pauses.push_back(pieces_[i].start - pieces_[i - 1].end);
  std::sort(pauses.begin(), pauses.end(), std::greater<>());
  Moment least = std::max(Busy() / kLongPart, 2 * kSecond);
  if (pauses.size() > kMostCuts) least = std::max(least, pauses[kMostCuts - 1]);
  std::vector<Piece> all;
  all.swap(pieces_);
  for (const Piece& piece : all) {
    if (pieces_.empty() || (piece.start - pieces_.back().end >= least && pieces_.size() <= kMostCuts)) {
      pieces_.push_back(piece);
    } else {
      pieces_.back().end = piece.end;
    }
  }
}

void TimeScale::Place(double left, double width) {
  const auto count = static_cast<double>(pieces_.size());
  const double free = width - (count - 1.0) * kCutWidth - count * kLeastWidth;
  const Moment busy = std::max<Moment>(Busy(), 1);
  for (std::size_t i = 0; i < pieces_.size(); ++i) {
    Piece& piece = pieces_[i];
    if (i > 0) {
      cuts_.push_back({left, left + kCutWidth, piece.start - pieces_[i - 1].end});
      left += kCutWidth;
    }
    piece.left = left;
    left += kLeastWidth + free * static_cast<double>(piece.end - piece.start) / static_cast<double>(busy);
    piece.right = left;
  }
}

void TimeScale::Label() {
  const auto steps = std::find_if(std::begin(kSteps), std::end(kSteps) - 1,
                                  [this](Moment step) { return Busy() / step <= kTicks; });
  const Moment step = *steps;
  double free_from = -kLabelWidth;
  for (const Piece& piece : pieces_) {
    const Moment first = (piece.start + step - 1) / step * step;
    if (first > piece.end && piece.left >= free_from) {
      ticks_.push_back({piece.left, TimeLabel(piece.start, std::min(step, kSecond))});
      free_from = piece.left + kLabelWidth;
    }
    for (Moment time = first; time <= piece.end; time += step) {
      if (X(time) < free_from) continue;
      ticks_.push_back({X(time), TimeLabel(time, step)});
      free_from = X(time) + kLabelWidth;
    }
  }
}

double TimeScale::X(Moment moment) const {
  const auto within = [moment](Moment start, Moment end, double left, double right) {
    if (end <= start) return (left + right) / 2.0;
    return left + (right - left) * static_cast<double>(moment - start) / static_cast<double>(end - start);
  };
  for (std::size_t i = 0; i < pieces_.size(); ++i) {
    const Piece& piece = pieces_[i];
    if (i > 0 && moment < piece.start) {
      return within(pieces_[i - 1].end, piece.start, pieces_[i - 1].right, piece.left);
    }
    if (moment <= piece.end || i + 1 == pieces_.size()) {
      return within(piece.start, piece.end, piece.left, piece.right);
    }
  }
  return 0.0;
}

}  // namespace host
