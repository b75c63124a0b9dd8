#include "host/server/pagehub.h"

#include <algorithm>
#include <utility>

namespace host {

namespace {

constexpr std::size_t kMostAtATime = 64 * 1024;

}  // namespace

void PageHub::Publish(std::string_view line) {
  {
    const std::lock_guard lock(mutex_);
    lines_.emplace_back(line);
    bytes_ += line.size();
    while (bytes_ > history_limit_) {
      bytes_ -= lines_.front().size();
      lines_.pop_front();
      ++first_;
    }
  }
  news_.notify_all();
}

void PageHub::SetStatus(std::string line) {
  {
    const std::lock_guard lock(mutex_);
    status_ = std::move(line);
    ++status_version_;
  }
  news_.notify_all();
}

std::string PageHub::Status() const {
  const std::lock_guard lock(mutex_);
  return status_;
}

std::string PageHub::History() const {
  const std::lock_guard lock(mutex_);
  std::string all = status_ + '\n';
  for (const std::string& line : lines_) all += line + '\n';
  return all;
}

void PageHub::Close() {
  {
    const std::lock_guard lock(mutex_);
    closed_ = true;
  }
  news_.notify_all();
}

PageHub::Counts PageHub::GetCounts() const {
  const std::lock_guard lock(mutex_);
  return counts_;
}

std::unique_ptr<PageHub::Reader> PageHub::Join(long long after) {
  const std::lock_guard lock(mutex_);
  if (counts_.readers >= reader_limit_) return nullptr;
  ++counts_.readers;
  const bool is_known = after >= 0 && after < End();
  return std::unique_ptr<Reader>(new Reader(*this, is_known ? std::max(after + 1, first_) : first_));
}

PageHub::Reader::~Reader() {
  const std::lock_guard lock(hub_.mutex_);
  --hub_.counts_.readers;
}

bool PageHub::Reader::Take(std::string& events, std::chrono::milliseconds wait) {
  std::unique_lock lock(hub_.mutex_);
  hub_.news_.wait_for(lock, wait, [this] {
    return hub_.closed_ || next_ < hub_.End() || status_version_ != hub_.status_version_;
  });
  if (next_ < hub_.first_) hub_.counts_.dropped += hub_.first_ - std::exchange(next_, hub_.first_);
  if (std::exchange(status_version_, hub_.status_version_) != hub_.status_version_) {
    events += "data: " + hub_.status_ + "\n\n";
  }
  for (; next_ < hub_.End() && events.size() < kMostAtATime; ++next_) {
    events += "id: " + std::to_string(next_) + "\ndata: ";
    events += hub_.lines_[static_cast<std::size_t>(next_ - hub_.first_)];
    events += "\n\n";
  }
  return !hub_.closed_;
}

}  // namespace host
