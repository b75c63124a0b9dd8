#pragma once

#include <string>
#include <string_view>

#include "host/corrections/source.h"

namespace host {

/// What a caster says before its stream, or in its place. Casters of the first version speak no HTTP: a
/// line "ICY 200 OK", with or without an empty one after it, so that libcurl takes all they send for a body.
class Answer {
 public:
  static constexpr std::size_t kMostHead = 64 << 10;

  const std::string& Status() const { return status_; }
  bool IsEndless() const { return size_ > kMostHead; }
  /// A line of HTTP's head.
  void TakeHeader(const std::string& line);
  /// What of a body is no head of a caster's own, once that is over.
  std::string Body(std::string_view bytes);
  /// What is wrong with it, by HTTP's status or a caster's own words; stopped if nothing is, so far.
  SourceEnd End(long status) const;

 private:
  /// The head of what is neither HTTP nor a caster's.
  bool IsForeign() const;
  static bool MayBeHeader(std::string_view line);

  std::string status_, held_;
  std::size_t size_ = 0;
  bool is_table_ = false, is_over_ = false;
};

}  // namespace host
