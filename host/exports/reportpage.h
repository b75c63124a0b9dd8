#pragma once

#include <string>
#include <string_view>

#include "host/exports/export.h"
#include "host/exports/runstatistics.h"

namespace host {

/// A page about a run: one file that needs nothing else, for screens light and dark and for paper. Its
/// numbers stand in it as text; scripts of its own draw what there is to draw.
std::string ReportPage(const RunFacts& facts, const RunStatistics& run, const Tally& tally);

/// The page without a run. "<!--source-->" and the like are the places of what it tells, in their order.
std::string_view ReportTemplate();
/// What the page draws, as JSON that may stand in it, since nothing in there comes from the outside. Times
/// are milliseconds from "start", kinds of fix are places in "kinds"; the track and the cloud are in metres,
/// other values in their unit.
std::string ReportData(const RunFacts& facts, const RunStatistics& run);
/// Appends the section that tells what the fixes of a still receiver say. None, if it has moved.
void AddSurveySection(std::string& out, const Survey& survey, const RunFacts& facts);
std::string_view HeightName(const RunFacts& facts);

}  // namespace host
