#include "host/line/observer.h"

#include <algorithm>
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
  std::mutex write_mutex;
  SerialLine* line = nullptr;  // that is open; behind the mutex of writes

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
      : line_(std::move(line)), state_(std::move(state)) {
    SetLine(nullptr, line_.get());
  }
  ~ObservedLine() override { SetLine(line_.get(), nullptr); }
  ObservedLine(const ObservedLine&) = delete;
  ObservedLine& operator=(const ObservedLine&) = delete;

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
  int Write(const void* data, int length, DWORD ms) override {
    const std::lock_guard lock(state_->write_mutex);
    return line_->Write(data, length, ms);
  }
  void Cancel() override { line_->Cancel(); }
  void WakeReader() override { line_->WakeReader(); }
  bool PurgeInput() override { return line_->PurgeInput(); }
  int BytesWaiting(DWORD& errors) override { return line_->BytesWaiting(errors); }
  bool SetBreak(bool on) override { return line_->SetBreak(on); }

 private:
  static constexpr int kLeastBlock = 128;

  /// A line may end behind the opening of the next one.
  void SetLine(const SerialLine* from, SerialLine* to) const {
    const std::lock_guard lock(state_->write_mutex);
    if (from == nullptr || state_->line == from) state_->line = to;
  }

  const std::unique_ptr<SerialLine> line_;
  const std::shared_ptr<State> state_;
  // The reader thread's.
  BlockGuard guard_;
  std::string held_;
};

}  // namespace

LineObserver::LineObserver() : state_(std::make_shared<State>()) {}

SerialLineFactory LineObserver::Opener(const std::string& device) const {
  return [state = state_, device]() -> std::unique_ptr<SerialLine> {
    auto line = OpenSerialDevice(CString::FromUtf8(device));
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

std::size_t LineObserver::Write(std::string_view bytes) const {
  constexpr DWORD kStalled = 200;  // so long does a command wait for a line that takes nothing
  const std::lock_guard lock(state_->write_mutex);
  if (state_->line == nullptr) return 0;
  const int written = state_->line->Write(bytes.data(), static_cast<int>(bytes.size()), kStalled);
  return static_cast<std::size_t>(std::max(written, 0));
}

bool LineObserver::IsLost() const {
  const std::lock_guard lock(state_->mutex);
  return state_->lost;
}

}  // namespace host
