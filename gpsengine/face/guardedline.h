#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "gpsengine/face/blockguard.h"
#include "gpsengine/platform/serial.h"

#pragma GCC visibility push(default)

namespace gps {

/// A line around another one that brings binary blocks to the library whole, and tells what it reads.
class GuardedLine : public SerialLine {
 public:
  /// Who wants to know what the line gives, on the thread that reads it.
  struct Watcher {
    /// Bytes, as they came. More of them follow at once, or not.
    std::function<void(std::string_view bytes, bool more_follows)> on_bytes;
    /// The line has gone for good.
    std::function<void()> on_gone;
  };

  /// Either of the watcher's may be empty.
  GuardedLine(std::unique_ptr<SerialLine> line, Watcher watcher)
      : line_(std::move(line)), watcher_(std::move(watcher)) {}

  /// As the other line does it, but for the bytes that the guard adds.
  ///@{
  int Read(void* pData, int nMax, DWORD ms) override;
  bool GetState(DCB& dcb) override { return line_->GetState(dcb); }
  bool SetState(const DCB& dcb) override { return line_->SetState(dcb); }
  int Write(const void* pData, int nLength, DWORD ms) override { return line_->Write(pData, nLength, ms); }
  void Cancel() override { line_->Cancel(); }
  void WakeReader() override { line_->WakeReader(); }
  bool PurgeInput() override { return line_->PurgeInput(); }
  int BytesWaiting(DWORD& errors) override { return line_->BytesWaiting(errors); }
  bool SetBreak(bool bOn) override { return line_->SetBreak(bOn); }
  ///@}

 private:
  const std::unique_ptr<SerialLine> line_;
  const Watcher watcher_;
  BlockGuard guard_;
  std::string held_;  // what has been read and not been given
};

}  // namespace gps

#pragma GCC visibility pop
