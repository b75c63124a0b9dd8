#include <pybind11/stl.h>

#include <array>
#include <chrono>
#include <deque>
#include <exception>
#include <memory>
#include <mutex>

#include "gpsengine/face/decode.h"
#include "python/binding/arrays.h"
#include "python/binding/binding.h"
#include "python/binding/waits.h"

namespace binding {

namespace {

/// An object with read(), as a stream. What that raises waits here, since a stream lets nothing through.
class ObjectBuffer : public std::streambuf {
 public:
  explicit ObjectBuffer(py::object source) : source_(std::move(source)) {}
  ~ObjectBuffer() override {
    const py::gil_scoped_acquire locked;
    piece_ = {};
    source_ = {};
  }

  void ThrowRaised() {
    if (raised_) std::rethrow_exception(std::exchange(raised_, nullptr));
  }

 protected:
  int_type underflow() override {
    const py::gil_scoped_acquire locked;
    try {
      if (raised_) return traits_type::eof();
      CheckSignals();
      const py::object piece = source_.attr("read")(kPiece);
      if (!py::isinstance<py::bytes>(piece)) {
        throw gps::Error(gps::ErrorCode::usage, "read() gave no bytes: open the file with mode \"rb\"");
      }
      piece_ = piece.cast<std::string>();
      if (piece_.empty()) return traits_type::eof();
      setg(piece_.data(), piece_.data(), piece_.data() + piece_.size());
      return traits_type::to_int_type(*gptr());
    } catch (...) {
      raised_ = std::current_exception();
      return traits_type::eof();
    }
  }
  /// What one read() gives is enough: a pipe gives what has come.
  std::streamsize xsgetn(char* to, std::streamsize most) override {
    if (gptr() == egptr() && underflow() == traits_type::eof()) return 0;
    const std::streamsize size = std::min<std::streamsize>(most, egptr() - gptr());
    std::copy_n(gptr(), size, to);
    gbump(static_cast<int>(size));
    return size;
  }

 private:
  static constexpr int kPiece = 65'536;

  py::object source_;
  std::string piece_;
  std::exception_ptr raised_;
};

gps::DecodeOptions OptionsOf(const std::string& model, double antenna_height,
                             const std::optional<std::array<int, 3>>& date, double speed) {
  gps::DecodeOptions options{.model = model, .antenna_height = antenna_height, .date = {}, .speed = speed};
  if (date) {
    const auto& [year, month, day] = *date;
    options.date = std::chrono::year(year) / month / day;
  }
  return options;
}

/// A recording that is decoded as its records are asked for. It lets go of the engine at its end.
class Recording {
 public:
  Recording(const py::object& source, const gps::DecodeOptions& options) : is_paced_(options.speed > 0.0) {
    if (py::isinstance<py::str>(source)) {
      // A file keeps nobody waiting, so that many records may be decoded at once.
      if (!is_paced_) batch_ = kBatch;
      const auto path = source.cast<std::string>();
      recording_.emplace(WithoutLock([&] { return gps::decode(path, options); }));
      return;
    }
    object_ = std::make_unique<ObjectBuffer>(source);
    stream_ = std::make_unique<std::istream>(object_.get());
    recording_.emplace(WithoutLock([&] { return gps::decode(*stream_, options); }));
    object_->ThrowRaised();
  }
  ~Recording() { Close(); }
  Recording(const Recording&) = delete;
  Recording& operator=(const Recording&) = delete;

  void Want(Kind kind) {
    process_.Check();
    const py::gil_scoped_release free;
    const std::lock_guard lock(mutex_);
    if (recording_ && !wanted_[Index(kind)]) NextOf(*recording_, kind, {});
    wanted_[Index(kind)] = true;
  }
  py::object Read(Kind kind) {
    process_.Check();
    std::optional<gps::Record> record;
    if (const std::unique_lock lock(mutex_, std::try_to_lock); lock) record = Take(kind);
    if (!record) {
      Decode([&](const std::stop_token& stop) {
        if (ready_[Index(kind)].empty()) Fetch(kind, stop);
        record = Take(kind);
      });
    }
    if (!record) throw py::stop_iteration();
    return ObjectOf(std::move(*record));
  }
  py::object ToNumpy() {
    Want(Kind::fixes);
    Rows rows;
    Decode([&](const std::stop_token& stop) {
      while (const auto record = Take(Kind::fixes)) rows.Add(std::get<gps::Fix>(*record));
      if (!recording_) return;
      for (const gps::Fix& fix : recording_->fixes(stop)) rows.Add(fix);
      if (!stop.stop_requested()) KeepRest();
    });
    return std::move(rows).ToArray();
  }
  void Close() {
    const py::gil_scoped_release free;
    const std::lock_guard lock(mutex_);
    End();
  }
  long long Understood() const { return recording_ ? recording_->understood() : understood_; }

 private:
  static constexpr std::size_t kBatch = 1024;

  static std::size_t Index(Kind kind) { return static_cast<std::size_t>(kind); }
  /// An object is read on the calling thread, where it is interrupted by itself. What else may take long is
  /// done on a thread beside it.
  template <class Call>
  void Decode(Call call) {
    const auto locked = [&](const std::stop_token& stop) {
      const std::lock_guard lock(mutex_);
      call(stop);
    };
    if (!object_ || is_paced_) {
      Interruptibly(locked);
    } else {
      WithoutLock([&] { locked({}); });
    }
    if (object_) object_->ThrowRaised();
  }
  std::optional<gps::Record> Take(Kind kind) {
    auto& ready = ready_[Index(kind)];
    if (ready.empty()) return std::nullopt;
    std::optional<gps::Record> record(std::move(ready.front()));
    ready.pop_front();
    return record;
  }
  /// Makes some records of the kind ready.
  void Fetch(Kind kind, const std::stop_token& stop) {
    if (!recording_) return;
    auto& ready = ready_[Index(kind)];
    const Next next = NextOf(*recording_, kind, stop);
    while (ready.size() < batch_) {
      auto record = next();
      if (record) {
        ready.push_back(std::move(*record));
      } else {
        if (!stop.stop_requested()) KeepRest();
        break;
      }
    }
  }
  /// At the end of the bytes: keeps what others have not read yet, and lets the engine go.
  void KeepRest() {
    for (std::size_t kind = 0; kind < kKinds; ++kind) {
      if (!wanted_[kind]) continue;
      const Next next = NextOf(*recording_, static_cast<Kind>(kind), {});
      while (auto record = next()) ready_[kind].push_back(std::move(*record));
    }
    End();
  }
  void End() {
    if (!recording_) return;
    understood_ = recording_->understood();
    recording_.reset();
    use_.reset();
  }

  const Process process_;
  std::unique_ptr<const Use> use_ = std::make_unique<Use>();  // until it is at its end
  const bool is_paced_;
  std::unique_ptr<ObjectBuffer> object_;
  std::unique_ptr<std::istream> stream_;
  std::mutex mutex_;  // for what follows; never waited for with the interpreter's lock
  std::optional<gps::Recording> recording_;
  std::array<std::deque<gps::Record>, kKinds> ready_;
  std::array<bool, kKinds> wanted_{};
  std::size_t batch_ = 1;
  long long understood_ = 0;
};

/// The records of one kind of a recording.
struct Reading {
  std::shared_ptr<Recording> recording;
  Kind kind;
};

std::shared_ptr<Recording> OpenRecording(const py::object& source, const std::string& model,
                                         double antenna_height, const std::optional<std::array<int, 3>>& date,
                                         double speed) {
  return std::make_shared<Recording>(source, OptionsOf(model, antenna_height, date, speed));
}

}  // namespace

void DefineRecording(py::module_& module) {
  py::class_<Reading>(module, "Reading")
      .def("__iter__", [](py::object self) { return self; })
      .def("__next__", [](const Reading& reading) { return reading.recording->Read(reading.kind); });
  const auto read = [](std::shared_ptr<Recording> recording, Kind kind) {
    recording->Want(kind);
    return Reading{std::move(recording), kind};
  };
  py::class_<Recording, std::shared_ptr<Recording>>(module, "Recording")
      .def(py::init(&OpenRecording))
      .def("read", read)
      .def("to_numpy", &Recording::ToNumpy)
      .def("close", &Recording::Close)
      .def_property_readonly("understood", &Recording::Understood);
}

}  // namespace binding
