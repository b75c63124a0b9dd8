#include "host/server/gpsdclient.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

#include <cerrno>
#include <utility>

namespace host {

namespace {

// What waits in the kernel comes on top of the queue, and would be megabytes if the kernel had its way.
constexpr int kKernelBuffer = 64 * 1024;

bool MayTryAgain() {
  return errno == EAGAIN || errno == EWOULDBLOCK || errno == EINTR;
}

}  // namespace

GpsdClient::GpsdClient(UniqueDescriptor socket, std::string peer, std::size_t longest_request,
                       std::size_t queue, std::chrono::milliseconds stall)
    : socket_(std::move(socket)),
      peer_(std::move(peer)),
      queue_limit_(queue),
      stall_limit_(stall),
      reader_(longest_request) {
  const int yes = 1;
  setsockopt(Descriptor(), IPPROTO_TCP, TCP_NODELAY, &yes, sizeof yes);
  setsockopt(Descriptor(), SOL_SOCKET, SO_SNDBUF, &kKernelBuffer, sizeof kKernelBuffer);
}

std::string_view GpsdClient::Receive(char* space, std::size_t size) {
  const ssize_t count = recv(Descriptor(), space, size, 0);
  if (count > 0) return {space, static_cast<std::size_t>(count)};
  if (count == 0 || !MayTryAgain()) gone_ = true;
  return {};
}

void GpsdClient::Send(const GpsdPiece& piece) {
  MakeRoom(piece->size());
  if (queued_ + piece->size() > queue_limit_) {
    ++dropped_;
    return;
  }
  if (queue_.empty()) stalled_.Set(stall_limit_);
  queue_.push_back(piece);
  queued_ += piece->size();
}

// The first piece stays if its beginning is on its way already.
void GpsdClient::MakeRoom(std::size_t bytes) {
  const std::size_t first = sent_ > 0 ? 1 : 0;
  while (queued_ + bytes > queue_limit_ && queue_.size() > first) {
    const auto oldest = queue_.begin() + static_cast<std::ptrdiff_t>(first);
    queued_ -= (*oldest)->size();
    queue_.erase(oldest);
    ++dropped_;
  }
}

void GpsdClient::Flush() {
  while (!queue_.empty() && !gone_) {
    const std::string& piece = *queue_.front();
    const ssize_t count = send(Descriptor(), piece.data() + sent_, piece.size() - sent_, MSG_NOSIGNAL);
    if (count < 0) {
      gone_ = !MayTryAgain();
      return;
    }
    stalled_.Set(stall_limit_);
    sent_ += static_cast<std::size_t>(count);
    if (sent_ < piece.size()) continue;
    queued_ -= piece.size();
    queue_.pop_front();
    sent_ = 0;
  }
  stalled_.Clear();
}

}  // namespace host
