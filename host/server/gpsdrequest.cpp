#include "host/server/gpsdrequest.h"

#include <algorithm>
#include <nlohmann/json.hpp>

namespace host {

namespace {

// Deeper than any request that makes sense.
constexpr int kDeepest = 1 << 30;

bool Read(const nlohmann::json& object, const char* key, bool& value) {
  const auto member = object.find(key);
  if (member == object.end()) return true;
  if (member->is_boolean()) value = member->get<bool>();
  return member->is_boolean();
}

}  // namespace

// A line end always ends a request, so that one that is malformed costs no more than its line.
std::optional<GpsdRequest> GpsdRequestReader::Next(char c) {
  const bool is_line_end = c == '\r' || c == '\n';
  const bool is_end = is_line_end || (!in_string_ && (c == ';' || (c == '?' && depth_ == 0)));
  if (is_end) {
    std::optional<GpsdRequest> ended;
    if (!text_.empty()) ended = End();
    if (c == '?') text_ = c;
    return ended;
  }
  if (text_.empty() && (c == ' ' || c == '\t')) return std::nullopt;
  if (text_.size() < longest_) {
    text_ += c;
  } else {
    is_cut_ = true;
  }
  if (in_string_) {
    if (c == '"' && !is_escaped_) in_string_ = false;
    is_escaped_ = c == '\\' && !is_escaped_;
    return std::nullopt;
  }
  if (c == '"') in_string_ = true;
  if (c == '{' || c == '[') depth_ = std::min(depth_ + 1, kDeepest);
  if ((c == '}' || c == ']') && --depth_ <= 0) return End();
  return std::nullopt;
}

GpsdRequest GpsdRequestReader::End() {
  depth_ = 0;
  in_string_ = is_escaped_ = false;
  return {std::exchange(text_, {}), !std::exchange(is_cut_, false)};
}

bool ApplyWatch(std::string_view argument, GpsdWatch& watch) {
  const auto object = nlohmann::json::parse(argument, nullptr, /*allow_exceptions=*/false);
  if (!object.is_object()) return false;
  GpsdWatch wanted = watch;
  wanted.enable = true;
  if (!Read(object, "enable", wanted.enable) || !Read(object, "json", wanted.json) ||
      !Read(object, "nmea", wanted.nmea)) {
    return false;
  }
  if (const auto raw = object.find("raw"); raw != object.end()) {
    if (!raw->is_number_unsigned() || raw->get<unsigned>() > 2) return false;
    wanted.raw = raw->get<int>();
  }
  if (const auto device = object.find("device"); device != object.end()) {
    if (!device->is_string()) return false;
    wanted.device = device->get<std::string>();
  }
  // Who asks for nothing in particular wants to see something.
  if (wanted.enable && !wanted.json && !wanted.nmea && wanted.raw == 0) wanted.json = true;
  watch = std::move(wanted);
  return true;
}

}  // namespace host
