#pragma once

#include <string>

#include "host/exports/export.h"
#include "host/exports/runstatistics.h"

namespace host {

/// A page about a run: one file that needs nothing else, for screens light and dark and for paper.
std::string ReportPage(const RunFacts& facts, const RunStatistics& run, const Tally& tally);

}  // namespace host
