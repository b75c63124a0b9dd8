#pragma once

#include <string>

#include "host/records/jsonwriter.h"

namespace host {

/// How wide the charts are that have the whole width of a page.
constexpr double kChartWidth = 960.0;

/// Where a chart has its plot, in pixels of the drawing.
struct Frame {
  double left, top, width, height;

  double Right() const { return left + width; }
  double Bottom() const { return top + height; }
};

/// A number with so many decimals.
inline std::string Fixed(double value, int decimals) {
  std::string text;
  AppendFixed(text, value, decimals);
  return text;
}

}  // namespace host
