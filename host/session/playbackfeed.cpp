#include "host/session/playbackfeed.h"

#include <fcntl.h>

#include <cerrno>
#include <cstring>

#include "host/run/descriptor.h"
#include "host/run/failure.h"
#include "host/run/recording.h"

namespace host {

void PlaybackFeed::Open(CGPSEngine& engine, HostWindow&) {
  // The engine would look for another recording in its place.
  errno = 0;
  const UniqueDescriptor recording(open(Name().c_str(), O_RDONLY | O_CLOEXEC));
  char first = 0;
  if (!recording || read(recording.Get(), &first, 1) != 1) {
    throw Failure(ExitCode::failed,
                  "cannot play " + Name() + ": " + (errno != 0 ? std::strerror(errno) : "the file is empty"));
  }
  engine.m_bEmulation = true;
  engine.m_strEmulationFile = CString::FromUtf8(NameOfUnpacked(Name()));
  engine.GetReceiver()->LoadAlternatGPSStatusStrings();
  if (!engine.Start()) throw Failure(ExitCode::failed, engine.GetLastErrorString().ToUtf8());
}

bool PlaybackFeed::OnString(const CString& text) {
  if (!tells_bytes_) return false;
  std::string bytes;
  for (int i = 0; i < text.GetLength(); ++i) bytes += static_cast<char>(text.GetAt(i));
  sentences_.Feed(bytes + "\r\n", [this](std::string_view sentence) { bytes_ += sentence; });
  return false;
}

}  // namespace host
