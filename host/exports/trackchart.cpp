#include <algorithm>
#include <cmath>
#include <functional>
#include <map>

#include "host/exports/axis.h"
#include "host/exports/chartframe.h"
#include "host/exports/charts.h"
#include "host/exports/svg.h"
#include "host/records/fixkind.h"

namespace host {

namespace {

using Anchor = Svg::Anchor;

/// The places of a track on paper, equal in scale to the east and to the north.
class TrackPlan {
 public:
  TrackPlan(const RunStatistics& run, const UnitSystem& units) : run_(run) {
    const auto& [south, north, west, east] = run.track.GetBounds();
    const double middle = (south + north) / 2.0;
    const Offset size = OffsetOf(south, west, north, east);
    scale_ = OffsetOf(middle, 0.0, middle + 1e-3, 1e-3);
    // Neither a still receiver nor a straight road fills a page.
    const double wide = std::max({size.east, size.north / 3.0, kLeast}) * 1.12;
    const double high = std::max({size.north, size.east / 3.0, kLeast / 2.0}) * 1.12;
    const double height = std::clamp(kMostWidth * high / wide, 300.0, 560.0);
    const double per_metre = std::min(kMostWidth / wide, height / high);
    const bool far = kMostWidth / per_metre / kSteps * units.distance.per_metre >= kFar;
    unit_ = far ? units.distance : units.length;
    per_unit_ = per_metre / unit_.per_metre;
    frame_ = {kLeft, 14.0, kMostWidth, height};
    const Offset centre = ToUnits(middle, (west + east) / 2.0);
    east_ = ExactAxis(centre.east - kMostWidth / 2.0 / per_unit_, centre.east + kMostWidth / 2.0 / per_unit_,
                      kSteps);
    north_ = ExactAxis(centre.north - height / 2.0 / per_unit_, centre.north + height / 2.0 / per_unit_,
                       static_cast<int>(std::lround(kSteps * height / kMostWidth)));
  }

  double X(double longitude) const {
    return frame_.left + east_.Part(ToUnits(0.0, longitude).east) * frame_.width;
  }
  double Y(double latitude) const {
    return frame_.Bottom() - north_.Part(ToUnits(latitude, 0.0).north) * frame_.height;
  }
  const Frame& GetFrame() const { return frame_; }
  const Axis& East() const { return east_; }
  const Axis& North() const { return north_; }
  double PerUnit() const { return per_unit_; }
  /// A length with so many decimals as tell multiples of `step` apart.
  std::string Label(double length, double step) const {
    std::string label = Fixed(length, DecimalsOf(step));
    if (label.starts_with('-')) label.replace(0, 1, "\xE2\x88\x92");
    return label + ' ' + std::string(unit_.name);
  }

 private:
  static constexpr double kLeft = 84.0, kMostWidth = 862.0;
  static constexpr double kLeast = 0.1;  // metres
  static constexpr double kFar = 0.7;    // of a distance, from one label to the next
  static constexpr int kSteps = 9;

  // Linear in the angles, so that the picture is equirectangular.
  Offset ToUnits(double latitude, double longitude) const {
    return {(longitude - run_.first_fix->longitude) * 1e3 * scale_.east * unit_.per_metre,
            (latitude - run_.first_fix->latitude) * 1e3 * scale_.north * unit_.per_metre};
  }

  const RunStatistics& run_;
  Offset scale_{};
  Unit unit_{};
  double per_unit_ = 1.0;  // pixels
  Frame frame_{};
  Axis east_, north_;
};

void DrawGround(Svg& svg, const TrackPlan& plan) {
  const Frame& frame = plan.GetFrame();
  svg.Rect("plot", frame.left, frame.top, frame.width, frame.height, 4.0);
  for (const auto& tick : plan.East().ticks) {
    const double x = frame.left + plan.East().Part(tick.value) * frame.width;
    svg.Line("grid", x, frame.top, x, frame.Bottom());
    svg.Text("tick", std::min(x, frame.Right() - 12.0), frame.Bottom() + 16.0,
             plan.Label(tick.value, plan.East().step), Anchor::middle);
  }
  for (const auto& tick : plan.North().ticks) {
    const double y = frame.Bottom() - plan.North().Part(tick.value) * frame.height;
    svg.Line("grid", frame.left, y, frame.Right(), y);
    svg.Text("tick", frame.left - 6.0, std::max(y + 4.0, frame.top + 9.0),
             plan.Label(tick.value, plan.North().step), Anchor::end);
  }
  svg.Text("axis", frame.left + frame.width / 2.0, frame.Bottom() + 34.0, "east of the start",
           Anchor::middle);
  svg.Upright("axis", 12.0, frame.top + frame.height / 2.0, "north of the start");
}

void DrawScaleBar(Svg& svg, const TrackPlan& plan) {
  const Frame& frame = plan.GetFrame();
  const double units = RoundDown(frame.width / 5.0 / plan.PerUnit());
  const double length = units * plan.PerUnit();
  const double right = frame.Right() - 16.0, y = frame.Bottom() - 16.0;
  svg.Rect("plate", right - length - 8.0, y - 22.0, length + 16.0, 30.0, 4.0);
  svg.Line("rule", right - length, y, right, y);
  for (const double x : {right - length, right}) svg.Line("rule", x, y - 4.0, x, y + 4.0);
  svg.Text("tick strong", right - length / 2.0, y - 7.0, plan.Label(units, units), Anchor::middle);
}

/// The track line of one kind of fix, in pieces that each begin at the end of the piece before.
void DrawWay(Svg& svg, const TrackPlan& plan, const std::vector<Sketch::Point>& points, int signal,
             const std::string& style) {
  for (std::size_t start = 0, end; start < points.size(); start = end) {
    const auto& first = points[start];
    end = start + 1;
    while (end < points.size() && !points[end].broken && points[end].signal == first.signal) ++end;
    if (first.signal != signal) continue;
    svg.BeginPath(style);
    const auto& from = first.broken || start == 0 ? first : points[start - 1];
    svg.MoveTo(plan.X(from.longitude), plan.Y(from.latitude));
    for (std::size_t i = start; i < end; ++i)
      svg.LineTo(plan.X(points[i].longitude) + (end - start == 1 ? 0.1 : 0.0), plan.Y(points[i].latitude));
    svg.EndPath();
  }
}

/// A line that would cover much of the ground is to be a thin one: lanes lie close together.
bool IsDense(const TrackPlan& plan, const std::vector<Sketch::Point>& points) {
  double length = 0.0;
  for (std::size_t i = 1; i < points.size(); ++i) {
    const auto &from = points[i - 1], &to = points[i];
    if (to.broken) continue;
    length += std::hypot(plan.X(to.longitude) - plan.X(from.longitude),
                         plan.Y(to.latitude) - plan.Y(from.latitude));
  }
  constexpr double kWidest = 3.0, kMostCover = 0.2;
  return length * kWidest > kMostCover * plan.GetFrame().width * plan.GetFrame().height;
}

void DrawWays(Svg& svg, const TrackPlan& plan, const RunStatistics& run) {
  const std::vector<Sketch::Point> points = run.track.Points();
  const std::string width = IsDense(plan, points) ? " way thin" : " way";
  // The rarer kinds lie on top, or would not be seen on a way that was gone many times.
  std::multimap<long long, int, std::greater<>> kinds;
  for (const auto& [signal, count] : run.epochs) kinds.emplace(count, signal);
  for (const auto& entry : kinds) {
    const int signal = entry.second;
    DrawWay(svg, plan, points, signal, std::string(FixKindOf(signal).style) + width);
  }
}

void DrawEnds(Svg& svg, const TrackPlan& plan, const RunStatistics& run) {
  const auto& first = *run.track.First();
  const auto& last = *run.track.Last();
  svg.Circle("start", plan.X(first.longitude), plan.Y(first.latitude), 6.0, "start");
  svg.Circle("end", plan.X(last.longitude), plan.Y(last.latitude), 6.0, "end");
}

}  // namespace

void DrawTrack(std::string& out, const RunStatistics& run, const UnitSystem& units) {
  const TrackPlan plan(run, units);
  Svg svg(out, kChartWidth, plan.GetFrame().Bottom() + 40.0, "the track from above");
  DrawGround(svg, plan);
  DrawWays(svg, plan, run);
  DrawEnds(svg, plan, run);
  DrawScaleBar(svg, plan);
}

}  // namespace host
