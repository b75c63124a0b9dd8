#pragma once

#include <optional>
#include <set>
#include <string>
#include <utility>

#include "gpsengine/datalog/datalog.h"
#include "gpsengine/platform/file.h"
#include "host/records/gpstime.h"

namespace host {

/// A log in the receiver independent exchange format, RINEX 2.11, for post-processing software: an
/// observation file with the raw epochs, and beside it a navigation file with the ephemerides, under the same
/// name with ".nav" at its end.
///
/// What is written goes to the system at once and in whole epochs, so that a run that is cut off leaves files
/// that can be read. A file in which nothing was written is not left behind.
class RinexLog : public CDataLog {
 public:
  RinexLog() : CDataLog(nullptr) {}
  ~RinexLog() override { RinexLog::Close(); }
  RinexLog(const RinexLog&) = delete;
  RinexLog& operator=(const RinexLog&) = delete;

  /// Names the files after `base`, a path: what stands behind its last "/" goes to SetFilename. A path that
  /// ends in "/", or a folder, gets a name with the present date, by SetDefaultFilename.
  void SetBase(const std::string& base);
  /// The moment near which the epochs lie, which a ten-bit week is resolved against. Without it, an epoch's
  /// moment of publication is that moment. It also has the week, if no ephemeris has told one.
  void SetPivot(std::optional<Moment> pivot) { pivot_ = pivot; }
  /// The receiver's model, for the header.
  void SetReceiver(const std::string& model) { model_ = model; }
  std::string ObservationPath() const { return folder_ + GetFilename().ToUtf8(); }
  std::string NavigationPath() const;

  bool Open() override;
  void Close() override;
  bool IsOpen() const override { return open_; }
  bool IsEpochDue(const CGPSDataRaw& epoch) const override;
  CString GetFileExtension() override { return ".obs"; }
  bool WriteEpoch(const CGPSDataRaw& epoch) override;
  bool WriteEphemeris(const CGPSDataEphemeris& ephemeris) override;
  /// Remarks have their place in the header alone.
  bool WriteRemark(const CString&) override { return false; }
  bool Flush() override { return open_; }
  /// A file could not be made or written.
  bool IsBroken() const { return broken_; }
  int GetNumEphemerides() override { return static_cast<int>(known_.size()); }
  int GetNumEpochs() override { return epochs_; }
  CString GetFormatName() override { return "RINEX 2.11"; }
  CString GetLastErrorString() override { return error_; }

 private:
  GpsTime TimeOf(const CGPSDataRaw& epoch) const;
  Moment PivotFor(const CTime& time) const { return pivot_.value_or(time.GetTime() * 1000); }
  std::string ObservationHeader(const CGPSDataRaw& epoch) const;
  bool Write(CFile& file, const std::string& path, const std::string& text);
  bool Fail(const CString& reason);
  bool Break(const CString& reason);

  std::string folder_;
  std::string model_;
  std::optional<Moment> pivot_;
  bool open_ = false;
  bool broken_ = false;
  CFile observations_, navigation_;
  std::optional<GpsTime> last_;                // the epoch that was last written
  std::set<std::pair<int, long long>> known_;  // satellites and reference times of the ephemerides written
  int epochs_ = 0;
  CString error_;
};

}  // namespace host
