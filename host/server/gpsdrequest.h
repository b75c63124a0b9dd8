#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace host {

/// One request of a client of gpsd's protocol: "?NAME", "?NAME=ARGUMENT".
struct GpsdRequest {
  std::string text;      ///< Without what ends it.
  bool is_whole = true;  ///< False if it was longer than allowed, and its rest is lost.
};

/// Cuts what a client sends into requests. Clients differ in how they end one: with a semicolon, with a line
/// end, with both, with the argument's closing bracket, or not at all.
class GpsdRequestReader {
 public:
  explicit GpsdRequestReader(std::size_t longest) : longest_(longest) {}

  /// The next bytes, in pieces of any size; calls `take(GpsdRequest&&)` for each request that has ended.
  template <class Take>
  void Feed(std::string_view bytes, Take&& take) {
    for (const char c : bytes) {
      if (auto request = Next(c)) take(std::move(*request));
    }
  }
  /// What has come is a request if nothing follows.
  bool HasUnended() const { return !text_.empty() && depth_ == 0 && !in_string_; }
  /// Ends that request.
  GpsdRequest TakeUnended() { return End(); }

 private:
  std::optional<GpsdRequest> Next(char c);
  GpsdRequest End();

  const std::size_t longest_;
  std::string text_;
  bool is_cut_ = false;
  int depth_ = 0;  // of brackets
  bool in_string_ = false, is_escaped_ = false;
};

/// What a client has asked to be sent.
struct GpsdWatch {
  bool enable = false;
  bool json = false;
  bool nmea = false;
  int raw = 0;         ///< 1: sentences as they come; 2: all bytes as they come.
  std::string device;  ///< The one to watch; empty for all.
};

/// Changes `watch` as the argument of a WATCH request says. False, with `watch` as it was, if the argument is
/// no such object.
bool ApplyWatch(std::string_view argument, GpsdWatch& watch);

}  // namespace host
