#include "host/corrections/answer.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "gpsengine/face/words.h"
#include "host/run/face.h"

namespace host {

namespace {

/// What a terminal can show of a text from outside.
std::string Plainly(std::string text) {
  std::replace_if(
      text.begin(), text.end(), [](char c) { return c < ' ' || c > '~'; }, '?');
  return text;
}

}  // namespace

void Answer::TakeHeader(const std::string& line) {
  size_ += line.size();
  is_over_ = true;
  if (status_.empty())
    status_ = Plainly(line.substr(0, std::min<std::size_t>(line.find_first_of("\r\n"), 80)));
  constexpr std::string_view kType = "content-type:";
  if (IsSameName(line.substr(0, kType.size()), kType))
    is_table_ |= line.find("gnss/sourcetable") != std::string::npos;
}

bool Answer::IsForeign() const {
  constexpr std::string_view kKnown[] = {"HTTP/", "ICY ", "SOURCETABLE ", "ERROR"};
  return std::none_of(std::begin(kKnown), std::end(kKnown),
                      [this](std::string_view head) { return status_.starts_with(head); });
}

/// As far as it has come.
bool Answer::MayBeHeader(std::string_view line) {
  constexpr std::size_t kLongest = 256, kLongestName = 40;
  const auto is_name = [](char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '-'; };
  const std::string_view name = line.substr(0, line.find(':'));
  return line.size() < kLongest && name.size() < kLongestName &&
         std::all_of(name.begin(), name.end(), is_name);
}

std::string Answer::Body(std::string_view bytes) {
  if (is_over_) return std::string(bytes);
  held_ += bytes;
  while (!is_over_) {
    const std::size_t end = held_.find('\n');
    const std::string line = held_.substr(0, std::min(end, held_.find('\r')));
    const bool is_header =
        MayBeHeader(line) && (line.empty() || end == std::string::npos || line.find(':') < end);
    if (!status_.empty() && !is_header) break;
    if (end == std::string::npos && held_.size() < kMostHead) return {};
    size_ += end + 1;
    is_over_ = !status_.empty() ? line.empty() : end == std::string::npos;
    if (status_.empty()) status_ = Plainly(line.substr(0, 80));
    is_table_ |= line.starts_with("SOURCETABLE");
    is_over_ |= IsForeign() || IsEndless();
    held_.erase(0, end + 1);
  }
  is_over_ = true;
  return std::exchange(held_, {});
}

SourceEnd Answer::End(long status) const {
  using Kind = SourceEnd::Kind;
  if (IsEndless()) return {Kind::absent, "the caster's answer has no end of headers"};
  if (status_.empty()) return {};
  if (IsForeign()) return {Kind::absent, "what answers there is no caster: \"" + status_ + '"'};
  if (status == 401 || status == 403 || status_.starts_with("ERROR - Bad")) {
    return {Kind::refused, "the caster refuses user and password (" + status_ +
                               "): give the user as ntrip://USER@..., and the password in "
                               "GPSENGINE_CORRECTIONS_PASSWORD or with "
                               "--corrections-password-file, then start once more"};
  }
  if (is_table_ || status == 404)
    return {Kind::absent,
            "the caster has no such mount point now; \"gpsengine ntrip CASTER\" lists those it has"};
  if (status >= 300 || status_.starts_with("ERROR"))
    return {Kind::absent, "the caster answers \"" + status_ + '"'};
  return {};
}

}  // namespace host
