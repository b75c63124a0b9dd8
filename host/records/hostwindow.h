#pragma once

#include <optional>
#include <string>
#include <vector>

#include "gpsengine/face/skysource.h"
#include "gpsengine/platform/application.h"
#include "gpsengine/receiver/gpsreceiver.h"
#include "host/records/sink.h"
#include "host/run/face.h"

namespace host {

/// The messages that the library has posted, by kind.
struct Published {
  long long data = 0;
  long long unread = 0;  ///< Of those, the ones that have a sentence of a make as it came, and nothing else.
  long long raw_data = 0;
  long long ephemeris = 0;
  long long bin = 0;
  long long read_bin = 0;  ///< Of those, the ones with measurements or an ephemeris.

  long long All() const { return data + raw_data + ephemeris + bin; }
};

/// The host's main window: reads what the library posts once, and hands it to the sinks until enough was
/// shown.
class HostWindow : public CGPSWindow {
 public:
  /// `limit` is how many records to show at most, 0 for no limit.
  explicit HostWindow(long long limit = 0);
  ~HostWindow() override;

  /// A sink more, which takes each record after those before it.
  void Add(Sink& sink) { sinks_.push_back(&sink); }
  /// Whose blocks of words are read; it outlives the window. Without it nothing is known of a block.
  void ReadBlocksOf(const CGPSReceiver& receiver) { receiver_ = &receiver; }
  /// Tells the sinks the moment near which the records to come belong.
  void SetReference(std::optional<Moment> reference);
  /// Asks the sinks whether one wants satellites, for which the texts of messages are needed from now on.
  bool WantsSky();
  /// Tells of the satellites that are left. What comes after may be from another receiver.
  void EndSky();
  bool IsFull() const { return limit_ > 0 && shown_ >= limit_; }
  long long Shown() const { return shown_; }
  const Published& GetPublished() const { return published_; }

 private:
  /// What several sinks show counts once.
  template <class... Parameters, class... Records>
  void Show(bool (Sink::*on)(Parameters...), const Records&... record) {
    shown_ += ShowAll(on, record...) ? 1 : 0;
  }
  /// Says whether any sink has shown it.
  template <class... Parameters, class... Records>
  bool ShowAll(bool (Sink::*on)(Parameters...), const Records&... record) {
    bool shown = false;
    for (Sink* sink : sinks_) shown |= (sink->*on)(record...);
    return shown;
  }
  template <class... Parameters, class... Records>
  void Publish(long long& count, bool (Sink::*on)(Parameters...), const Records&... record) {
    ++count;
    if (!IsFull()) Show(on, record...);
  }
  void OnNewData(const CGPSData& data) override;
  void OnNewString(const CString& text) override;
  void OnNewRawData(const CGPSDataRaw& epoch) override;
  void OnNewEphemeris(const CGPSDataEphemeris& ephemeris) override;
  void OnNewBin() override;
  void ShowSky(const Sky* sky);

  std::vector<Sink*> sinks_;
  FixReader epochs_;
  SkySource skies_;
  const CGPSReceiver* receiver_ = nullptr;
  BlockReader blocks_;
  const long long limit_;
  long long shown_ = 0;
  bool owes_text_ = false;  // of the last message
  bool wants_sky_ = false;  // when last asked
  std::string bytes_;       // room for those of a text
  Published published_;
};

}  // namespace host
