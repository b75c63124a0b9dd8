#pragma once

#include <string>
#include <string_view>

#include "gpsengine/platform/cstring.h"

#pragma GCC visibility push(default)

namespace gps {

/// How receivers answer what they are told: in some languages each line is taken or refused in words, in the
/// others nothing is said.
class AnswerReader {
 public:
  static constexpr double kForWord = 1.5;     ///< Seconds that such an answer may take.
  static constexpr double kForReports = 5.0;  ///< Seconds that the reports which answer a request may take.

  /// Whether such an answer is due to a line that is written.
  static bool IsDueTo(std::string_view line);

  /// The next bytes of the line, in pieces of any size.
  void Feed(std::string_view bytes);
  bool HasHeard() const { return heard_; }                 ///< Bytes came.
  int Taken() const { return taken_; }                     ///< Lines were taken.
  int Refused() const { return refused_; }                 ///< Lines were refused.
  const std::string& Refusal() const { return refusal_; }  ///< The last one, in the receiver's words.

 private:
  void EndLine();

  std::string line_;  // not yet ended
  std::string refusal_;
  int taken_ = 0, refused_ = 0;
  bool heard_ = false;
};

/// Whether a message answers a request in a form that no decoder may know.
bool IsAnswer(const CString& message);

}  // namespace gps

#pragma GCC visibility pop
