#include "host/run/failure.h"

#include <unistd.h>

#include <mutex>
#include <utility>

namespace host {

namespace {

std::mutex g_complaints_mutex;

std::function<void(const std::string&)>& ComplaintHandler() {
  static auto* const handler = new std::function<void(const std::string&)>;
  return *handler;
}

}  // namespace

void SetComplaintHandler(std::function<void(const std::string&)> handler) {
  const std::lock_guard lock(g_complaints_mutex);
  ComplaintHandler() = std::move(handler);
}

void Complain(const std::string& text) {
  const std::lock_guard lock(g_complaints_mutex);
  if (ComplaintHandler()) return ComplaintHandler()(text);
  const std::string line = "gpsengine: " + text + "\n";
  // Nothing can be said about a standard error that does not take it.
  [[maybe_unused]] const auto written = write(STDERR_FILENO, line.data(), line.size());
}

}  // namespace host
