#include "gpsengine/face/inbox.h"

#include "gpsengine/face/words.h"

namespace gps {

namespace {

constexpr std::string_view kKinds[] = {"fix", "satellites", "report", "raw data", "record"};

}  // namespace

Error Silence(std::size_t alternative, const std::string& port, double seconds) {
  return Error(ErrorCode::silence,
               "no " + std::string(kKinds[Shelf::ReaderOf(alternative)]) + " came from " + port +
                   Print(" in %g s", seconds) +
                   ": check that the receiver is on, its cable, its model and its baud rate");
}

void Inbox::Put(Record&& record) {
  const Monitor::Lock lock = monitor_.Enter();
  if (ended_) return;
  shelf_.Put(std::move(record));
  if (!std::exchange(is_announced_, true)) waiting_.Set();
  monitor_.Announce();
}

void Inbox::End(std::optional<Error> error) {
  const Monitor::Lock lock = monitor_.Enter();
  if (std::exchange(ended_, true)) return;
  error_ = std::move(error);
  waiting_.Set();
  monitor_.Announce();
}

void Inbox::Want(std::size_t alternative) {
  const Monitor::Lock lock = monitor_.Enter();
  shelf_.Want(Shelf::ReaderOf(alternative));
}

bool Inbox::Next(std::size_t alternative, Record& record, const Wait& wait) {
  const std::size_t reader = Shelf::ReaderOf(alternative);
  Monitor::Lock lock = monitor_.Enter();
  bool taken = false;
  const bool ready = monitor_.Wait(lock, wait.stop, wait.timeout,
                                   [&] { return (taken = shelf_.Take(reader, record)) || ended_; });
  if (taken || (wait.stop.stop_requested() && !ready)) return taken;
  if (error_) throw Error(*error_);
  if (ended_) return false;
  throw Silence(alternative, name_, static_cast<double>(wait.timeout->count()) / 1000.0);
}

bool Inbox::TakeNow(Record& record) {
  const Monitor::Lock lock = monitor_.Enter();
  shelf_.Want(Shelf::kKinds);
  if (shelf_.Take(Shelf::kKinds, record)) return true;
  if (error_) throw Error(*error_);
  if (!ended_ && std::exchange(is_announced_, false)) waiting_.Clear();
  return false;
}

void Inbox::SetLostMessages(unsigned long long count) {
  const Monitor::Lock lock = monitor_.Enter();
  lost_messages_ = count;
}

unsigned long long Inbox::Lost() {
  const Monitor::Lock lock = monitor_.Enter();
  return shelf_.Lost() + lost_messages_;
}

}  // namespace gps
