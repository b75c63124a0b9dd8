#include "host/run/progress.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <string_view>
#include <utility>

namespace host {

namespace {

constexpr std::string_view kEraseLine = "\r\x1b[K";

void WriteError(std::string_view text) {
  [[maybe_unused]] const auto written = write(STDERR_FILENO, text.data(), text.size());
}

int Columns() {
  winsize size{};
  return ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : 80;
}

}  // namespace

Progress::Progress(std::string label, double total, bool show)
    : label_(std::move(label)), total_(total), show_(show && total > 0.0) {}

Progress::~Progress() {
  if (show_) WriteError(kEraseLine);
}

void Progress::Update(double done) {
  if (!show_) return;
  const auto now = Clock::now();
  if (now < next_) return;
  next_ = now + std::chrono::milliseconds(100);
  WriteError("\r" + Render(label_, done / total_, Columns()));
}

std::string Progress::Render(const std::string& label, double fraction, int columns) {
  const double part = std::clamp(std::isfinite(fraction) ? fraction : 0.0, 0.0, 1.0);
  std::string percent = std::to_string(static_cast<int>(part * 100.0));
  percent.insert(0, 3 - percent.size(), ' ');
  // The last column stays free, since some terminals wrap there.
  const int width = std::min(columns - 1 - static_cast<int>(label.size()) - 9, 50);
  std::string line = label + " ";
  if (width > 0) {
    const auto filled = static_cast<std::size_t>(std::lround(part * width));
    line +=
        '[' + std::string(filled, '#') + std::string(static_cast<std::size_t>(width) - filled, '.') + "] ";
  }
  return line + percent + " %";
}

bool CanShowProgress(bool output_is_busy) {
  return isatty(STDERR_FILENO) != 0 && !(output_is_busy && isatty(STDOUT_FILENO) != 0);
}

}  // namespace host
