#include "host/server/mqttqueue.h"

#include <utility>

#include "host/run/failure.h"

namespace host {

namespace {

/// With what a message takes beside its text.
std::size_t SizeOf(const MqttQueue::Message& message) {
  return message.payload.size() + sizeof message;
}

}  // namespace

void MqttQueue::Put(std::string_view leaf, std::string_view payload) {
  bool begins = false;
  {
    const std::lock_guard lock(mutex_);
    messages_.push_back({std::string(leaf), std::string(payload)});
    bytes_ += SizeOf(messages_.back());
    while (bytes_ > limit_) {
      bytes_ -= SizeOf(messages_.front());
      messages_.pop_front();
      begins = begins || dropped_ == told_;
      ++dropped_;
    }
  }
  if (begins) Complain("too much waits for the MQTT broker: the oldest messages are dropped");
  news_.Set();
}

void MqttQueue::SetState(std::string object) {
  const std::lock_guard lock(mutex_);
  state_ = std::move(object);
  tells_state_ = true;
  news_.Set();
}

void MqttQueue::RepeatState() {
  const std::lock_guard lock(mutex_);
  tells_state_ = !state_.empty();
}

void MqttQueue::Close() {
  const std::lock_guard lock(mutex_);
  closed_ = true;
  news_.Set();
}

bool MqttQueue::IsClosed() const {
  const std::lock_guard lock(mutex_);
  return closed_;
}

std::optional<MqttQueue::Message> MqttQueue::Take() {
  const std::lock_guard lock(mutex_);
  // The last word comes last.
  if (tells_state_ && (!closed_ || messages_.empty())) {
    tells_state_ = false;
    const std::string count = ",\"dropped\":" + std::to_string(dropped_);
    return Message{"status", std::string(state_).insert(state_.size() - 1, count), true};
  }
  if (messages_.empty()) return std::nullopt;
  std::optional<Message> message(std::move(messages_.front()));
  bytes_ -= SizeOf(*message);
  messages_.pop_front();
  return message;
}

std::size_t MqttQueue::Waiting() const {
  const std::lock_guard lock(mutex_);
  return messages_.size();
}

bool MqttQueue::IsEmpty() const {
  const std::lock_guard lock(mutex_);
  return messages_.empty() && !tells_state_;
}

long long MqttQueue::TakeDropped() {
  const std::lock_guard lock(mutex_);
  return dropped_ - std::exchange(told_, dropped_);
}

}  // namespace host
