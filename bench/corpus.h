#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace bench {

/// GGA, GSA, GSV, VTG, RMC, GLL and ZDA, once a second, as a simulated receiver on the road sends them: at
/// least `bytes` of them, the same at every run.
std::string MakeCorpus(std::size_t bytes);

/// The sentences of a corpus, each with its line end.
std::vector<std::string_view> SplitLines(std::string_view corpus);

}  // namespace bench
