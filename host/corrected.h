#pragma once

#include <string>

#include "gpsengine/sentences/sentencefinder.h"
#include "host/corrections/link.h"
#include "host/records/format.h"
#include "host/records/jsonwriter.h"
#include "host/session/session.h"

namespace host {

/// Hands a run's receiver corrections, and tells in the run's format how that goes: lines of text where that
/// changes, or an object of JSON a second. They count as no records.
class Corrected : public Outlet, public Sink {
 public:
  /// The session's feed is known. Throws a Failure if that takes no corrections, or the source is none.
  Corrected(Session& session, const CorrectionOptions& options, Output& output, Format format,
            const CorrectionLink::Limits& limits = {});

  CorrectionStatus Status() const { return link_.Status(); }

  Sink* Records() override { return this; }
  bool OnData(const Record& record) override;
  void OnBytes(std::string_view bytes) override;
  void OnEvent(RunEvent event) override;
  Deadline::Moment NextAt() const override { return due_.Earlier(Deadline::kNever); }
  void Step() override;

 private:
  void TellText(const CorrectionStatus& status);
  void TellJson(const CorrectionStatus& status);

  Session& session_;
  Output& output_;
  const Format format_;
  const bool wants_position_;
  SentenceFinder sentences_;
  Deadline due_, sentence_;  // the next look; how long a sentence makes others of the position needless
  bool is_fresh_ = false;    // as was told
  std::string last_;         // of JSON, but for the age
  CorrectionLink link_;
};

/// The members of an object that tells of corrections.
void WriteCorrections(JsonWriter& json, const CorrectionStatus& status);

}  // namespace host
