#include <algorithm>
#include <cmath>
#include <map>

#include "host/exports/axis.h"
#include "host/exports/chartframe.h"
#include "host/exports/charts.h"
#include "host/exports/svg.h"
#include "host/records/fixkind.h"

namespace host {

namespace {

using Anchor = Svg::Anchor;

constexpr double kWidth = 444.0;
constexpr Frame kPlot{58.0, 10.0, 376.0, 376.0};
// More than these a drawing does not show.
constexpr std::size_t kMostDots = 3000;

/// The plot's square about the mean.
class CloudPlan {
 public:
  CloudPlan(const SurveyResult& all, const Unit& unit) : unit_(unit) {
    // A few fixes lie far out, and would leave the others a spot.
    reach_ = std::max(1.5 * all.r95, 1e-3) * unit.per_metre;
    axis_ = ExactAxis(-reach_, reach_, 6);
  }

  const Axis& GetAxis() const { return axis_; }
  double X(double east) const { return XOf(east * unit_.per_metre); }
  double Y(double north) const { return YOf(north * unit_.per_metre); }
  double XOf(double units) const { return kPlot.left + axis_.Part(units) * kPlot.width; }
  double YOf(double units) const { return kPlot.Bottom() - axis_.Part(units) * kPlot.height; }
  bool Takes(const Survey::Point& point) const {
    return std::max(std::fabs(point.east), std::fabs(point.north)) * unit_.per_metre <= reach_;
  }

 private:
  const Unit& unit_;
  double reach_;
  Axis axis_;
};

void DrawGround(Svg& svg, const CloudPlan& plan, const Unit& unit) {
  svg.Rect("plot", kPlot.left, kPlot.top, kPlot.width, kPlot.height, 4.0);
  for (const auto& tick : plan.GetAxis().ticks) {
    const double x = plan.XOf(tick.value), y = plan.YOf(tick.value);
    svg.Line("grid", x, kPlot.top, x, kPlot.Bottom());
    svg.Line("grid", kPlot.left, y, kPlot.Right(), y);
    svg.Text("tick", x, kPlot.Bottom() + 16.0, tick.label, Anchor::middle);
    svg.Text("tick", kPlot.left - 6.0, y + 4.0, tick.label, Anchor::end);
  }
  const std::string name(unit.name);
  svg.Text("axis", kPlot.left + kPlot.width / 2.0, kPlot.Bottom() + 34.0, "east of the mean, " + name,
           Anchor::middle);
  svg.Upright("axis", 12.0, kPlot.top + kPlot.height / 2.0, "north of the mean, " + name);
}

void DrawDots(Svg& svg, const CloudPlan& plan, const std::vector<Survey::Point>& points) {
  const std::size_t step = points.size() / kMostDots + 1;
  std::map<int, std::vector<Survey::Point>> kinds;
  for (std::size_t i = 0; i < points.size(); i += step)
    if (plan.Takes(points[i])) kinds[points[i].signal].push_back(points[i]);
  for (const auto& [signal, dots] : kinds) {
    svg.BeginPath(std::string(FixKindOf(signal).style) + " dots");
    for (const auto& dot : dots) {
      svg.MoveTo(plan.X(dot.east), plan.Y(dot.north));
      svg.LineTo(plan.X(dot.east) + 0.1, plan.Y(dot.north));  // its round ends are the dot
    }
    svg.EndPath();
  }
}

void DrawRadius(Svg& svg, const CloudPlan& plan, double metres, std::string_view label) {
  const double radius = plan.X(metres) - plan.X(0.0);
  svg.Circle("radius", plan.X(0.0), plan.Y(0.0), radius);
  svg.Text("tick strong", plan.X(0.0), plan.Y(metres) - 4.0, label, Anchor::middle);
}

}  // namespace

void DrawCloud(std::string& out, const Survey& survey, const SurveyResult& all, const Unit& unit) {
  const CloudPlan plan(all, unit);
  Svg svg(out, kWidth, kPlot.Bottom() + 40.0, "the fixes about their mean");
  DrawGround(svg, plan, unit);
  DrawDots(svg, plan, survey.Points());
  DrawRadius(svg, plan, all.cep50, "50 %");
  DrawRadius(svg, plan, all.r95, "95 %");
}

}  // namespace host
