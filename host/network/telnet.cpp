#include "host/network/telnet.h"

#include <fcntl.h>
#include <gensio/gensio.h>
#include <gensio/gensio_unix.h>
#include <gensio/sergensio.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <mutex>
#include <utility>
#include <vector>

#include "host/run/failure.h"

// The headers for a gensio of one's own are written for C: they have a parameter of that name.
#ifdef __clang__
#pragma clang diagnostic ignored "-Wkeyword-macro"
#endif
#define typename type_name
extern "C" {
#include <gensio/gensio_base.h>
#include <gensio/gensio_class.h>
#include <gensio/gensio_ll_fd.h>
}
#undef typename

namespace host {

namespace {

constexpr std::size_t kPiece = 4096;
// So much is kept for a reader that does not come; the rest waits at the other side.
constexpr std::size_t kMostInput = 65536;
// More than one call of a step has to do, unless the other side never pauses.
constexpr int kMostServices = 64;

// No thread is ever asleep in gensio, so that none has to be woken. It may send this signal to the thread
// that calls it all the same, and nothing comes of it.
constexpr int kWakeSignal = SIGURG;

/// gensio's functions of the system, one set for each connection, so that none runs what belongs to another.
/// gensio keeps parts of the first one for good: no set is ever freed, but used again.
class Functions {
 public:
  static gensio_os_funcs* Take() {
    Functions& all = All();
    const std::lock_guard lock(all.mutex_);
    gensio_os_funcs* functions = nullptr;
    if (all.idle_.empty())
      return gensio_unix_funcs_alloc(nullptr, kWakeSignal, &functions) == 0 ? functions : nullptr;
    functions = all.idle_.back();
    all.idle_.pop_back();
    return functions;
  }
  static void GiveBack(gensio_os_funcs* functions) {
    Functions& all = All();
    const std::lock_guard lock(all.mutex_);
    all.idle_.push_back(functions);
  }

 private:
  static Functions& All() {
    static Functions* const all = new Functions;
    return *all;
  }

  std::mutex mutex_;
  std::vector<gensio_os_funcs*> idle_;
};

}  // namespace

/// What gensio calls back. Its user data is the object.
struct Telnet::Callbacks {
  static Telnet& Of(void* data) { return *static_cast<Telnet*>(data); }

  static int Open(void* data, gensio_iod** iod) {
    Telnet& telnet = Of(data);
    const int copy = fcntl(telnet.socket_.Get(), F_DUPFD_CLOEXEC, 0);
    if (copy < 0) return GE_NOMEM;
    const int error = telnet.functions_->add_iod(telnet.functions_, GENSIO_IOD_PIPE, copy, iod);
    if (error != 0) close(copy);
    return error;
  }
  static void Free(void*) {}
  static int Write(void* data, gensio_iod*, gensiods* count, const gensio_sg* pieces, gensiods length,
                   const char* const*) {
    Telnet& telnet = Of(data);
    std::string bytes;
    for (gensiods i = 0; i < length; ++i)
      bytes.append(static_cast<const char*>(pieces[i].buf), pieces[i].buflen);
    const ssize_t sent = send(telnet.socket_.Get(), bytes.data(), bytes.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
    if (sent < 0 && errno != EAGAIN && errno != EINTR) return GE_REMCLOSE;
    *count = sent < 0 ? 0 : static_cast<gensiods>(sent);
    telnet.is_blocked_ = *count < bytes.size();
    return 0;
  }

  static int OnEvent(gensio*, void* data, int event, int error, unsigned char* bytes, gensiods* length,
                     const char* const*) {
    Telnet& telnet = Of(data);
    if (event != GENSIO_EVENT_READ) return GE_NOTSUP;
    if (error == 0 && telnet.input_.size() < kMostInput) {
      telnet.input_.append(reinterpret_cast<const char*>(bytes), *length);
      return 0;
    }
    gensio_set_read_callback_enable(telnet.io_, false);
    if (error == 0) {
      telnet.is_full_ = true;
      *length = 0;
    } else {
      telnet.lost_ = true;  // and there is no length
    }
    return 0;
  }
  static void OnOpen(gensio*, int error, void* data) {
    (error == 0 ? Of(data).open_ : Of(data).lost_) = true;
  }
  static void OnClosed(gensio*, void* data) { Of(data).closed_ = true; }
  static void OnAnswer(sergensio*, int, unsigned, void* data) { --Of(data).unanswered_; }
  static void OnBaud(sergensio* serial, int error, unsigned value, void* data) {
    if (error == 0) Of(data).baud_ = value;
    OnAnswer(serial, error, value, data);
  }

  static gensio* Make(Telnet& telnet) {
    static constexpr gensio_fd_ll_ops kConnection = {.sub_open = Open,
                                                     .check_open = nullptr,
                                                     .retry_open = nullptr,
                                                     .check_close = nullptr,
                                                     .free = Free,
                                                     .control = nullptr,
                                                     .read_ready = nullptr,
                                                     .write_ready = nullptr,
                                                     .except_ready = nullptr,
                                                     .write = Write};
    telnet.functions_ = Functions::Take();
    if (telnet.functions_ == nullptr) return nullptr;
    gensio_ll* const link =
        fd_gensio_ll_alloc(telnet.functions_, nullptr, &kConnection, &telnet, kPiece, false);
    gensio* const child = link == nullptr ? nullptr
                                          : base_gensio_alloc(telnet.functions_, link, nullptr, nullptr,
                                                              "connection", nullptr, nullptr);
    const char* const arguments[] = {"rfc2217=true", nullptr};
    gensio* io = nullptr;
    if (child == nullptr ||
        gensio_filter_alloc("telnet", child, arguments, telnet.functions_, OnEvent, &telnet, &io) != 0)
      return nullptr;
    return io;
  }
};

Telnet::Telnet(const UniqueDescriptor& connection)
    : socket_(fcntl(connection.Get(), F_DUPFD_CLOEXEC, 0)), io_(Callbacks::Make(*this)) {
  if (io_ == nullptr || gensio_open(io_, Callbacks::OnOpen, this) != 0)
    throw Failure(ExitCode::failed, "gensio cannot speak telnet: is its package complete?");
}

Telnet::~Telnet() {
  closed_ = gensio_close(io_, Callbacks::OnClosed, this) != 0;  // it has never been open
  for (int i = 0; i < kMostServices && !closed_; ++i) Step();
  gensio_free(io_);
  Step();
  if (closed_) Functions::GiveBack(functions_);  // or else nothing of it may ever run again
}

void Telnet::Step() {
  if (is_full_ && input_.empty()) {
    is_full_ = false;
    gensio_set_read_callback_enable(io_, true);
  }
  gensio_time none{0, 0};
  for (int i = 0; i < kMostServices && gensio_os_funcs_service(functions_, &none) == 0; ++i) none = {0, 0};
  if (!open_ || serial_ != nullptr) return;
  serial_ = gensio_to_sergensio(io_);
  gensio_set_read_callback_enable(io_, true);
}

short Telnet::Events() const {
  return static_cast<short>((is_full_ ? 0 : POLLIN) | (is_blocked_ ? POLLOUT : 0));
}

std::size_t Telnet::Write(std::string_view bytes) {
  gensiods count = 0;
  const int error = gensio_write(io_, &count, bytes.data(), bytes.size(), nullptr);
  lost_ = lost_ || error != 0;
  return error == 0 ? count : 0;
}

bool Telnet::Ask(Setting setting, unsigned value) {
  using Request = int (*)(sergensio*, unsigned, sergensio_done, void*);
  static constexpr Request kRequests[] = {sergensio_baud, sergensio_datasize, sergensio_parity,
                                          sergensio_stopbits, sergensio_flowcontrol};
  if (serial_ == nullptr) return false;
  ++unanswered_;
  const auto done = setting == Setting::baud ? Callbacks::OnBaud : Callbacks::OnAnswer;
  const bool asked = kRequests[static_cast<int>(setting)](serial_, value, done, this) == 0;
  if (!asked) --unanswered_;
  return asked;
}

void Telnet::SetBreak(bool on) {
  sergensio_sbreak(serial_, on ? SERGENSIO_BREAK_ON : SERGENSIO_BREAK_OFF, nullptr, nullptr);
}

void Telnet::Flush() {
  sergensio_flush(serial_, SERGENSIO_FLUSH_RCV_BUFFER);
}

}  // namespace host
