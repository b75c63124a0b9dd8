#include "host/network/gpsdlines.h"

#include <algorithm>

#include "host/run/failure.h"

namespace host {

namespace {

constexpr std::string_view kHead = R"({"class":")";
constexpr std::string_view kError = R"({"class":"ERROR")";
// Longer than any object. What is longer has lost its end, and the receiver's bytes go on there.
constexpr std::size_t kLongest = 16384;
constexpr std::size_t kTold = 300;

}  // namespace

std::string GpsdLines::Strip(std::string_view bytes) {
  std::string rest;
  for (const char byte : bytes) {
    if (length_ > 0) {
      if (line_.size() < kTold && byte >= ' ') line_ += byte;
      if (byte == '\n' || ++length_ > kLongest) EndLine();
      continue;
    }
    if (byte != kHead[held_.size()]) {
      rest += held_;
      held_.clear();
    }
    if (byte != kHead[held_.size()]) {
      rest += byte;
    } else if ((held_ += byte) == kHead) {
      line_.swap(held_);
      held_.clear();
      length_ = kHead.size();
    }
  }
  return rest;
}

void GpsdLines::EndLine() {
  if (line_.starts_with(kError)) Complain(server_ + " says " + line_);
  line_.clear();
  length_ = 0;
}

}  // namespace host
