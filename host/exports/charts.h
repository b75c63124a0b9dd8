#pragma once

#include <string>
#include <string_view>

#include "host/exports/runstatistics.h"
#include "host/records/display.h"

namespace host {

/// A value over time.
struct Course {
  std::string_view title, unit, style;
  const Envelope* values;
  double factor;      ///< From the value to the unit.
  double least_step;  ///< Of the labels.
  bool from_zero;
};
void DrawCourse(std::string& out, const Course& course, const RunStatistics& run);
/// Which kind of fix there was when.
void DrawSignals(std::string& out, const RunStatistics& run);
/// The track from above, as far from its first point. There is one.
void DrawTrack(std::string& out, const RunStatistics& run, const UnitSystem& units);
/// Where the fixes of a still receiver lie about their mean, and the radii with half and 95 % of them.
void DrawCloud(std::string& out, const Survey& survey, const SurveyResult& all, const Unit& unit);
/// Where the satellites went, as one sees them lying on the back with the head to the north.
void DrawSky(std::string& out, const RunStatistics& run);
/// How strong each satellite was.
void DrawStrengths(std::string& out, const RunStatistics& run);

}  // namespace host
