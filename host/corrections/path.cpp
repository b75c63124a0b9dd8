#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "gpsengine/platform/serial.h"
#include "host/corrections/source.h"
#include "host/run/descriptor.h"

namespace host {

namespace {

bool IsSet(const Event& event) {
  pollfd wait{event.Descriptor(), POLLIN, 0};
  return poll(&wait, 1, 0) > 0;
}

SourceEnd CannotOpen() {
  return {SourceEnd::Kind::lost, std::string("cannot be opened: ") + std::strerror(errno)};
}

SourceEnd ReadDevice(const std::string& path, int baud, const SourcePeer& peer) {
  constexpr DWORD kStep = 200;  // in which a stop is noticed
  const auto line = OpenSerialDevice(CString::FromUtf8(path));
  if (line == nullptr) return CannotOpen();
  DCB settings;
  line->GetState(settings);
  settings.BaudRate = static_cast<DWORD>(baud);
  line->SetState(settings);
  char piece[1024];
  while (!IsSet(peer.stop)) {
    const int count = line->Read(piece, sizeof piece, kStep);
    if (count < 0) return {SourceEnd::Kind::lost, "the device has gone"};
    if (count > 0) peer.take({piece, static_cast<std::size_t>(count)});
  }
  return {};
}

SourceEnd ReadFileOrPipe(const std::string& path, const SourcePeer& peer) {
  const UniqueDescriptor file(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
  if (!file) return CannotOpen();
  struct stat facts {};
  fstat(file.Get(), &facts);
  char piece[1024];
  for (;;) {
    pollfd waits[] = {{file.Get(), POLLIN, 0}, {peer.stop.Descriptor(), POLLIN, 0}};
    poll(waits, 2, -1);
    if (waits[1].revents != 0) return {};
    const ssize_t count = read(file.Get(), piece, sizeof piece);
    if (count > 0) peer.take({piece, static_cast<std::size_t>(count)});
    if (count > 0 || (count < 0 && (errno == EAGAIN || errno == EINTR))) continue;
    if (count < 0) return {SourceEnd::Kind::lost, std::string("cannot be read: ") + std::strerror(errno)};
    if (S_ISFIFO(facts.st_mode)) return {SourceEnd::Kind::lost, "nobody writes to the pipe"};
    return {SourceEnd::Kind::refused, "the file is at its end"};
  }
}

}  // namespace

SourceEnd ReadPath(const CorrectionSource& source, int baud, const SourcePeer& peer) {
  if (source.kind == CorrectionSource::Kind::device) return ReadDevice(source.path, baud, peer);
  return ReadFileOrPipe(source.path, peer);
}

}  // namespace host
