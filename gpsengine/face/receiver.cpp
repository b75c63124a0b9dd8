#include "gpsengine/face/receiver.h"

#include <mutex>
#include <system_error>
#include <utility>

#include "gpsengine/face/engineuse.h"
#include "gpsengine/face/exchange.h"
#include "gpsengine/face/guardedline.h"
#include "gpsengine/face/inbox.h"
#include "gpsengine/face/messagewindow.h"
#include "gpsengine/face/models.h"
#include "gpsengine/face/port.h"
#include "gpsengine/face/stopclock.h"
#include "gpsengine/face/tally.h"
#include "gpsengine/platform/event.h"
#include "gpsengine/platform/file.h"
#include "gpsengine/platform/messagebox.h"

namespace gps {

namespace {

/// An event of the library's.
class Signal {
 public:
  Signal() : handle_(CreateEventW(true, false)) {}
  ~Signal() { CloseHandle(handle_); }
  Signal(const Signal&) = delete;
  Signal& operator=(const Signal&) = delete;
  void Set() const { SetEvent(handle_); }
  bool IsSet() const { return WaitForSingleObject(handle_, 0) == WAIT_OBJECT_0; }
  HANDLE Handle() const { return handle_; }

 private:
  const HANDLE handle_;
};

/// A line that tells of what is written, too.
class WatchedLine : public GuardedLine {
 public:
  WatchedLine(std::unique_ptr<SerialLine> line, Watcher watcher, std::shared_ptr<Exchange> exchange)
      : GuardedLine(std::move(line), std::move(watcher)), exchange_(std::move(exchange)) {}

  int Write(const void* data, int length, DWORD ms) override {
    exchange_->OnWritten({static_cast<const char*>(data), static_cast<std::size_t>(length)});
    return GuardedLine::Write(data, length, ms);
  }

 private:
  const std::shared_ptr<Exchange> exchange_;
};

std::string NameOfLine(const ReceiverOptions& options) {
  return options.port.empty() ? "the line" : options.port;
}

}  // namespace

/// The engine of a receiver, and the thread that takes what it posts. Calls of the engine are made one at a
/// time, whoever makes them.
class Receiver::Live {
 public:
  Live(ReceiverOptions options, const std::stop_token& stop);
  ~Live();

  void Command(const std::string& name, const std::vector<std::string>& words, const std::stop_token& stop);

  const std::shared_ptr<Inbox>& GetInbox() const { return inbox_; }
  std::string Model() const { return receiver_.GetName().ToUtf8(); }
  int Baud() const { return receiver_.GetCurrentBaudrate(); }
  long long Understood() const { return TallyOf(engine_).Good(); }

 private:
  void MapPort();
  void SetUp();
  void Start(const std::stop_token& stop);
  void Pump();
  void End();
  bool IsGone() const { return gone_->IsSet(); }
  Error Lost() const;
  Error NotOpened() const;

  const EngineUse use_;
  const ReceiverOptions options_;
  const std::shared_ptr<Inbox> inbox_;
  // With the line, which ends when the library is done with it.
  const std::shared_ptr<Signal> gone_ = std::make_shared<Signal>();
  const Signal over_, ready_;
  SerialLineFactory line_before_;
  CGPSEngine engine_;
  CGPSReceiver& receiver_;
  const std::shared_ptr<Exchange> exchange_ =
      std::make_shared<Exchange>(receiver_);  // likewise with the line
  std::mutex calls_;                          // of the engine
  std::unique_ptr<CWinThread> pump_;
};

Receiver::Live::Live(ReceiverOptions options, const std::stop_token& stop)
    : options_(std::move(options)),
      inbox_(std::make_shared<Inbox>(NameOfLine(options_))),
      receiver_(*engine_.FindReceiver(FindModel(options_.model).GetName())) {
  if (options_.port.empty() && !options_.line) {
    throw Error(ErrorCode::usage, "no port is named, and no line in its place: .port = \"/dev/ttyUSB0\"");
  }
  OffersOf(FindModel(options_.model));  // to be known as long as no engine runs
  SetUp();
  MapPort();
  const auto pump = [](void* live) -> unsigned { return static_cast<Live*>(live)->Pump(), 0; };
  pump_ = AfxBeginThread(pump, this);
  if (pump_ == nullptr) throw Error(ErrorCode::failed, "no thread can be started");
  WaitForSingleObject(ready_.Handle(), INFINITE);
  SetMessageBoxHandler([inbox = inbox_](const CString& text, BoxKind) {
    inbox->Put(Report{"message", "message", text.ToUtf8()});
  });
  try {
    Start(stop);
  } catch (...) {
    End();
    throw;
  }
}

Receiver::Live::~Live() {
  End();
}

void Receiver::Live::SetUp() {
  engine_.InitReceivers();
  if (options_.baud > 0) receiver_.UseBaudrate(options_.baud);
  receiver_.SetupReceiver(kPort, 0, options_.antenna_height, "", false);
  engine_.SetReceiver(&receiver_);
  engine_.m_bAttachRawData = receiver_.HasRawData();
  if (options_.record.empty()) return;
  engine_.m_strRecordFile = CString::FromUtf8(options_.record);
  engine_.m_bRecordRaw = true;
}

void Receiver::Live::MapPort() {
  SerialLineFactory open = options_.line;
  if (!open) open = [port = options_.port] { return OpenSerialDevice(CString::FromUtf8(port)); };
  const auto watched = [open, gone = gone_, exchange = exchange_]() -> std::unique_ptr<SerialLine> {
    auto line = open();
    if (line == nullptr) return nullptr;
    const auto on_bytes = [exchange](std::string_view bytes, bool) { exchange->OnRead(bytes); };
    const auto on_gone = [gone, exchange] {
      gone->Set();
      exchange->End();
    };
    return std::make_unique<WatchedLine>(std::move(line), GuardedLine::Watcher{on_bytes, on_gone}, exchange);
  };
  line_before_ = MapComPort(kPort, watched);
}

void Receiver::Live::Start(const std::stop_token& stop) {
  const std::lock_guard lock(calls_);
  const StopClock clock(stop);
  if (!engine_.Start()) throw NotOpened();
  if (stop.stop_requested()) throw Error(ErrorCode::stopped, "stopped while the receiver was being set up");
}

Error Receiver::Live::NotOpened() const {
  if (engine_.GetLastError() != GPS_ENGINE_INIT_FAILED) {
    return Error(ErrorCode::failed, engine_.GetLastErrorString().ToUtf8());
  }
  const int reason = static_cast<int>(GetLastError());
  return Error(ErrorCode::port_closed,
               "cannot open " + NameOfLine(options_) +
                   (reason != 0 ? ": " + std::generic_category().message(reason) : std::string()));
}

// The window belongs to this thread.
void Receiver::Live::Pump() {
  MessageWindow window(engine_, [this](Record&& record) {
    const auto* const report = std::get_if<Report>(&record);
    const bool is_answer = report != nullptr && report->key != "ack";
    inbox_->Put(std::move(record));
    if (is_answer) exchange_->OnReport();
  });
  window.Open();
  ready_.Set();
  const HANDLE ends[] = {over_.Handle(), gone_->Handle()};
  while (MsgWaitForMultipleObjects(2, ends, INFINITE) == WAIT_OBJECT_0 + 2) {
    window.Drain();
    inbox_->SetLostMessages(GetLostMessages());
  }
  window.Drain();
  window.Finish();
  if (!IsGone()) return inbox_->End({});
  inbox_->End(Lost());
}

Error Receiver::Live::Lost() const {
  return Error(ErrorCode::port_lost,
               "the port " + NameOfLine(options_) +
                   " was lost: it was unplugged, or the other side hung up. Plug it in again and start once "
                   "more");
}

void Receiver::Live::End() {
  if (pump_ == nullptr) return;
  const std::lock_guard lock(calls_);
  engine_.Stop();
  exchange_->End();
  over_.Set();
  pump_->Join();
  pump_.reset();
  SetMessageBoxHandler({});
  MapComPort(kPort, line_before_);
}

void Receiver::Live::Command(const std::string& name, const std::vector<std::string>& words,
                             const std::stop_token& stop) {
  const std::lock_guard lock(calls_);
  const Operation& operation = FindOperation(name);
  Arguments arguments = ArgumentsOf(words);
  const bool awaits = TakeWait(operation, arguments);
  const Action action = PrepareOffered(operation, arguments, receiver_);
  if (operation.kind == Operation::Kind::starts || operation.kind == Operation::Kind::ends) {
    throw Error(ErrorCode::refused,
                name + " is what making a gps::Receiver and letting it go do by themselves");
  }
  if (IsGone()) throw Lost();
  exchange_->Begin();
  const StopClock clock(stop);
  const Result result = action(receiver_);
  if (!stop.stop_requested()) CheckResult(operation, arguments, result);
  if (awaits) exchange_->Await(operation, Model(), stop);
  if (stop.stop_requested()) {
    throw Error(ErrorCode::stopped, name + " was stopped; give the command again and let it end");
  }
  if (awaits && IsGone()) throw Lost();
}

Receiver::Receiver(ReceiverOptions options, std::stop_token stop)
    : Receiver(std::make_unique<Live>(std::move(options), stop)) {}

Receiver::Receiver(std::unique_ptr<Live> live) : Source(live->GetInbox()), live_(std::move(live)) {}

Receiver::~Receiver() = default;

void Receiver::command(const std::string& operation, const std::vector<std::string>& arguments,
                       std::stop_token stop) {
  live_->Command(operation, arguments, stop);
}

int Receiver::descriptor() const {
  return live_->GetInbox()->Descriptor();
}

void Receiver::drain(const std::function<void(const Record&)>& call) {
  for (Record record; live_->GetInbox()->TakeNow(record);) call(record);
}

std::string Receiver::model() const {
  return live_->Model();
}

int Receiver::baud() const {
  return live_->Baud();
}

unsigned long long Receiver::lost() const {
  return live_->GetInbox()->Lost();
}

long long Receiver::understood() const {
  return live_->Understood();
}

}  // namespace gps
