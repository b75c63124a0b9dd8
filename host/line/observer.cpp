#include "host/line/observer.h"

#include <algorithm>
#include <mutex>
#include <string_view>
#include <utility>

#include "gpsengine/face/guardedline.h"
#include "host/run/event.h"
#include "host/run/face.h"

namespace host {

struct LineObserver::State {
  std::mutex mutex;
  std::string bytes;
  bool lost = false;
  Event news;
  std::mutex write_mutex;
  GuardedLine* line = nullptr;  // that is open; guarded by the mutex of writes

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

class LineObserver::Line : public GuardedLine {
 public:
  Line(std::unique_ptr<SerialLine> line, const std::shared_ptr<State>& state)
      : GuardedLine(std::move(line),
                    {[state](std::string_view bytes, bool more_follows) { state->Add(bytes, more_follows); },
                     [state] { state->End(); }}),
        state_(state) {
    const std::lock_guard lock(state_->write_mutex);
    state_->line = this;
  }
  /// It may end after the opening of the next one.
  ~Line() override {
    const std::lock_guard lock(state_->write_mutex);
    if (state_->line == this) state_->line = nullptr;
  }
  Line(const Line&) = delete;
  Line& operator=(const Line&) = delete;

  int Write(const void* data, int length, DWORD ms) override {
    const std::lock_guard lock(state_->write_mutex);
    return GuardedLine::Write(data, length, ms);
  }

 private:
  const std::shared_ptr<State> state_;
};

LineObserver::LineObserver() : state_(std::make_shared<State>()) {}

SerialLineFactory LineObserver::Opener(SerialLineFactory open) const {
  return [state = state_, open = std::move(open)]() -> std::unique_ptr<SerialLine> {
    auto line = open();
    if (line == nullptr) return nullptr;
    state->Begin();
    return std::make_unique<Line>(std::move(line), state);
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

std::size_t LineObserver::Write(std::string_view bytes) const {
  constexpr DWORD kStalled = 200;  // so long does a command wait for a line that takes nothing
  const std::lock_guard lock(state_->write_mutex);
  if (state_->line == nullptr) return 0;
  const int written =
      state_->line->GuardedLine::Write(bytes.data(), static_cast<int>(bytes.size()), kStalled);
  return static_cast<std::size_t>(std::max(written, 0));
}

bool LineObserver::IsLost() const {
  const std::lock_guard lock(state_->mutex);
  return state_->lost;
}

}  // namespace host
