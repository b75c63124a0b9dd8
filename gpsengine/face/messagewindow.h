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
class MessageWindow : public CGPSWindow {
 public:
  /// `tell` takes the records, on the window's thread. The engine outlives the window.
  MessageWindow(CGPSEngine& engine, std::function<void(Record&&)> tell);

  /// The moment near which the records to come belong.
  void SetReference(std::optional<Time> reference) { fixes_.SetReference(reference); }
  /// Satellites and reports are wanted, for which the texts of messages are read. Before Open.
  ///@{
  void WantSkies(bool wanted) { wants_skies_ = wanted; }
  void WantReports(bool wanted) { wants_reports_ = wanted; }
  ///@}
  /// Makes this the application's main window, on the calling thread.
  void Open();
  void Close() { DestroyWindow(); }
  /// Tells what is left. There are no more messages.
  void Finish();

 private:
  void OnNewData(const CGPSData& data) override;
  void OnNewString(const CString& text) override;
  void OnNewRawData(const CGPSDataRaw& data) override;
  void OnNewEphemeris(const CGPSDataEphemeris& data) override;
  void OnNewBin() override;
  void Tell(const Sky* sky);

  CGPSEngine& engine_;
  const std::function<void(Record&&)> tell_;
  FixReader fixes_;
  SkySource skies_;
  ReportReader reports_;
  BlockReader blocks_;
  bool wants_skies_ = true, wants_reports_ = true;
  bool has_told_ = false;  // what the message at hand reports
  std::string bytes_;      // of the current text, kept for its memory
};

}  // namespace gps
