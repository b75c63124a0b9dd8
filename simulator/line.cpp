#include "simulator/line.h"

#include <fcntl.h>
#include <poll.h>
#include <stdlib.h>
#include <sys/eventfd.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <iterator>
#include <system_error>
#include <utility>

#include "simulator/linespeed.h"

namespace simulator {
namespace {

using SteadyClock = std::chrono::steady_clock;

constexpr double kLongestStep = 60;  // simulated seconds

void Close(int& descriptor) {
  if (descriptor >= 0) close(std::exchange(descriptor, -1));
}

}  // namespace

PtyRunner::PtyRunner(std::unique_ptr<Receiver> receiver) : PtyRunner(std::move(receiver), Settings()) {}

PtyRunner::PtyRunner(std::unique_ptr<Receiver> receiver, Settings settings)
    : receiver_(std::move(receiver)), settings_(std::move(settings)) {
  char name[64] = "";
  master_ = posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
  bool good = master_ >= 0 && grantpt(master_) == 0 && unlockpt(master_) == 0 &&
              ptsname_r(master_, name, sizeof name) == 0;
  // The slave side stays open here, so that neither the line nor its settings go when a peer closes it.
  good = good && (slave_ = open(name, O_RDWR | O_NOCTTY | O_CLOEXEC)) >= 0 &&
         MakeRaw(slave_, receiver_->Baud()) && (wake_ = eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC)) >= 0;
  if (!good) {
    const int error = errno;
    HangUp();
    throw std::system_error(error, std::generic_category(), "cannot open a pseudo-terminal");
  }
  port_name_ = name;
  receiver_->SetPaced(settings_.paced);
}

PtyRunner::~PtyRunner() {
  HangUp();
}

void PtyRunner::Start() {
  if (thread_.joinable() || master_ < 0) return;
  stopping_ = false;
  thread_ = std::thread(&PtyRunner::Run, this);
}

void PtyRunner::Stop() {
  if (!thread_.joinable()) return;
  stopping_ = true;
  const std::uint64_t one = 1;
  [[maybe_unused]] const auto written = write(wake_, &one, sizeof one);
  thread_.join();
  std::uint64_t count = 0;
  [[maybe_unused]] const auto taken = read(wake_, &count, sizeof count);
}

void PtyRunner::HangUp() {
  Stop();
  Close(slave_);
  Close(master_);
  Close(wake_);
}

std::vector<std::string> PtyRunner::TakeComplaints() {
  const std::lock_guard lock(mutex_);
  return std::exchange(complaints_, {});
}

void PtyRunner::Run() {
  auto last = SteadyClock::now();
  while (!stopping_) {
    const double wait = std::min(receiver_->NextOutputIn() / settings_.speed_up, 0.5);
    pollfd descriptors[] = {{master_, POLLIN, 0}, {wake_, POLLIN, 0}};
    poll(descriptors, std::size(descriptors), static_cast<int>(std::ceil(wait * 1000)));
    if (stopping_) return;
    // A peer's exclusive use would outlast the peer, since the line never closes.
    ioctl(slave_, TIOCNXCL);

    const auto now = SteadyClock::now();
    const std::chrono::duration<double> elapsed = now - std::exchange(last, now);
    // A speed-up that the machine does not keep up with makes simulated time late, not the pieces longer.
    const std::string sent = receiver_->Advance(std::min(elapsed.count() * settings_.speed_up, kLongestStep));
    if ((descriptors[0].revents & POLLIN) != 0) Read();
    Write(sent + receiver_->Advance(0));
    PassComplaints();
  }
}

// The rate of the peer if it is not the receiver's and shall tell, else 0.
int PtyRunner::WrongRate() const {
  const int rate = settings_.garble_at_wrong_rate ? LineSpeed(master_) : 0;
  return rate == receiver_->Baud() ? 0 : rate;
}

void PtyRunner::Read() {
  char buffer[4096];
  const auto count = read(master_, buffer, sizeof buffer);
  if (count <= 0) return;
  const std::string_view bytes(buffer, static_cast<std::size_t>(count));
  const int rate = WrongRate();
  receiver_->Receive(rate > 0 ? HeardAt(bytes, rate, receiver_->Baud()) : std::string(bytes));
}

void PtyRunner::Write(const std::string& bytes) {
  const int rate = WrongRate();
  const std::string line = rate > 0 ? HeardAt(bytes, receiver_->Baud(), rate) : bytes;
  std::string_view rest = line;
  while (!rest.empty()) {
    const auto count = write(master_, rest.data(), rest.size());
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return;  // full: what finds no place is lost
    rest.remove_prefix(static_cast<std::size_t>(count));
  }
}

void PtyRunner::PassComplaints() {
  for (std::string& complaint : receiver_->TakeComplaints()) {
    if (settings_.on_complaint) {
      settings_.on_complaint(complaint);
      continue;
    }
    const std::lock_guard lock(mutex_);
    complaints_.push_back(std::move(complaint));
  }
}

}  // namespace simulator
