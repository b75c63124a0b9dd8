#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace bench {

/// What receivers send once a second, GGA, GSA, GSV, VTG, RMC, GLL and ZDA, for ten seconds each: of one on
/// the road, of one that stands still, of one without a fix, and of one that has four satellite systems. At
/// least `bytes` of it, the same at every run.
std::string MakeCorpus(std::size_t bytes);

/// The sentences of a corpus, each with its line end.
std::vector<std::string_view> SplitLines(std::string_view corpus);

}  // namespace bench
