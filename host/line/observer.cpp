#include "host/line/observer.h"

#include <mutex>
#include <string_view>
#include <utility>

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
    const int count = line_->Read(data, most, ms);
    if (count < 0) {
      state_->End();
    } else {
      state_->Add({static_cast<const char*>(data), static_cast<std::size_t>(count)}, count == most);
    }
    return count;
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
  const std::unique_ptr<SerialLine> line_;
  const std::shared_ptr<State> state_;
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

bool LineObserver::IsLost() const {
  const std::lock_guard lock(state_->mutex);
  return state_->lost;
}

}  // namespace host
