#pragma once

#include <chrono>
#include <string>

namespace host {

/// A line on a terminal's standard error that says how far a long job has got, and that is gone when the job
/// is done. Without a terminal nothing is shown.
class Progress {
 public:
  /// `total` is what Update counts up to. With `show` false nothing is shown either.
  Progress(std::string label, double total, bool show);
  ~Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  /// Shows that much of the total as done; more often than ten times a second has no effect.
  void Update(double done);

  /// The line, for a terminal of that width.
  static std::string Render(const std::string& label, double fraction, int columns);

 private:
  using Clock = std::chrono::steady_clock;

  const std::string label_;
  const double total_;
  const bool show_;
  Clock::time_point next_{};
};

/// Whether standard error is a terminal on which lines of standard output do not come between.
bool CanShowProgress(bool output_is_busy);

}  // namespace host
