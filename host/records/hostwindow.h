#pragma once

#include "gpsengine/platform/application.h"
#include "host/records/sink.h"

namespace host {

/// The messages that the library has posted, by kind.
struct Published {
  long long data = 0;
  long long raw_data = 0;
  long long ephemeris = 0;
  long long bin = 0;

  long long All() const { return data + raw_data + ephemeris + bin; }
};

/// The host's main window: hands what the library posts to a sink, until enough was shown.
class HostWindow : public CWnd {
 public:
  /// `sink` outlives the window. `limit` is how many records to show at most, 0 for no limit.
  explicit HostWindow(Sink& sink, long long limit = 0);
  ~HostWindow() override;

  /// Handles what is in the queue.
  void Drain();
  bool IsFull() const { return limit_ > 0 && shown_ >= limit_; }
  long long Shown() const { return shown_; }
  const Published& GetPublished() const { return published_; }

  LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override;

 private:
  void Show(bool shown) { shown_ += shown ? 1 : 0; }

  Sink& sink_;
  long long limit_;
  long long shown_ = 0;
  bool owes_text_ = false;  // of the last message
  Published published_;
};

}  // namespace host
