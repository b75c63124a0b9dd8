#pragma once

#include "gpsengine/platform/cstring.h"
#include "gpsengine/platform/ctime.h"
#include "gpsengine/platform/window.h"
#include "gpsengine/records/gpsdataraw.h"

#pragma GCC visibility push(default)

/// The settings of a log of raw data, and the face that a host's logger of any format has. The host derives
/// its logger from this class and feeds it with the epochs and ephemerides that it is sent; the library makes
/// and calls none.
///
/// A logger belongs to one thread at a time.
class CDataLog {
 public:
  /// `pParent` is kept for the derived class, which may show its boxes there; the caller keeps ownership.
  explicit CDataLog(CWnd* pParent);
  /// Copies the settings.
  ///@{
  CDataLog(const CDataLog&) = default;
  CDataLog& operator=(const CDataLog&) = default;
  ///@}

  // The virtual operations stand in this order in the interface that hosts are compiled against.

  /// Opens the file of GetFilename, emptying one that is there. False if the settings do not suffice
  /// (IsReady), if a log is open, or if the file cannot be made.
  virtual bool Open() = 0;
  /// Completes and closes the file. No effect if none is open.
  virtual void Close() = 0;
  /// From an Open that gave true until Close.
  virtual bool IsOpen() const = 0;
  /// Whether the logging interval has passed between the last epoch written and this one.
  virtual bool IsEpochDue(const CGPSDataRaw& epoch) const = 0;
  /// What ends a file name of this format, with its dot.
  virtual CString GetFileExtension() = 0;
  /// The settings suffice for a log: a file name, an interval of at least 0.1, and it is switched on.
  virtual bool IsReady() const;
  /// Writes one epoch, whether or not it is due. False if none could be written.
  virtual bool WriteEpoch(const CGPSDataRaw& epoch) = 0;
  /// Writes one ephemeris; one that the log has already counts as written. False if it could not be written.
  virtual bool WriteEphemeris(const CGPSDataEphemeris& ephemeris) = 0;
  /// Writes a remark of the user at this place. False if the format has no room for one or it could not be
  /// written.
  virtual bool WriteRemark(const CString& strText) = 0;
  /// Hands to the system what has been written, so that an interruption leaves a file that can be read up to
  /// here.
  virtual bool Flush() = 0;
  /// The number of ephemerides logged.
  virtual int GetNumEphemerides() = 0;
  /// The number of epochs logged.
  virtual int GetNumEpochs() = 0;
  /// A line for the user: epochs logged and minutes elapsed.
  virtual CString GetStatusString();
  /// The name of the format, for the user.
  virtual CString GetFormatName() = 0;
  /// Why the last operation of the log failed, for the user; empty if it did not.
  virtual CString GetLastErrorString() = 0;
  virtual ~CDataLog() = default;  ///< A derived class closes its file here.

  /// Switches the log on or off.
  void Enable(bool bOn) { m_bEnabled = bOn; }
  /// The file's name, as SetFilename or SetDefaultFilename made it.
  CString GetFilename() const { return m_strFilename; }
  /// Seconds between the epochs that are logged; 0.1 is the least that IsReady accepts.
  ///@{
  void SetLogInterval(double dInterval) { m_dLogInterval = dInterval; }
  double GetLogInterval() const { return m_dLogInterval; }
  ///@}
  /// Metres from the mark up to the antenna.
  ///@{
  void SetAntennaHeight(double dHeight) { m_dAntennaHeight = dHeight; }
  double GetAntennaHeight() const { return m_dAntennaHeight; }
  ///@}
  /// The receiver's port: 2 for COM2, anything else for COM1.
  void SetPort(int nPort);
  /// Starts the time that GetMinutesElapsed measures. Construction does so too.
  void SetTimeMark();
  /// Minutes since the mark, without whole days: after 25 hours 60.
  int GetMinutesElapsed();
  /// Sets the file's name: `strName` up to its first dot, wherever that stands, and the extension. Always
  /// true.
  bool SetFilename(const CString& strName);
  /// Sets the file's name to GenerateDefaultFilename of a base name. Always true.
  bool SetDefaultFilename(const CString& strBase);
  /// The base name up to its first dot, the local date and time, and the extension: job_3Mar_9h5m7s.raw.
  CString GenerateDefaultFilename(const CString& strBase);

 protected:
  CString m_strDefaultFilename;   ///< The base name last given to SetDefaultFilename.
  double m_dLogInterval = 5.0;    ///< Seconds.
  double m_dAntennaHeight = 0.0;  ///< Metres.
  CString m_strFilename;          ///< With its extension.
  CString m_strPort = "COM1";     ///< "COM1" or "COM2".
  bool m_bEnabled = false;        ///< Switched on by Enable.
  CWnd* m_pParent;                ///< The constructor's argument.
  CTime m_TimeMark;               ///< What GetMinutesElapsed counts from.
};

#pragma GCC visibility pop
