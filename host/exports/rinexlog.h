#pragma once

#include <memory>
#include <optional>
#include <set>
#include <string>
#include <tuple>
#include <vector>

#include "gpsengine/datalog/datalog.h"
#include "host/exports/rinexfile.h"
#include "host/exports/rinexformat.h"

namespace host {

/// A log in the receiver independent exchange format, for post-processing software: an observation file with
/// the raw epochs, and beside it a navigation file with the ephemerides of GPS, under the same name with
/// ".nav" at its end.
///
/// What is written goes to the system at once and in whole epochs, so that a run that is cut off leaves files
/// that can be read. A file in which nothing was written is not left behind.
class RinexLog : public CDataLog {
 public:
  explicit RinexLog(RinexVersion version = RinexVersion::v3_04) : CDataLog(nullptr), version_(version) {}
  ~RinexLog() override { RinexLog::Close(); }
  RinexLog(const RinexLog&) = delete;
  RinexLog& operator=(const RinexLog&) = delete;

  /// Names the files after `base`, a path: what stands after its last "/" goes to SetFilename. A path that
  /// ends in "/", or a folder, gets a name with the present date, by SetDefaultFilename.
  void SetBase(const std::string& base);
  /// The moment near which the epochs lie, which a ten-bit week is resolved against. Without it, an epoch's
  /// moment of publication is that moment. It also has the week, if no ephemeris has told one.
  void SetPivot(std::optional<Moment> pivot) { pivot_ = pivot; }
  /// What the header tells of the mark. Without a name, it has that of the file.
  void SetStation(const RinexStation& station) { station_ = station; }
  /// Where the antenna is: degrees, and metres above the ellipsoid. The first place counts.
  void SetPlace(double latitude, double longitude, double height);
  std::string ObservationPath() const { return folder_ + GetFilename().ToUtf8(); }
  std::string NavigationPath() const;

  bool Open() override;
  void Close() override;
  bool IsOpen() const override { return open_; }
  bool IsEpochDue(const CGPSDataRaw& epoch) const override { return IsDue(TimeOf(epoch)); }
  bool IsEpochDue(const rawdata::ObservationEpoch& epoch) const { return IsDue(TimeOf(epoch)); }
  CString GetFileExtension() override { return ".obs"; }
  bool WriteEpoch(const CGPSDataRaw& epoch) override;
  /// An epoch of a receiver of that kind. All epochs of a log are of one.
  bool WriteEpoch(const rawdata::ObservationEpoch& epoch, const RinexKind& kind);
  /// Passes over an epoch. Phases that slipped in it have done so before the next one.
  void SkipEpoch(const rawdata::ObservationEpoch& epoch);
  bool WriteEphemeris(const CGPSDataEphemeris& ephemeris) override;
  bool WriteEphemeris(const rawdata::BroadcastEphemeris& ephemeris) { return Write(ephemeris, true); }
  /// Remarks have their place in the header alone.
  bool WriteRemark(const CString&) override { return false; }
  bool Flush() override { return open_; }
  /// A file could not be made or written.
  bool IsBroken() const { return broken_; }
  int GetNumEphemerides() override { return static_cast<int>(known_.size()); }
  int GetNumEpochs() override { return epochs_; }
  CString GetFormatName() override { return version_ == RinexVersion::v2_11 ? "RINEX 2.11" : "RINEX 3.04"; }
  CString GetLastErrorString() override { return error_; }

 private:
  /// An ephemeris whose week cannot be told yet.
  struct Waiting {
    rawdata::BroadcastEphemeris ephemeris;
    bool has_state;
  };

  GpsTime TimeOf(const CGPSDataRaw& epoch) const;
  GpsTime TimeOf(const rawdata::ObservationEpoch& epoch) const;
  Moment PivotFor(const CTime& time) const { return pivot_.value_or(MomentOf(time)); }
  bool IsDue(const GpsTime& time) const;
  bool Write(const GpsTime& time, const SignalList& signals, const RinexKind& kind);
  bool WriteHead(const GpsTime& time, const SignalList& signals, const RinexKind& kind);
  SignalList WithSlips(const SignalList& signals);
  bool Write(const rawdata::BroadcastEphemeris& ephemeris, bool has_state);
  bool WriteWaiting();
  bool Append(RinexFile& file, const std::string& text);
  bool Fail(const CString& reason);
  bool Break(const RinexFile& file);

  const RinexVersion version_;
  std::string folder_;
  RinexStation station_;
  bool has_place_ = false, owes_place_ = false;  // the header does not have it yet
  std::optional<Moment> pivot_;
  bool open_ = false;
  bool broken_ = false;
  RinexFile observations_, navigation_;
  std::unique_ptr<RinexFormat> format_;                   // from the first epoch on
  std::size_t head_ = 0;                                  // bytes of the header
  std::string text_;                                      // of the current epoch, kept for its memory
  std::optional<GpsTime> last_;                           // the epoch that was last written
  std::set<std::tuple<char, int, std::string>> slipped_;  // since then
  std::set<std::tuple<int, long long, int>> known_;  // satellite, time and issue of the ephemerides written
  std::vector<Waiting> waiting_;
  int epochs_ = 0;
  CString error_;
};

}  // namespace host
