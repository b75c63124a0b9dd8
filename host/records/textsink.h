#pragma once

#include <string>
#include <utility>
#include <vector>

#include "gpsengine/face/report.h"
#include "host/records/display.h"
#include "host/records/sink.h"
#include "host/run/face.h"

namespace host {

/// The format "text": a line a fix, for people, and a line for what else the receiver reports.
class TextSink : public Sink {
 public:
  enum class Shows {
    fixes,    ///< Fixes and what is reported of settings.
    reports,  ///< All reports, those in a make's own language too, and no fixes.
  };

  explicit TextSink(std::string& out, Shows shows = Shows::fixes, Display display = {})
      : out_(out), shows_(shows), display_(std::move(display)) {}

  bool OnData(const Record& record) override;
  bool OnRawData(const CGPSDataRaw& epoch) override;
  bool OnEphemeris(const CGPSDataEphemeris& ephemeris) override;
  bool OnBin(const Block& block) override;
  /// With reports alone: an answer that gave no record, such as one that is decoded by no one.
  bool OnString(const CString& text) override;

 private:
  void WriteFix(const PositionEpoch& epoch);
  void WritePlace(const PositionEpoch& fix);
  bool WriteReports(const CGPSData& data);
  bool WriteRawEpoch(int week, double seconds, const std::vector<std::string>& satellites);

  std::string& out_;
  const Shows shows_;
  const Display display_;
  ReportReader reports_;
  bool told_ = false;  // the record of the current message was shown
};

}  // namespace host
