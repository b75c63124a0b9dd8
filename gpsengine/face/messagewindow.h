#pragma once

#include <functional>
#include <optional>
#include <string>

#include "gpsengine/engine/gpsengine.h"
#include "gpsengine/face/block.h"
#include "gpsengine/face/fixreader.h"
#include "gpsengine/face/report.h"
#include "gpsengine/face/skysource.h"
#include "gpsengine/face/values.h"

namespace gps {

/// The main window of an application in plain C++: makes records of what the library posts.
class MessageWindow : public CWnd {
 public:
  /// `tell` takes the records, on the window's thread. The engine outlives the window.
  MessageWindow(CGPSEngine& engine, std::function<void(Record&&)> tell);

  /// The moment near which the records to come belong.
  void SetReference(std::optional<Time> reference) { fixes_.SetReference(reference); }
  /// Satellites are wanted, for which the texts of messages are read.
  void WantSkies(bool wanted) { wants_skies_ = wanted; }
  /// Makes this the application's main window, on the calling thread.
  void Open();
  void Close() { DestroyWindow(); }
  /// Handles what is in the queue.
  void Drain();
  /// Tells what is left. There are no more messages.
  void Finish();

  LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override;

 private:
  void OnData(const CGPSData& data);
  void OnText(const CString& text);
  void OnBlock();
  void Tell(const Sky* sky);
  void KeepCapturing();

  CGPSEngine& engine_;
  const std::function<void(Record&&)> tell_;
  FixReader fixes_;
  SkySource skies_;
  ReportReader reports_;
  BlockReader blocks_;
  bool wants_skies_ = true;
  std::string bytes_;  // of the current text, kept for its memory
};

}  // namespace gps
