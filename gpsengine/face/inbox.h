#pragma once

#include <optional>
#include <string>

#include "gpsengine/face/shelf.h"
#include "gpsengine/face/source.h"
#include "gpsengine/platform/monitor.h"
#include "gpsengine/platform/system.h"

namespace gps {

/// The records of a live receiver, between the thread that makes them and those that take them.
class Inbox : public Stream {
 public:
  /// `name` is that of the line, for errors.
  explicit Inbox(std::string name) : name_(std::move(name)) {}

  void Put(Record&& record);
  /// There is nothing more to come, and why; none: that is in order.
  void End(std::optional<Error> error);

  bool Next(std::size_t alternative, Record& record, const Wait& wait) override;
  void Want(std::size_t alternative) override;
  /// The next of all kinds, without waiting. Throws the Error that has ended it.
  bool TakeNow(Record& record);
  /// Messages that the library had no room for.
  void SetLostMessages(unsigned long long count);
  unsigned long long Lost();
  int Descriptor() const { return waiting_.Descriptor(); }

 private:
  const std::string name_;
  Monitor monitor_;  // for what follows
  Shelf shelf_;
  bool ended_ = false;
  std::optional<Error> error_;
  WakeUp waiting_;
  unsigned long long lost_messages_ = 0;
  bool is_announced_ = false;  // by the descriptor
};

}  // namespace gps
