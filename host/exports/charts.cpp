#include "host/exports/charts.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "host/exports/axis.h"
#include "host/exports/svg.h"
#include "host/exports/timescale.h"
#include "host/records/fixkind.h"
#include "host/records/jsonwriter.h"

namespace host {

namespace {

using Anchor = Svg::Anchor;

constexpr double kDegree = std::numbers::pi / 180.0;

struct Frame {
  double left, top, width, height;

  double Right() const { return left + width; }
  double Bottom() const { return top + height; }
};

std::string Fixed(double value, int decimals) {
  std::string text;
  AppendFixed(text, value, decimals);
  return text;
}

// Charts over time stand below each other, and so share their left and right.
constexpr double kWidth = 960.0;
constexpr Frame kCourse{58.0, 26.0, 888.0, 150.0};

TimeScale TimeScaleOf(const RunStatistics& run) {
  return TimeScale(run.signals, kCourse.left, kCourse.width);
}

void DrawTimes(Svg& svg, const TimeScale& time, const Frame& frame) {
  for (const auto& tick : time.Ticks()) {
    svg.Line("grid", tick.x, frame.top, tick.x, frame.Bottom());
    // A label at the very edge would be cut.
    const Anchor anchor = tick.x > frame.Right() - 24.0 ? Anchor::end : Anchor::middle;
    svg.Text("tick", tick.x, frame.Bottom() + 16.0, tick.label, anchor);
  }
}

void DrawCuts(Svg& svg, const TimeScale& time, const Frame& frame, bool labels) {
  for (const auto& cut : time.Cuts()) {
    svg.Rect("cut", cut.left, frame.top - 1.0, cut.right - cut.left, frame.height + 2.0);
    for (const double x : {cut.left, cut.right}) svg.Line("edge", x, frame.top, x, frame.Bottom());
    if (!labels) continue;
    const double x = (cut.left + cut.right) / 2.0;
    svg.Text("tick", x, frame.top + frame.height / 2.0 + 4.0, RoughSpan(cut.span), Anchor::middle);
  }
}

/// The area between the least and the greatest values, where a piece has more than one, and their mean.
class EnvelopePainter {
 public:
  EnvelopePainter(Svg& svg, const Frame& frame, const TimeScale& time, const Axis& axis, double factor)
      : svg_(svg), frame_(frame), time_(time), axis_(axis), factor_(factor) {}

  void Paint(const std::vector<Envelope::Piece>& pieces, const std::string& style) {
    for (std::size_t start = 0, end; start < pieces.size(); start = end) {
      end = start + 1;
      while (end < pieces.size() && !pieces[end].broken) ++end;
      PaintBand(pieces, start, end, style + " band");
      PaintMean(pieces, start, end, style + " curve");
    }
  }

 private:
  double X(const Envelope::Piece& piece) const {
    return time_.X(piece.start + (piece.end - piece.start) / 2);
  }
  double Y(double value) const { return frame_.Bottom() - axis_.Part(value * factor_) * frame_.height; }

  void PaintBand(const std::vector<Envelope::Piece>& pieces, std::size_t start, std::size_t end,
                 const std::string& style) {
    if (std::all_of(pieces.begin() + static_cast<long>(start), pieces.begin() + static_cast<long>(end),
                    [](const auto& piece) { return piece.values.count == 1; })) {
      return;
    }
    svg_.BeginPath(style);
    svg_.MoveTo(X(pieces[start]), Y(pieces[start].values.most));
    for (std::size_t i = start + 1; i < end; ++i) svg_.LineTo(X(pieces[i]), Y(pieces[i].values.most));
    for (std::size_t i = end; i-- > start;) svg_.LineTo(X(pieces[i]), Y(pieces[i].values.least));
    svg_.EndPath();
  }

  void PaintMean(const std::vector<Envelope::Piece>& pieces, std::size_t start, std::size_t end,
                 const std::string& style) {
    svg_.BeginPath(style);
    svg_.MoveTo(X(pieces[start]), Y(pieces[start].values.Mean()));
    // A single point is drawn by its round ends.
    if (end == start + 1) svg_.LineTo(X(pieces[start]) + 0.1, Y(pieces[start].values.Mean()));
    for (std::size_t i = start + 1; i < end; ++i) svg_.LineTo(X(pieces[i]), Y(pieces[i].values.Mean()));
    svg_.EndPath();
  }

  Svg& svg_;
  const Frame frame_;
  const TimeScale& time_;
  const Axis& axis_;
  const double factor_;
};

/// The places of a track on paper, equal in scale to the east and to the north.
class TrackPlan {
 public:
  explicit TrackPlan(const RunStatistics& run) : run_(run) {
    const auto& [south, north, west, east] = run.track.GetBounds();
    const double middle = (south + north) / 2.0;
    const Offset size = OffsetOf(south, west, north, east);
    scale_ = OffsetOf(middle, 0.0, middle + 1e-3, 1e-3);
    // Neither a still receiver nor a straight road fills a page.
    const double wide = std::max({size.east, size.north / 3.0, kLeast}) * 1.12;
    const double high = std::max({size.north, size.east / 3.0, kLeast / 2.0}) * 1.12;
    const double height = std::clamp(kMostWidth * high / wide, 300.0, 560.0);
    per_metre_ = std::min(kMostWidth / wide, height / high);
    frame_ = {kLeft, 14.0, kMostWidth, height};
    const Offset centre = ToMetres(middle, (west + east) / 2.0);
    east_ = ExactAxis(centre.east - kMostWidth / 2.0 / per_metre_,
                      centre.east + kMostWidth / 2.0 / per_metre_, 9);
    north_ = ExactAxis(centre.north - height / 2.0 / per_metre_, centre.north + height / 2.0 / per_metre_,
                       static_cast<int>(std::lround(9.0 * height / kMostWidth)));
  }

  double X(double longitude) const {
    return frame_.left + east_.Part(ToMetres(0.0, longitude).east) * frame_.width;
  }
  double Y(double latitude) const {
    return frame_.Bottom() - north_.Part(ToMetres(latitude, 0.0).north) * frame_.height;
  }
  const Frame& GetFrame() const { return frame_; }
  const Axis& East() const { return east_; }
  const Axis& North() const { return north_; }
  double PerMetre() const { return per_metre_; }

 private:
  static constexpr double kLeft = 84.0, kMostWidth = 862.0;
  static constexpr double kLeast = 0.1;  // metres

  // Linear in the angles, so that the picture is equirectangular.
  Offset ToMetres(double latitude, double longitude) const {
    return {(longitude - run_.first_fix->longitude) * 1e3 * scale_.east,
            (latitude - run_.first_fix->latitude) * 1e3 * scale_.north};
  }

  const RunStatistics& run_;
  Offset scale_{};
  double per_metre_ = 1.0;
  Frame frame_{};
  Axis east_, north_;
};

/// Labels of metres, or of kilometres where those are large.
std::string LengthLabel(double metres, double step) {
  const bool kilometres = step >= 1000.0;
  const double unit = kilometres ? 1000.0 : 1.0;
  std::string label = Fixed(metres / unit, DecimalsOf(step / unit));
  if (label.starts_with('-')) label.replace(0, 1, "\xE2\x88\x92");
  return label + (kilometres ? " km" : " m");
}

void DrawGround(Svg& svg, const TrackPlan& plan) {
  const Frame& frame = plan.GetFrame();
  svg.Rect("plot", frame.left, frame.top, frame.width, frame.height, 4.0);
  for (const auto& tick : plan.East().ticks) {
    const double x = frame.left + plan.East().Part(tick.value) * frame.width;
    svg.Line("grid", x, frame.top, x, frame.Bottom());
    svg.Text("tick", std::min(x, frame.Right() - 12.0), frame.Bottom() + 16.0,
             LengthLabel(tick.value, plan.East().step), Anchor::middle);
  }
  for (const auto& tick : plan.North().ticks) {
    const double y = frame.Bottom() - plan.North().Part(tick.value) * frame.height;
    svg.Line("grid", frame.left, y, frame.Right(), y);
    svg.Text("tick", frame.left - 6.0, std::max(y + 4.0, frame.top + 9.0),
             LengthLabel(tick.value, plan.North().step), Anchor::end);
  }
  svg.Text("axis", frame.left + frame.width / 2.0, frame.Bottom() + 34.0, "east of the start",
           Anchor::middle);
  svg.Upright("axis", 12.0, frame.top + frame.height / 2.0, "north of the start");
}

void DrawScaleBar(Svg& svg, const TrackPlan& plan) {
  const Frame& frame = plan.GetFrame();
  const double metres = RoundDown(frame.width / 5.0 / plan.PerMetre());
  const double length = metres * plan.PerMetre();
  const double right = frame.Right() - 16.0, y = frame.Bottom() - 16.0;
  svg.Rect("plate", right - length - 8.0, y - 22.0, length + 16.0, 30.0, 4.0);
  svg.Line("rule", right - length, y, right, y);
  for (const double x : {right - length, right}) svg.Line("rule", x, y - 4.0, x, y + 4.0);
  svg.Text("tick strong", right - length / 2.0, y - 7.0, LengthLabel(metres, metres), Anchor::middle);
}

void DrawWay(Svg& svg, const TrackPlan& plan, const std::vector<Sketch::Point>& points) {
  // A piece of line for each kind of fix, from the end of the one before.
  for (std::size_t start = 0, end; start < points.size(); start = end) {
    const auto& first = points[start];
    end = start + 1;
    while (end < points.size() && !points[end].broken && points[end].signal == first.signal) ++end;
    svg.BeginPath(std::string(FixKindOf(first.signal).style) + " way");
    const auto& from = first.broken || start == 0 ? first : points[start - 1];
    svg.MoveTo(plan.X(from.longitude), plan.Y(from.latitude));
    for (std::size_t i = start; i < end; ++i)
      svg.LineTo(plan.X(points[i].longitude) + (end - start == 1 ? 0.1 : 0.0), plan.Y(points[i].latitude));
    svg.EndPath();
  }
}

void DrawEnds(Svg& svg, const TrackPlan& plan, const RunStatistics& run) {
  const auto& first = *run.track.First();
  const auto& last = *run.track.Last();
  svg.Circle("start", plan.X(first.longitude), plan.Y(first.latitude), 6.0, "start");
  svg.Circle("end", plan.X(last.longitude), plan.Y(last.latitude), 6.0, "end");
}

// The sky: a disc whose rim is the horizon and whose centre is overhead.
constexpr double kSkyRadius = 190.0, kSkyCentre = 222.0;

struct Spot {
  double x, y;
};
Spot SpotOf(const SatelliteTrail::Place& place) {
  const double radius = (90.0 - place.elevation) / 90.0 * kSkyRadius;
  return {kSkyCentre + radius * std::sin(place.azimuth * kDegree),
          kSkyCentre - radius * std::cos(place.azimuth * kDegree)};
}

void DrawDome(Svg& svg) {
  svg.Circle("plot", kSkyCentre, kSkyCentre, kSkyRadius);
  for (const double elevation : {30.0, 60.0}) {
    svg.Circle("ring", kSkyCentre, kSkyCentre, (90.0 - elevation) / 90.0 * kSkyRadius);
  }
  for (int azimuth = 0; azimuth < 360; azimuth += 30) {
    const Spot rim = SpotOf({0.0, static_cast<double>(azimuth)});
    svg.Line("grid", kSkyCentre, kSkyCentre, rim.x, rim.y);
    const Spot outside = SpotOf({-7.0, static_cast<double>(azimuth)});
    constexpr std::string_view kNames[] = {"N", "E", "S", "W"};
    const bool cardinal = azimuth % 90 == 0;
    svg.Text(cardinal ? "tick strong" : "tick", outside.x, outside.y + 4.0,
             cardinal ? std::string(kNames[azimuth / 90]) : std::to_string(azimuth) + "\xC2\xB0",
             Anchor::middle);
  }
  for (const int elevation : {30, 60}) {
    const Spot spot = SpotOf({static_cast<double>(elevation), 15.0});
    svg.Text("tick", spot.x, spot.y + 4.0, std::to_string(elevation) + "\xC2\xB0", Anchor::middle);
  }
}

std::string DescribeSatellite(int number, const SatelliteTrail& trail) {
  std::string text = "satellite " + std::to_string(number);
  if (trail.strength.count > 0) text += ", mean " + Fixed(trail.strength.Mean(), 0) + " dB-Hz";
  return text + ", used " +
         Fixed(100.0 * static_cast<double>(trail.used) / static_cast<double>(trail.seen), 0) +
         " % of the time";
}

void DrawTrail(Svg& svg, int number, const SatelliteTrail& trail) {
  if (trail.places.empty()) return;
  const bool used = trail.used > 0;
  if (trail.places.size() > 1) {
    Spot before{};
    svg.BeginPath(used ? "trail" : "trail unused");
    for (std::size_t i = 0; i < trail.places.size(); ++i) {
      const Spot spot = SpotOf(trail.places[i]);
      // It has set and risen again.
      const bool apart = i > 0 && std::hypot(spot.x - before.x, spot.y - before.y) > kSkyRadius / 6.0;
      i == 0 || apart ? svg.MoveTo(spot.x, spot.y) : svg.LineTo(spot.x, spot.y);
      before = spot;
    }
    svg.EndPath();
  }
  const Spot last = SpotOf(trail.last);
  svg.Circle(used ? "satellite" : "satellite unused", last.x, last.y, 11.0, DescribeSatellite(number, trail));
  svg.Text(used ? "number" : "number unused", last.x, last.y + 4.0, std::to_string(number), Anchor::middle);
}

}  // namespace

void DrawCourse(std::string& out, const Course& course, const RunStatistics& run) {
  const Range& all = course.values->All();
  if (all.count == 0) return;
  const TimeScale time = TimeScaleOf(run);
  const double low = course.from_zero ? std::min(0.0, all.least * course.factor) : all.least * course.factor;
  const Axis axis = RoundAxis(low, all.most * course.factor, 4, course.least_step);
  const Frame& frame = kCourse;
  Svg svg(out, kWidth, frame.Bottom() + 24.0, course.title);
  svg.Text("caption", 0.0, 13.0,
           std::string(course.title) + (course.unit.empty() ? "" : ", ") + std::string(course.unit));
  svg.Rect("plot", frame.left, frame.top, frame.width, frame.height, 4.0);
  for (const auto& tick : axis.ticks) {
    const double y = frame.Bottom() - axis.Part(tick.value) * frame.height;
    svg.Line("grid", frame.left, y, frame.Right(), y);
    svg.Text("tick", frame.left - 6.0, y + 4.0, tick.label, Anchor::end);
  }
  DrawTimes(svg, time, frame);
  DrawCuts(svg, time, frame, false);
  EnvelopePainter(svg, frame, time, axis, course.factor)
      .Paint(course.values->Pieces(), std::string(course.style));
}

void DrawSignals(std::string& out, const RunStatistics& run) {
  const TimeScale time = TimeScaleOf(run);
  const Frame frame{kCourse.left, 24.0, kCourse.width, 18.0};
  Svg svg(out, kWidth, frame.Bottom() + 6.0, "kind of fix over time");
  svg.Text("caption", 0.0, 13.0, "Kind of fix");
  svg.Rect("plot", frame.left, frame.top, frame.width, frame.height, 4.0);
  for (const auto& span : run.signals) {
    const double x = time.X(span.start), end = time.X(span.end);
    svg.Rect(std::string(FixKindOf(span.signal).style) + " span", x, frame.top, std::max(1.5, end - x),
             frame.height, 0.0, FixKindOf(span.signal).name);
  }
  DrawCuts(svg, time, frame, true);
}

void DrawTrack(std::string& out, const RunStatistics& run) {
  const TrackPlan plan(run);
  Svg svg(out, kWidth, plan.GetFrame().Bottom() + 40.0, "the track from above");
  DrawGround(svg, plan);
  DrawWay(svg, plan, run.track.Points());
  DrawEnds(svg, plan, run);
  DrawScaleBar(svg, plan);
}

void DrawSky(std::string& out, const RunStatistics& run) {
  Svg svg(out, 2.0 * kSkyCentre, 2.0 * kSkyCentre, "where the satellites were in the sky");
  DrawDome(svg);
  for (const auto& [number, trail] : run.satellites) DrawTrail(svg, number, trail);
}

void DrawStrengths(std::string& out, const RunStatistics& run) {
  double most = 50.0;
  double rows = 0.0;
  for (const auto& [number, trail] : run.satellites) {
    if (trail.strength.count == 0) continue;
    ++rows;
    most = std::max(most, trail.strength.most);
  }
  if (rows == 0.0) return;
  const double pitch = std::clamp(360.0 / rows, 13.0, 45.0);
  const Frame frame{40.0, 22.0, 400.0, rows * pitch + 6.0};
  const Axis axis = RoundAxis(0.0, most, 5, 10.0);
  Svg svg(out, 500.0, frame.Bottom() + 38.0, "signal strengths of the satellites");
  svg.Rect("plot", frame.left, frame.top, frame.width, frame.height, 4.0);
  for (const auto& tick : axis.ticks) {
    const double x = frame.left + axis.Part(tick.value) * frame.width;
    svg.Line("grid", x, frame.top, x, frame.Bottom());
    svg.Text("tick", x, frame.Bottom() + 16.0, tick.label, Anchor::middle);
  }
  svg.Text("axis", frame.left + frame.width / 2.0, frame.Bottom() + 34.0,
           "signal to noise, dB-Hz: least, mean and greatest", Anchor::middle);
  svg.Text("tick", frame.left - 6.0, 13.0, "no.", Anchor::end);
  svg.Text("tick", frame.Right() + 56.0, 13.0, "used", Anchor::end);
  double y = frame.top + 3.0 + pitch / 2.0;
  for (const auto& [number, trail] : run.satellites) {
    if (trail.strength.count == 0) continue;
    const auto x = [&](double value) { return frame.left + axis.Part(value) * frame.width; };
    const std::string unused = trail.used > 0 ? "" : " unused";
    const double thick = std::min(12.0, pitch - 4.0);
    const double least = x(trail.strength.least), length = std::max(2.0, x(trail.strength.most) - least);
    svg.Line("stem" + unused, frame.left, y, least, y);
    svg.Rect("bar" + unused, least, y - thick / 2.0, length, thick, 3.0, DescribeSatellite(number, trail));
    svg.Circle("mean" + unused, x(trail.strength.Mean()), y, 3.5);
    svg.Text("tick", frame.left - 6.0, y + 4.0, std::to_string(number), Anchor::end);
    svg.Text("tick", frame.Right() + 56.0, y + 4.0,
             Fixed(100.0 * static_cast<double>(trail.used) / static_cast<double>(trail.seen), 0) + " %",
             Anchor::end);
    y += pitch;
  }
}

}  // namespace host
