#include "host/line/observer.h"

#include <mutex>
#include <string_view>
#include <utility>

#include "host/line/blockguard.h"
#include "host/run/event.h"

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

namespace {

template <class State>
class ObservedLine : public SerialLine {
 public:
  ObservedLine(std::unique_ptr<SerialLine> line, std::shared_ptr<State> state)
      : line_(std::move(line)), state_(std::move(state)) {}

  int Read(void* data, int most, DWORD ms) override {
    if (held_.empty()) {
      const int room = most - most / kLeastBlock;  // for what the guard adds
      const int count = line_->Read(data, room, ms);
      if (count < 0) {
        state_->End();
        return count;
      }
      const std::string_view bytes(static_cast<const char*>(data), static_cast<std::size_t>(count));
      state_->Add(bytes, count == room);
      held_ = guard_.Pass(bytes);
    }
    const std::size_t taken = held_.copy(static_cast<char*>(data), static_cast<std::size_t>(most));
    held_.erase(0, taken);
    return static_cast<int>(taken);
  }

  bool GetState(DCB& dcb) override { return line_->GetState(dcb); }
  bool SetState(const DCB& dcb) override { return line_->SetState(dcb); }
  int Write(const void* data, int length, DWORD ms) override { return line_->Write(data, length, ms); }
  void Cancel() override { line_->Cancel(); }
  void WakeReader() override { line_->WakeReader(); }
  bool PurgeInput() override { return line_->PurgeInput(); }
  int BytesWaiting(DWORD& errors) override { return line_->BytesWaiting(errors); }
  bool SetBreak(bool on) override { return line_->SetBreak(on); }

 private:
  static constexpr int kLeastBlock = 128;

  const std::unique_ptr<SerialLine> line_;
  const std::shared_ptr<State> state_;
  // The reader thread's.
  BlockGuard guard_;
  std::string held_;
};

}  // namespace

LineObserver::LineObserver() : state_(std::make_shared<State>()) {}

SerialLineFactory LineObserver::Opener(SerialLineFactory open) const {
  return [state = state_, open = std::move(open)]() -> std::unique_ptr<SerialLine> {
    auto line = open();
    if (line == nullptr) return nullptr;
    state->Begin();
    return std::make_unique<ObservedLine<State>>(std::move(line), state);
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
