#include "host/exports/charts.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "host/exports/axis.h"
#include "host/exports/chartframe.h"
#include "host/exports/svg.h"
#include "host/exports/timescale.h"
#include "host/records/fixkind.h"

namespace host {

namespace {

using Anchor = Svg::Anchor;

constexpr double kDegree = std::numbers::pi / 180.0;

// Charts over time stand below each other, and so share their left and right.
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

/// The kinds of fix of a span, each as high as its share of the time.
void DrawSpan(Svg& svg, const TimeScale& time, const Frame& frame, const SignalSpan& span) {
  const double x = time.X(span.start), width = std::max(1.5, time.X(span.end) - x);
  Moment all = 0;
  for (const auto& entry : span.mixed) all += entry.second;
  double top = frame.top;
  const auto draw = [&](int signal, double part) {
    const FixKind& kind = FixKindOf(signal);
    svg.Rect(std::string(kind.style) + " span", x, top, width, part * frame.height, 0.0, kind.name);
    top += part * frame.height;
  };
  if (all == 0) return draw(span.signal, 1.0);
  for (const auto& [signal, part] : span.mixed)
    draw(signal, static_cast<double>(part) / static_cast<double>(all));
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

std::string DescribeSatellite(const std::string& name, const SatelliteTrail& trail) {
  std::string text = "satellite " + name;
  if (trail.strength.count > 0) text += ", mean " + Fixed(trail.strength.Mean(), 0) + " dB-Hz";
  return text + ", used " +
         Fixed(100.0 * static_cast<double>(trail.used) / static_cast<double>(trail.seen), 0) +
         " % of the time";
}

void DrawTrail(Svg& svg, const std::string& name, const SatelliteTrail& trail) {
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
  svg.Circle(used ? "satellite" : "satellite unused", last.x, last.y, 11.0, DescribeSatellite(name, trail));
  svg.Text(used ? "number" : "number unused", last.x, last.y + 4.0, name, Anchor::middle);
}

}  // namespace

void DrawCourse(std::string& out, const Course& course, const RunStatistics& run) {
  const Range& all = course.values->All();
  if (all.count == 0) return;
  const TimeScale time = TimeScaleOf(run);
  const double low = course.from_zero ? std::min(0.0, all.least * course.factor) : all.least * course.factor;
  const Axis axis = RoundAxis(low, all.most * course.factor, 4, course.least_step);
  const Frame& frame = kCourse;
  Svg svg(out, kChartWidth, frame.Bottom() + 24.0, course.title);
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
  Svg svg(out, kChartWidth, frame.Bottom() + 6.0, "kind of fix over time");
  svg.Text("caption", 0.0, 13.0, "Kind of fix");
  svg.Rect("plot", frame.left, frame.top, frame.width, frame.height, 4.0);
  for (const auto& span : run.signals) DrawSpan(svg, time, frame, span);
  DrawCuts(svg, time, frame, true);
}

void DrawSky(std::string& out, const RunStatistics& run) {
  Svg svg(out, 2.0 * kSkyCentre, 2.0 * kSkyCentre, "where the satellites were in the sky");
  DrawDome(svg);
  for (const auto& [id, trail] : run.satellites) DrawTrail(svg, id.Name(), trail);
}

void DrawStrengths(std::string& out, const RunStatistics& run) {
  double most = 50.0;
  double rows = 0.0;
  for (const auto& [id, trail] : run.satellites) {
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
  for (const auto& [id, trail] : run.satellites) {
    if (trail.strength.count == 0) continue;
    const auto x = [&](double value) { return frame.left + axis.Part(value) * frame.width; };
    const std::string unused = trail.used > 0 ? "" : " unused";
    const double thick = std::min(12.0, pitch - 4.0);
    const double least = x(trail.strength.least), length = std::max(2.0, x(trail.strength.most) - least);
    svg.Line("stem" + unused, frame.left, y, least, y);
    svg.Rect("bar" + unused, least, y - thick / 2.0, length, thick, 3.0, DescribeSatellite(id.Name(), trail));
    svg.Circle("mean" + unused, x(trail.strength.Mean()), y, 3.5);
    svg.Text("tick", frame.left - 6.0, y + 4.0, id.Name(), Anchor::end);
    svg.Text("tick", frame.Right() + 56.0, y + 4.0,
             Fixed(100.0 * static_cast<double>(trail.used) / static_cast<double>(trail.seen), 0) + " %",
             Anchor::end);
    y += pitch;
  }
}

}  // namespace host
