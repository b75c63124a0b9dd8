#pragma once

#include <deque>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

#include "host/run/event.h"

namespace host {

/// What a run has to publish, on its way to the thread that is connected to an MQTT broker: a limited number
/// of bytes of messages, the oldest of which go first, and the latest state of the receiver. From any thread.
class MqttQueue {
 public:
  struct Message {
    std::string leaf;  ///< The last level of its topic, a constant.
    std::string payload;
    bool is_state = false;  ///< Which the broker is to keep for those who come later.
  };

  explicit MqttQueue(std::size_t limit) : limit_(limit) {}

  /// Adds a message. Standard error tells once when the first one is dropped for it.
  void Put(std::string_view leaf, std::string_view payload);
  /// The state that counts from now on, a JSON object, which gets the count of messages that were dropped.
  void SetState(std::string object);
  /// The state is to be told again.
  void RepeatState();
  /// Nothing comes any more.
  void Close();
  bool IsClosed() const;

  /// The next one, the state before all others.
  std::optional<Message> Take();
  /// How many messages wait, beside the state.
  std::size_t Waiting() const;
  bool IsEmpty() const;
  /// How many messages were dropped since the last call.
  long long TakeDropped();
  /// Readable when there may be something new, until that is noted.
  const Event& News() const { return news_; }

 private:
  const std::size_t limit_;
  const Event news_;
  mutable std::mutex mutex_;
  std::deque<Message> messages_;
  std::size_t bytes_ = 0;
  std::string state_;
  bool tells_state_ = false, closed_ = false;
  long long dropped_ = 0, told_ = 0;
};

}  // namespace host
