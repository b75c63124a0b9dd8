#include "host/corrections/queue.h"

#include <utility>

namespace host {

int CorrectionQueue::Add(std::string piece, bool waits) {
  std::unique_lock lock(mutex_);
  const auto has_room = [&] { return stopped_ || pieces_.empty() || bytes_ + piece.size() <= most_; };
  if (waits) news_.wait(lock, has_room);
  int dropped = 0;
  for (; !has_room(); ++dropped) {
    bytes_ -= pieces_.front().size();
    pieces_.pop_front();
  }
  bytes_ += piece.size();
  pieces_.push_back(std::move(piece));
  news_.notify_all();
  return dropped;
}

std::optional<std::string> CorrectionQueue::Take() {
  std::unique_lock lock(mutex_);
  news_.wait(lock, [&] { return stopped_ || (open_ && !pieces_.empty()); });
  if (stopped_) return std::nullopt;
  std::string piece = std::move(pieces_.front());
  pieces_.pop_front();
  bytes_ -= piece.size();
  news_.notify_all();
  return piece;
}

bool CorrectionQueue::Rest(std::chrono::milliseconds time) {
  std::unique_lock lock(mutex_);
  return !news_.wait_for(lock, time, [&] { return stopped_ || !open_; });
}

void CorrectionQueue::SetOpen(bool open) {
  const std::lock_guard lock(mutex_);
  open_ = open;
  news_.notify_all();
}

void CorrectionQueue::Stop() {
  const std::lock_guard lock(mutex_);
  stopped_ = true;
  news_.notify_all();
}

}  // namespace host
