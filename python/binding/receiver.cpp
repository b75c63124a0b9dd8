#include "gpsengine/face/receiver.h"

#include <poll.h>
#include <pybind11/stl.h>

#include <chrono>
#include <mutex>

#include "gpsengine/face/commands.h"
#include "host/network/dial.h"
#include "host/network/rfc2217line.h"
#include "python/binding/binding.h"
#include "python/binding/waits.h"
#include "simulator/simulator.h"

namespace binding {

namespace {

using Clock = std::chrono::steady_clock;

/// A simulated receiver on a pseudo-terminal.
class Simulator {
 public:
  Simulator(const std::string& model, double rate, double speed_up) try {
    simulator::Options options;
    options.model = model;
    options.rate_hz = rate;
    options.start_utc = std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now());
    simulator::PtyRunner::Settings settings;
    settings.speed_up = speed_up;
    settings.garble_at_wrong_rate = false;  // of a rate that is kept for a real one
    runner_ = std::make_unique<simulator::PtyRunner>(simulator::MakeReceiver(options), settings);
    runner_->Start();
  } catch (const std::invalid_argument& error) {
    throw gps::Error(gps::ErrorCode::usage, error.what());
  }
  ~Simulator() {
    if (!process_.IsThis()) (void)runner_.release();  // its thread is not here
  }
  Simulator(const Simulator&) = delete;
  Simulator& operator=(const Simulator&) = delete;

  std::string Port() const { return runner_->PortName(); }
  void HangUp() { runner_->HangUp(); }

 private:
  const Process process_;
  std::unique_ptr<simulator::PtyRunner> runner_;
};

/// None for a device. Throws an Error for an address that cannot be opened.
std::optional<host::Address> AddressOf(const std::string& port) {
  if (!host::IsAddress(port)) return std::nullopt;
  auto address = host::ReadAddress(port, "port=");
  if (address.scheme == host::Address::Scheme::rfc2217) host::CheckRfc2217();
  if (address.scheme == host::Address::Scheme::input) {
    throw gps::Error(gps::ErrorCode::usage, "standard input is read by gpsengine.decode(sys.stdin.buffer)");
  }
  return address;
}

/// A line to the address, which is opened once. An interrupt gives up.
SerialLineFactory LineTo(const host::Address& address) {
  host::Dial dial(address);
  for (pollfd over{dial.Descriptor(), POLLIN, 0}; !dial.IsOver(); CheckSignals()) {
    const py::gil_scoped_release free;
    poll(&over, 1, static_cast<int>(kSlice.count()));
  }
  return [line = std::make_shared<std::unique_ptr<SerialLine>>(dial.Take())] { return std::move(*line); };
}

/// A receiver that is open until it is closed or forgotten.
class Receiver {
 public:
  explicit Receiver(gps::ReceiverOptions options) : port_(options.port), address_(AddressOf(port_)) {
    calls_ = WithoutLock([&] { return gps::commands(options.model); });  // as long as no receiver is in use
    if (address_) options.line = LineTo(*address_);
    receiver_ = Interruptibly(
        [&options](const std::stop_token& stop) { return std::make_shared<gps::Receiver>(options, stop); });
  }
  ~Receiver() { Close(); }
  Receiver(const Receiver&) = delete;
  Receiver& operator=(const Receiver&) = delete;

  /// Ends it, or leaves it to a command that still runs.
  void Close() {
    auto closing = std::exchange(receiver_, nullptr);
    if (!closing) return;
    if (!use_->IsThis()) {  // its threads are not here, so that nothing can be ended
      (void)new auto(std::move(closing));
      (void)use_.release();
      return;
    }
    const py::gil_scoped_release free;
    closing.reset();
    use_.reset();
  }
  bool IsOpen() const { return receiver_ != nullptr; }
  std::shared_ptr<gps::Receiver> Get() const {
    if (!receiver_) throw gps::Error(gps::ErrorCode::usage, "the receiver is closed: open it again");
    use_->Check();
    return receiver_;
  }
  void Command(const std::string& operation, const std::vector<std::string>& words) const {
    if (address_ && !address_->TakesCommands()) throw host::OnlyListenedTo(port_);
    Interruptibly([receiver = Get(), &operation, &words](const std::stop_token& stop) {
      receiver->command(operation, words, stop);
    });
  }
  /// What has come; None once it is closed.
  py::object Drain() const {
    if (!receiver_) return py::none();
    py::list records;
    const auto add = [&](const gps::Record& record) { records.append(ObjectOf(gps::Record(record))); };
    try {
      Get()->drain(add);
    } catch (const gps::Error&) {
      if (records.empty()) throw;  // and else the next time
    }
    return records;
  }
  const std::string& Port() const { return port_; }
  /// 0 where the other end of a connection has set it.
  int Baud() const { return address_ && !address_->HasRate() ? 0 : Get()->baud(); }
  const std::vector<std::string>& Calls() const { return calls_; }

 private:
  const std::string port_;
  const std::optional<host::Address> address_;
  // Before the receiver, since it says whether that may be opened at all. Gone when that is closed.
  std::unique_ptr<const Use> use_ = std::make_unique<Use>();
  std::shared_ptr<gps::Receiver> receiver_;
  std::vector<std::string> calls_;
};

/// Records of one kind of a receiver. Waits in slices, so that the user can interrupt.
class Stream {
 public:
  Stream(const Receiver& receiver, Kind kind, std::optional<double> timeout)
      : kind_(kind), timeout_(timeout), port_(receiver.Port()) {
    if (timeout && !(*timeout >= 0.0)) throw gps::Error(gps::ErrorCode::usage, "a timeout is 0 or more");
    const auto all = std::chrono::duration<double>(timeout.value_or(1.0));
    next_ = NextOf(*receiver.Get(), kind, gps::Wait(std::min<std::chrono::duration<double>>(all, kSlice)));
  }

  py::object Read() {
    process_.Check();
    const auto begun = Clock::now();
    bool silent = false;
    for (;;) {
      auto record = Wait(silent);
      if (record) return ObjectOf(std::move(*record));
      if (!silent) throw py::stop_iteration();
      CheckSignals();
      if (timeout_ && std::chrono::duration<double>(Clock::now() - begun).count() >= *timeout_)
        throw Silence();
    }
  }
  gps::Error Silence() const {
    const auto alternative = kind_ == Kind::records ? std::variant_npos : static_cast<std::size_t>(kind_);
    return gps::Silence(alternative, port_, timeout_.value_or(0.0));
  }
  std::optional<double> Timeout() const { return timeout_; }
  Kind GetKind() const { return kind_; }

 private:
  std::optional<gps::Record> Wait(bool& silent) {
    const py::gil_scoped_release free;
    const std::lock_guard lock(reading_);
    try {
      silent = false;
      return next_();
    } catch (const gps::Error& error) {
      if (error.code() != gps::ErrorCode::silence) throw;
      silent = true;
      return std::nullopt;
    }
  }

  const Process process_;
  const Kind kind_;
  const std::optional<double> timeout_;
  const std::string port_;
  std::mutex reading_;  // one thread at a time
  Next next_;
};

std::unique_ptr<Receiver> OpenReceiver(const std::string& port, const std::string& model, int baud,
                                       double antenna_height, const std::string& record) {
  return std::make_unique<Receiver>(gps::ReceiverOptions{
      .model = model, .port = port, .baud = baud, .antenna_height = antenna_height, .record = record});
}

void DefineStream(py::module_& module) {
  py::class_<Stream>(module, "Stream")
      .def(py::init<const Receiver&, Kind, std::optional<double>>())
      .def("read", &Stream::Read)
      .def("silence", [](const Stream& stream) { throw stream.Silence(); })
      .def_property_readonly("kind", &Stream::GetKind)
      .def_property_readonly("timeout", &Stream::Timeout);
}

}  // namespace

void DefineReceiver(py::module_& module) {
  py::enum_<Kind>(module, "Kind")
      .value("fixes", Kind::fixes)
      .value("satellites", Kind::satellites)
      .value("reports", Kind::reports)
      .value("raw", Kind::raw)
      .value("records", Kind::records);
  py::class_<Simulator>(module, "Simulator")
      .def(py::init<const std::string&, double, double>())
      .def("hang_up", &Simulator::HangUp)
      .def_property_readonly("port", &Simulator::Port);
  py::class_<Receiver>(module, "Receiver")
      .def(py::init(&OpenReceiver))
      .def("close", &Receiver::Close)
      .def("command", &Receiver::Command)
      .def("drain", &Receiver::Drain)
      .def_property_readonly("port", &Receiver::Port)
      .def_property_readonly("is_open", &Receiver::IsOpen)
      .def_property_readonly("calls", &Receiver::Calls)
      .def_property_readonly("descriptor", [](const Receiver& r) { return r.Get()->descriptor(); })
      .def_property_readonly("model", [](const Receiver& r) { return r.Get()->model(); })
      .def_property_readonly("baud", &Receiver::Baud)
      .def_property_readonly("lost", [](const Receiver& r) { return r.Get()->lost(); })
      .def_property_readonly("understood", [](const Receiver& r) { return r.Get()->understood(); });
  DefineStream(module);
  module.def("models", &simulator::Models);
}

}  // namespace binding
