#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <span>

#include "gpsengine/link/binbuffer.h"
#include "gpsengine/link/serialport.h"
#include "gpsengine/platform/containers.h"
#include "gpsengine/platform/object.h"
#include "gpsengine/platform/shared.h"
#include "gpsengine/receiver/command.h"
#include "gpsengine/receiver/messages.h"
#include "gpsengine/receiver/sentences.h"
#include "gpsengine/receiver/speedengine.h"

struct SentenceTable;

#pragma GCC visibility push(default)

class CParser;

/// First argument of SetBeacon. Any other value acts as BEACON_MODE_MANUAL.
enum BEACON_MODE_TYPE : int {
  BEACON_MODE_AUTO = 0,    ///< The receiver tunes by itself.
  BEACON_MODE_MANUAL = 1,  ///< To a given frequency and bit rate.
};

/// A receiver of any make: its settings between two starts, the decoding of everything that any make sends,
/// and the command operations, which a class for a make overrides.
///
/// The working records, the port and the speed estimator are shared by all receivers, so that one receiver is
/// live at a time, and each make's reports are understood whichever class is selected.
///
/// The host's thread sets up, starts, stops and commands; Parse, KeepAlive and ResetSpeedEngine run on the
/// engine's reader thread. A Query… operation only writes a request: the answer comes as a report, and the
/// host finds it in m_Status of the next published record. A command operation blocks its caller for the sum
/// of its waits and does nothing on a closed port.
class CGPSReceiver : public CObject {
  DECLARE_DYNAMIC(CGPSReceiver)

 public:
  CGPSReceiver();
  ~CGPSReceiver() override;  ///< Closes the port.
  CGPSReceiver(const CGPSReceiver&) = delete;
  CGPSReceiver& operator=(const CGPSReceiver&) = delete;

  // The virtual operations stand in this order in the interface that hosts are compiled against.

  /// Raw measurements and ephemerides on or off. False if the port is closed or a write fails.
  virtual bool EnablePostProcessing(bool bOn);
  /// Interval of raw measurements in seconds. False if the receiver does not take it.
  virtual bool SetRawDataOutputInterval(double dInterval);
  /// The display name, under which the receiver is found and its baud rate is kept.
  virtual CString GetName() = 0;
  virtual bool HasRawData() { return false; }
  virtual bool IsAvailable() const { return true; }
  virtual bool IsRtkReceiver() { return false; }
  virtual bool IsExternalDriver() { return false; }
  virtual bool UseExternalSettings() { return false; }
  virtual int GetCurrentBaudrate() { return m_nBaudrate; }
  virtual int GetDefaultBaudrate() { return 9600; }
  /// Resets the records, opens the port and writes the make's set-up. False if the port does not open.
  virtual bool Initialize();
  virtual bool OpenPort();
  /// Decodes a message of a known kind and publishes. True if a record went to the host.
  virtual bool Parse(CString& strMessage, GPSStringType type);
  /// Decodes one framed message, which is shortened if a port prompt stands ahead of it.
  virtual bool Parse(CString& strMessage);
  /// Called on the reader thread when the line has been silent for a second.
  virtual void KeepAlive() {}
  /// Raw output off, port closed.
  virtual void Suspend();
  virtual bool ImplementsQueryNmea() { return false; }
  virtual void QueryNmeaActive() {}
  virtual bool ImplementsQueryGpsSettings() { return false; }
  virtual void QueryGpsSettings() {}
  virtual bool ImplementsBeacon() { return false; }
  virtual void QueryBeacon() {}
  /// The frequency in kHz and the bit rate in bits a second go out as given. An empty bit rate is left to the
  /// receiver.
  virtual void SetBeacon(BEACON_MODE_TYPE, CString /*strFrequency*/, CString /*strBitRate*/) {}
  virtual bool ImplementsSetElevMask() { return false; }
  virtual void QuerySatElevMask() {}
  virtual void SetSatElevMask(int /*nDegrees*/) {}
  virtual bool ImplementsSetNmea() { return false; }
  virtual void SetDefaultNMEA() {}
  virtual void SetGgaOnlyNMEA() {}
  /// Writes a line and "\r\n". Nothing happens on a closed port, or if the line is longer than the port
  /// takes.
  virtual void Send(const CString& strCommand);
  /// Writes bytes. False for none, on a closed port, or if not all went out.
  virtual bool SendBinary(const unsigned char* pData, unsigned short nLength);
  virtual bool ImplementsResetAll() { return false; }
  /// Brings the receiver to a known configuration. True if all of it succeeded.
  virtual bool ResetAll(bool /*bWaitForAck*/) { return false; }
  /// The kind of a message, by its tag and, where it counts, its checksum.
  virtual GPSStringType GetGPSStringType(const CString& strMessage);
  /// The height of this make's GGA is orthometric.
  virtual bool GGASendsOrthoHeight() { return false; }
  virtual bool HasDGPSSupport() const { return false; }
  virtual void QueryDgpsMode() {}
  virtual void SetDgpsMode(DgpsMode) {}
  virtual void QueryOmniStar() {}
  virtual void DgpsStatusMsg(bool) {}
  virtual void QueryLbandSatellites() {}
  /// Frequency in MHz, bit rate in bits a second.
  virtual void SetLbandFrequency(double /*dFrequency*/, int /*nBitRate*/) {}
  virtual void SendCorrection() {}
  virtual void ChangeCDGPS_Freq(double /*dFrequency*/) {}
  virtual void QueryWAAS() {}

  /// Stores what the next Initialize uses. Antenna height (metres, taken off every height) and geoid mode (0:
  /// leave the geoid separation alone, 1: add it to the height, any other value: subtract it) hold from the
  /// next GGA on. With an external port the host moves the bytes, and Initialize and Suspend leave the port
  /// alone.
  void SetupReceiver(int nPort, int nGeoidMode, double dAntennaHeight, const CString& strText,
                     bool bExternalPort);
  /// Takes the baud rate of the class, or the one that the application's profile holds for this receiver.
  void SetProperties();
  /// Another baud rate, for the next Initialize and in the profile. False if it is the current one.
  bool SaveDifferentSettings(int nBaudrate);
  void* GetPortHandle() const;
  void ResetSpeedEngine();
  /// Declares the satellite table incomplete.
  void InvalidateSVInfo();
  /// Reads the file GPSStatus in the folder of the host's executable, if it is there: a line each of a GGA
  /// quality indicator, a comma and the name of a SignalType, which takes the place of the built-in one.
  void LoadAlternatGPSStatusStrings();

  /// Turns the record of arrived sentence kinds on or off; either way it starts empty.
  void MonitorNmea(bool bOn);
  bool MonitoringNmea() const { return s_bMonitorNmea; }
  /// Whether a sentence of this kind has come. Kinds from 32 up share their mark with those from 0 up.
  bool HaveGotNmea(GPSStringType type) const;

  /// One callback a kind, replacing an earlier one; null for none.
  void AddNotificationCallback(GPSNotificationType type, GPSNotificationCallback pfn, void* pUser);
  bool HasNotificationCallback(GPSNotificationType type) const;

  /// Keeps a message's bytes for the binary decoders. False, with none kept, if there are none.
  bool AttachRawData(const char* pData, int nLength);

  // The last data, of which the library itself keeps none: position data go by the messages.
  bool GetLastGPSPositionData(CGPSData& out) const;
  bool GetLastGPSProprietaryMessage(CGPSData& out) const;
  void GetLastGPSRawData(CGPSDataRaw& out) const;
  void GetLastGPSEphemerisData(CGPSDataEphemeris& out) const;

  /// A copy of the last binary block as 16-bit words, each with the earlier byte in its low half. From any
  /// thread.
  void GetBinWords(CWordArray& out) const;

  // Counters of this receiver, which nothing resets. From any thread.
  int GetBinaryMessages() const { return m_nBinaryMessages; }
  int GetBadBinaryMessages() const { return m_nBadBinaryMessages; }
  int GetSentencesRecognised() const { return m_nSentencesRecognised; }
  int GetChecksumErrors() const { return m_nChecksumErrors; }
  int GetPortNumber() const { return m_nPortNumber; }

 protected:
  double GPSPosToRadians(double dPos);
  bool IsChecksumOK(const CString& strMessage);
  void GotNmea(GPSStringType type);

  // The slot of a satellite, the first empty one, the first one that is not used. False if there is none.
  bool GetSatellite(int nPRN, int& nSlot);
  bool GetEmptySatellite(int& nSlot);
  bool GetUnusedSatellite(int& nSlot);
  /// The slot for a satellite by the rule of all three: its own, else an empty one, else an unused one.
  bool FindSlot(int nPRN, int& nSlot);
  void ComputeAverageSNR();

  // The decoders, on the reader thread: true if the message was taken. None lets an exception out. Those that
  // take a text run with the record lock held, but for ProcessPASHR, which calls out to the host.
  bool ProcessGGA(CString& strMessage);
  bool ProcessINGGA(CString& strMessage);
  bool ProcessGSA(CString& strMessage);
  bool ProcessGSV(CString& strMessage);
  bool ProcessVTG(CString& strMessage);
  bool ProcessProprietary(CString& strMessage);
  bool ProcessPASHR(CString& strMessage);
  struct PashrKind;
  bool ProcessPASHR_SAT(CParser& parser);
  bool ProcessPASHR_Binary(const PashrKind& kind);
  bool ProcessPASHR_MBN(const void* pPayload);
  bool ProcessPASHR_PBN(const void* pPayload);
  bool ProcessPASHR_SNV(const void* pPayload);
  bool ProcessCRMSS(CString& strMessage);
  bool ProcessCRMSK(CString& strMessage);
  bool ProcessPARPMD(CString& strMessage);
  bool ProcessPARPER(CString& strMessage);
  bool ProcessPARPEM(CString& strMessage);
  bool ProcessPARPRTA(CString& strMessage);
  bool ProcessPSLIRParNmea(CString& strMessage);
  bool ProcessPSLIRParMode(CString& strMessage);
  bool ProcessPMCAG(CString& strMessage);
  bool ProcessJSHOW(CString& strMessage);
  bool ProcessJiOrJgeoOrRd1(CString& strMessage);
  bool ProcessBIN();
  bool ProcessAxis4BIN();
  bool ProcessLOGLIST(CString& strMessage);
  bool ProcessRXCONFIG(CString& strMessage);
  bool ProcessECUTOFF(CString& strMessage);
  bool ProcessOMNIINFO(CString& strMessage);
  bool ProcessOMNISTAT(CString& strMessage);
  bool ProcessOMNIHPPOS(CString& strMessage);
  bool ProcessWAAS1(CString& strMessage);
  bool ProcessRTKSOURCE(CString& strMessage);
  bool ProcessSBASCONTROL(CString& strMessage);
  bool ProcessPSRDIFFSOURCE(CString& strMessage);
  bool GetNmeaMsgStatus(const CString& text, NmeaMsgStatus& status);
  bool GetNmeaMsgStatus(const CString& text, NmeaMsgStatus& status, const CString& key);

  bool PostNewDataRaw();
  bool PostEphemerisInfo();
  void BroadcastNotification(GPSNotificationType type, CGPSNotification* pData);

  /// Writes a command that has its line end. Without `bWait` it then sleeps `nTime` milliseconds; with it,
  /// waits that long at most for the acknowledgement, and gives whether it came. False if the command could
  /// not be written.
  bool WriteAck(const CString& strCommand, bool bWait, int nTime);
  /// Writes the lines of a command set, each followed by its wait, whether or not a write succeeds. On a
  /// closed port nothing is written or waited for, and the result is false; else it is true. The caller needs
  /// no test of its own.
  bool Write(std::span<const Command> commands);
  /// The same for one line, which has its line end.
  bool Write(const CString& strLine, DWORD nWait);
  /// The same without the test of the port: on a closed one the lines are lost and the waits still run.
  void WriteRegardless(std::span<const Command> commands);
  /// The beacon tuning command that several makes share. Nothing happens on a closed port.
  void WriteBeacon(BEACON_MODE_TYPE mode, const CString& strFrequency, const CString& strBitRate);
  /// Asks for the beacon's signal and tuning, for the makes that share the command. Nothing happens on a
  /// closed port.
  void WriteBeaconQuery();

  /// Held while m_GPSData is read or written: the reader thread decodes into it, and a driver on the host's
  /// thread clears what it has asked for. Never held over a write, a wait or a call out to the host.
  using RecordLock = std::unique_lock<std::mutex>;
  [[nodiscard]] static RecordLock LockRecord() { return RecordLock(s_RecordMutex); }
  /// Publishes a copy of the working record if there is something to tell, and gives whether it did. Takes
  /// the lock over and gives it up ahead of the post.
  bool PostNewData(RecordLock lock, bool bForce);

  static CGPSData m_GPSData;                ///< The working record of all decoders.
  static CGPSDataRaw m_GPSDataRaw;          ///< The raw epoch at hand; reader thread only.
  static CGPSDataEphemeris m_GPSEphemeris;  ///< The last ephemeris; reader thread only.
  static CBinBuffer m_GPSMessageRaw;        ///< The bytes of the message at hand; reader thread only.
  static CSerialPort m_Port;
  static CSpeedEngine m_SpeedEngine;
  static CShared<bool> m_bComputeMotion;  ///< No VTG has come: speed is to be computed.
  static CShared<bool> m_bGSAReceived;
  static CShared<bool> m_bGSVReceived;
  static CShared<int> m_nNextGSV;   ///< Number of the GSV sentence expected next.
  static CShared<int> m_nTotalGSV;  ///< Size of the GSV group at hand.
  static CShared<double>
      s_dBinInterval;  ///< Seconds between blocks 95 of a receiver of the $J language: 0.2 or 1.0.

  CShared<double> m_dRawDataInterval = 0.0;
  CShared<int> m_nPortNumber = 0;
  CShared<double> m_dAntennaHeight = 0.0;
  CShared<int> m_nGeoidMode = 0;
  CShared<int> m_nBinaryMessages = 0;
  CShared<int> m_nBadBinaryMessages = 0;
  CShared<int> m_nSentencesRecognised = 0;
  CShared<int> m_nChecksumErrors = 0;
  CString m_strSetupText;
  CShared<bool> m_bExternalPort = false;
  CWordArray m_BinWords;  ///< Behind the record lock.
  CShared<int> m_nBaudrate = 9600;
  CGPSNotification m_Notification;

 private:
  friend struct SentenceTable;

  bool Decode(CString& strMessage, GPSStringType type);
  bool TakeAck(const CString& strMessage);
  double ReadCoordinate(CParser& parser, const char* pszPositive);
  bool MapQuality(int nQuality, int& nSignalType) const;
  void ApplySeparation(CParser& parser, const char* pszName);
  static bool IsWorthPosting(bool bForce);
  static std::unique_ptr<CGPSData> TakeRecord(bool bForce);

  static std::mutex s_RecordMutex;
  static CShared<bool> s_bMonitorNmea;
  static std::atomic<std::uint32_t> m_wNmeaBits;

  mutable std::mutex m_NotificationMutex;
  std::map<GPSNotificationType, GPSNotificationEntry> m_Notifications;
  CShared<bool> m_bAlternateSignalTable = false;
  std::map<int, int> m_AlternateSignalTable;  // behind the record lock
};

#pragma GCC visibility pop
