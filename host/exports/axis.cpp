#include "host/exports/axis.h"

#include <algorithm>
#include <cmath>

#include "host/records/jsonwriter.h"

namespace host {

namespace {

/// The round step that makes about so many.
double StepOf(double span, int steps) {
  const double rough = span / steps;
  const double power = std::pow(10.0, std::floor(std::log10(rough)));
  double best = power;
  for (const double step : {2.0 * power, 5.0 * power, 10.0 * power}) {
    if (std::fabs(std::log(rough / step)) < std::fabs(std::log(rough / best))) best = step;
  }
  return best;
}

void AddTicks(Axis& axis, double first, double last) {
  const int decimals = DecimalsOf(axis.step);
  for (double i = first; i <= last; ++i) {
    std::string label;
    AppendFixed(label, i * axis.step, decimals);
    if (label.starts_with('-')) label.replace(0, 1, "\xE2\x88\x92");
    axis.ticks.push_back({i * axis.step, label});
  }
}

}  // namespace

double RoundDown(double value) {
  const double power = std::pow(10.0, std::floor(std::log10(value)));
  const double lead = value / power * (1.0 + 1e-9);
  return power * (lead >= 5.0 ? 5.0 : lead >= 2.0 ? 2.0 : 1.0);
}

int DecimalsOf(double step) {
  return std::clamp(static_cast<int>(-std::floor(std::log10(step) + 1e-9)), 0, 9);
}

Axis RoundAxis(double low, double high, int steps, double least_step) {
  Axis axis;
  axis.step = std::max(least_step, high > low ? StepOf(high - low, steps) : least_step);
  const double first = std::floor(low / axis.step + 1e-9);
  const double last = std::max(first + 1.0, std::ceil(high / axis.step - 1e-9));
  axis.low = first * axis.step;
  axis.high = last * axis.step;
  AddTicks(axis, first, last);
  return axis;
}

Axis ExactAxis(double low, double high, int steps) {
  Axis axis{low, high, StepOf(high - low, steps), {}};
  AddTicks(axis, std::ceil(low / axis.step), std::floor(high / axis.step));
  return axis;
}

}  // namespace host
