#include "host/line/observer.h"

#include <mutex>
#include <string_view>
#include <utility>

#include "gpsengine/link/guardedline.h"
#include "host/run/event.h"
#include "host/run/face.h"

namespace host {

struct LineObserver::State {
  std::mutex mutex;
  std::string bytes;
  bool lost = false;
  Event news;

  void Begin() {
    const std::lock_guard lock(mutex);
    lost = false;
  }
  void End() {
    const std::lock_guard lock(mutex);
    lost = true;
    news.Set();
  }
  /// Who has filled the room that there was reads on at once, and has the rest in a moment.
  void Add(std::string_view piece, bool more_follows) {
    const std::lock_guard lock(mutex);
    bytes += piece;
    if (!more_follows && !bytes.empty()) news.Set();
  }
};

LineObserver::LineObserver() : state_(std::make_shared<State>()) {}

SerialLineFactory LineObserver::Opener(SerialLineFactory open) const {
  return [state = state_, open = std::move(open)]() -> std::unique_ptr<SerialLine> {
    auto line = open();
    if (line == nullptr) return nullptr;
    state->Begin();
    const auto add = [state](std::string_view bytes, bool more_follows) { state->Add(bytes, more_follows); };
    return std::make_unique<GuardedLine>(std::move(line),
                                         GuardedLine::Watcher{add, [state] { state->End(); }});
  };
}

int LineObserver::Descriptor() const {
  return state_->news.Descriptor();
}

std::string LineObserver::Take() const {
  const std::lock_guard lock(state_->mutex);
  state_->news.Clear();
  return std::exchange(state_->bytes, {});
}

bool LineObserver::IsLost() const {
  const std::lock_guard lock(state_->mutex);
  return state_->lost;
}

}  // namespace host
