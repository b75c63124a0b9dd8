#include "host/network/dial.h"

#include <exception>
#include <mutex>
#include <optional>
#include <thread>
#include <utility>

#include "host/network/connect.h"
#include "host/network/netline.h"
#include "host/network/rfc2217line.h"
#include "host/run/event.h"
#include "host/run/failure.h"

namespace host {

namespace {

std::unique_ptr<SerialLine> OpenLine(const Address& address, const Event& given_up) {
  UniqueDescriptor connection = Connect(address, given_up);
  if (address.scheme == Address::Scheme::rfc2217)
    return OpenRfc2217Line(std::move(connection), address, given_up);
  return OpenNetLine(std::move(connection), address);
}

}  // namespace

struct Dial::State {
  explicit State(Address to) : address(std::move(to)) {}

  const Address address;
  Event over, given_up;
  std::mutex mutex;
  std::unique_ptr<SerialLine> line;
  std::optional<Failure> failure;

  void Run() {
    std::unique_ptr<SerialLine> opened;
    std::optional<Failure> failed;
    try {
      opened = OpenLine(address, given_up);
    } catch (const Failure& reason) {
      failed = reason;
    } catch (const std::exception& reason) {
      failed.emplace(ExitCode::failed, reason.what());
    }
    const std::lock_guard lock(mutex);
    line = std::move(opened);
    failure = std::move(failed);
    over.Set();
  }
};

Dial::Dial(const Address& address) : state_(std::make_shared<State>(address)) {
  std::thread([state = state_] { state->Run(); }).detach();
}

Dial::~Dial() {
  state_->given_up.Set();
}

int Dial::Descriptor() const {
  return state_->over.Descriptor();
}

bool Dial::IsOver() const {
  const std::lock_guard lock(state_->mutex);
  return state_->line != nullptr || state_->failure;
}

std::unique_ptr<SerialLine> Dial::Take() {
  const std::lock_guard lock(state_->mutex);
  if (state_->failure) throw Failure(*state_->failure);
  return std::move(state_->line);
}

}  // namespace host
