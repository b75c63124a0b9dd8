#pragma once

#include <string>
#include <vector>

#include "gpsengine/receiver/gpsreceiver.h"
#include "host/session/outlet.h"

namespace host {

/// The raw data of a receiver for as long as a run lasts: brings it to send them, and at the end puts back
/// what was changed. The library itself switches the raw data off then.
class RawOutput : public Outlet {
 public:
  /// `interval` in seconds, 0 for the receiver's own. Throws a Failure if the model cannot do that.
  RawOutput(CGPSReceiver& receiver, double interval);
  /// Puts back what a run that has failed has left.
  ~RawOutput() override { PutBack(); }

  /// At every start of a run, after the engine's: blocks for the second or two that the commands take.
  /// Throws a Failure if the port does not take them.
  void Start();
  void OnEvent(RunEvent event) override;
  void Step() override;

  /// What a run writes to a receiver of that model at its start and at its end, for people.
  static std::string Explain(const std::string& model, double interval);

 private:
  /// A sentence that has to be silent.
  struct Hiding {
    GPSStringType type;
    const char* name;
    bool has_come;
  };

  void Silence();
  void NoteSentences();
  void PutBack();

  CGPSReceiver& receiver_;
  const double interval_;
  std::vector<Hiding> hiding_;
  bool silenced_ = false;
};

}  // namespace host
