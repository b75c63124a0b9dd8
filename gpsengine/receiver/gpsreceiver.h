#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <utility>

#include "gpsengine/link/binbuffer.h"
#include "gpsengine/link/serialport.h"
#include "gpsengine/platform/containers.h"
#include "gpsengine/platform/object.h"
#include "gpsengine/platform/shared.h"
#include "gpsengine/receiver/driver.h"
#include "gpsengine/receiver/messages.h"
#include "gpsengine/receiver/sentences.h"
#include "gpsengine/receiver/speedengine.h"

struct CDecoders;
struct CDecoding;
struct CWorkingState;

#pragma GCC visibility push(default)

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
/// of its waits and does nothing on a closed port, unless it says otherwise.
class CGPSReceiver : public CObject {
  DECLARE_DYNAMIC(CGPSReceiver)

 public:
  /// Forgets, for all receivers, what has come since the last start. The baud rate is that of SetProperties.
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
  /// The model sends raw measurements: EnablePostProcessing and SetRawDataOutputInterval have an effect.
  virtual bool HasRawData() { return GetDriver().bRawData; }
  /// For a host that has receivers of its own kind: no model of the library answers otherwise. An RTK
  /// receiver takes no interval of raw measurements.
  ///@{
  virtual bool IsAvailable() const { return true; }
  virtual bool IsRtkReceiver() { return false; }
  virtual bool IsExternalDriver() { return false; }
  virtual bool UseExternalSettings() { return false; }
  ///@}
  /// Bits a second, as the next Initialize opens the port.
  virtual int GetCurrentBaudrate() { return m_nBaudrate; }
  /// Bits a second, as the model leaves its factory.
  virtual int GetDefaultBaudrate() { return GetDriver().nBaudrate; }
  /// Resets the records, opens the port and writes the make's set-up. False if the port does not open.
  virtual bool Initialize();
  /// Opens the port with 8 data bits, no parity, one stop bit and no flow control. False if it does not open.
  virtual bool OpenPort();
  /// Decodes a message of a known kind and publishes. True if a record went to the host.
  virtual bool Parse(CString& strMessage, GPSStringType type);
  /// Decodes one framed message, from which a leading port prompt is removed.
  virtual bool Parse(CString& strMessage);
  /// Called on the reader thread when the line has been silent for a second.
  virtual void KeepAlive() { WriteRegardless(GetDriver().keepAlive); }
  /// Raw output off, port closed.
  virtual void Suspend();
  /// QueryNmeaActive has an effect.
  virtual bool ImplementsQueryNmea() { return !GetDriver().queryNmea.empty(); }
  /// Asks which sentences are on: m_nNmeaGGA and its neighbours.
  virtual void QueryNmeaActive() { Write(GetDriver().queryNmea); }
  /// QueryGpsSettings has an effect.
  virtual bool ImplementsQueryGpsSettings() { return !GetDriver().querySettings.empty(); }
  /// Asks for the settings: masks, position mode, output interval, as far as the model reports them.
  virtual void QueryGpsSettings() { Write(GetDriver().querySettings); }
  /// The model has a beacon receiver: QueryBeacon and SetBeacon have an effect.
  virtual bool ImplementsBeacon() { return !GetDriver().queryBeacon.empty(); }
  /// Asks for the beacon's signal and tuning.
  virtual void QueryBeacon() { Write(GetDriver().queryBeacon); }
  /// The frequency in kHz and the bit rate in bits a second go out as given. An empty bit rate is left to the
  /// receiver.
  virtual void SetBeacon(BEACON_MODE_TYPE mode, CString strFrequency, CString strBitRate);
  /// QuerySatElevMask, where the model has it, and SetSatElevMask have an effect.
  virtual bool ImplementsSetElevMask() { return !GetDriver().setElevMask.empty(); }
  /// Asks for the elevation mask: m_nElevationMask.
  virtual void QuerySatElevMask() { Write(GetDriver().queryElevMask); }
  /// The elevation in whole degrees below which satellites are not used. It goes out as given.
  virtual void SetSatElevMask(int nDegrees);
  /// SetDefaultNMEA and SetGgaOnlyNMEA have an effect.
  virtual bool ImplementsSetNmea() { return !GetDriver().defaultNmea.empty(); }
  /// Switches on what the library decodes: position, motion and satellites.
  virtual void SetDefaultNMEA() { Write(GetDriver().defaultNmea); }
  /// Switches on the position alone. Raw data need it of a receiver that sends both GSA and GSV, beside which
  /// the library passes them over.
  virtual void SetGgaOnlyNMEA() { Write(GetDriver().ggaOnlyNmea); }
  /// Writes a line and "\r\n". Nothing happens on a closed port, or if the line is longer than the port
  /// takes.
  virtual void Send(const CString& strCommand);
  /// Writes bytes. False for none, on a closed port, or if not all went out.
  virtual bool SendBinary(const unsigned char* pData, unsigned short nLength);
  /// ResetAll has an effect.
  virtual bool ImplementsResetAll() { return false; }
  /// Brings the receiver to a known configuration. True if all of it succeeded. Most models initialise first,
  /// which opens a closed port.
  virtual bool ResetAll(bool /*bWaitForAck*/) { return false; }
  /// The kind of a message, by its tag and, where it counts, its checksum.
  virtual GPSStringType GetGPSStringType(const CString& strMessage);
  /// The height of this make's GGA is orthometric.
  virtual bool GGASendsOrthoHeight() { return GetDriver().bOrthoHeight; }
  /// The source of corrections can be chosen: SetDgpsMode has an effect, and so have those of the operations
  /// after it that the model has.
  virtual bool HasDGPSSupport() const { return GetDriver().bDgps; }
  /// Asks for the source of corrections: m_nDgpsMode.
  virtual void QueryDgpsMode() { Write(GetDriver().queryDgps); }
  /// Chooses the source of corrections. A source that the model does not know is ignored.
  virtual void SetDgpsMode(DgpsMode) {}
  /// Asks for the state of the Omnistar subscription: m_szText.
  virtual void QueryOmniStar() { Write(GetDriver().queryOmniStar); }
  /// A message about the corrections that are in use, on or off.
  virtual void DgpsStatusMsg(bool bOn) { Write(bOn ? GetDriver().dgpsStatusOn : GetDriver().dgpsStatusOff); }
  /// Asks for the L-band satellites in reach: m_szText.
  virtual void QueryLbandSatellites() { Write(GetDriver().queryLband); }
  /// Frequency in MHz, bit rate in bits a second.
  virtual void SetLbandFrequency(double /*dFrequency*/, int /*nBitRate*/) {}
  /// Sets the model's user datum, which takes positions from the frame of the corrections to another one.
  virtual void SendCorrection() { Write(GetDriver().sendCorrection); }
  /// Tunes to a CDGPS frequency, in MHz.
  virtual void ChangeCDGPS_Freq(double /*dFrequency*/) {}
  /// Asks for the state of the WAAS corrections: m_szText.
  virtual void QueryWAAS() { Write(GetDriver().queryWaas); }

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
  /// Another baud rate for the next Initialize, up to the next SetProperties: the profile does not hear of
  /// it.
  void UseBaudrate(int nBaudrate) { m_nBaudrate = nBaudrate; }
  /// The open port, for the calls of platform/serial.h; INVALID_HANDLE_VALUE while it is closed.
  void* GetPortHandle() const;
  /// Restarts the estimate of speed and heading, as after a gap in the positions.
  void ResetSpeedEngine();
  /// Declares the satellite table incomplete.
  void InvalidateSVInfo();
  /// Forgets that GSA and GSV have come, beside which the "$PASHR" reports are passed over. For a host that
  /// has just switched one of them off. From any thread.
  void ForgetSatelliteSentences();
  /// Reads the file GPSStatus in the folder of the host's executable, if it is there: a line each of a GGA
  /// quality indicator, a comma and the name of a SignalType, which takes the place of the built-in one.
  void LoadAlternatGPSStatusStrings();

  /// Turns the record of arrived sentence kinds on or off; either way it starts empty.
  void MonitorNmea(bool bOn);
  /// Whether kinds are recorded.
  bool MonitoringNmea() const { return m_bMonitorNmea; }
  /// Whether a sentence of this kind has come. Kinds from 32 up share their mark with those from 0 up.
  bool HaveGotNmea(GPSStringType type) const;

  /// One callback a kind, replacing an earlier one; null for none.
  void AddNotificationCallback(GPSNotificationType type, GPSNotificationCallback pfn, void* pUser);
  /// Whether a callback that is not null is registered.
  bool HasNotificationCallback(GPSNotificationType type) const;

  /// Keeps a message's bytes for the binary decoders. False, with none kept, if there are none.
  bool AttachRawData(const char* pData, int nLength);

  /// The last data, of which the library itself keeps none: they go by the messages. A bool tells whether the
  /// record is valid.
  ///@{
  bool GetLastGPSPositionData(CGPSData& out) const;
  bool GetLastGPSProprietaryMessage(CGPSData& out) const;
  void GetLastGPSRawData(CGPSDataRaw& out) const;
  void GetLastGPSEphemerisData(CGPSDataEphemeris& out) const;
  ///@}

  /// A copy of the last binary block as 16-bit words, each with the earlier byte in its low half. From any
  /// thread; on another one than the main window's it may be a later block than the one of the message at
  /// hand, for which there is m_BinWords.
  void GetBinWords(CWordArray& out) const;

  // Counters of this receiver, which nothing resets. From any thread.
  /// Binary messages that a make's decoder was handed, good and bad.
  int GetBinaryMessages() const { return m_nBinaryMessages; }
  /// Those of them that were too short or damaged.
  int GetBadBinaryMessages() const { return m_nBadBinaryMessages; }
  /// Texts whose tag is known, with right checksums and with wrong ones.
  int GetSentencesRecognised() const { return m_nSentencesRecognised; }
  /// Sentences of the NMEA sort whose checksum was wrong or missing.
  int GetChecksumErrors() const { return m_nChecksumErrors; }
  /// As set up; 0 before.
  int GetPortNumber() const { return m_nPortNumber; }

  /// The working state that all receivers share, held as long as this lives: the reader thread decodes into
  /// it, a driver on the host's thread clears what it has asked for. It is never held over a write, a wait or
  /// a call out to the host.
  class RecordLock {
   public:
    RecordLock() : m_pState(&s_State) { s_StateMutex.lock(); }
    /// The other one leads to nothing any more.
    RecordLock(RecordLock&& other) noexcept : m_pState(std::exchange(other.m_pState, nullptr)) {}
    ~RecordLock() {
      if (m_pState != nullptr) s_StateMutex.unlock();
    }
    /// The state, for the library's own.
    ///@{
    CWorkingState& operator*() const { return *m_pState; }
    CWorkingState* operator->() const { return m_pState; }
    ///@}
    /// Gives the state up early.
    void Unlock() { const RecordLock ends(std::move(*this)); }

   private:
    CWorkingState* m_pState;  // null: given up
  };

  /// Puts the state that all receivers share, when destroyed, back to what it was. For a rehearsal between
  /// two runs.
  class SharedState {
   public:
    SharedState();
    ~SharedState();
    SharedState(const SharedState&) = delete;
    SharedState& operator=(const SharedState&) = delete;

   private:
    const std::unique_ptr<CWorkingState> m_pWas;
  };

 protected:
  /// Degrees and minutes as NMEA writes them, 4737.193 for 47° 37.193', in radians.
  static double GPSPosToRadians(double dPos);
  /// Whether the sentence carries the checksum of what stands between its "$" and its "*".
  bool IsChecksumOK(const CString& strMessage);
  /// Marks a kind as arrived.
  void GotNmea(GPSStringType type);

  /// The slot of a satellite, the first empty one, the first one that is not used. False, with `nSlot`
  /// untouched, if there is none.
  ///@{
  bool GetSatellite(int nPRN, int& nSlot);
  bool GetEmptySatellite(int& nSlot);
  bool GetUnusedSatellite(int& nSlot);
  ///@}

  /// The decoder of the message in its name, on the reader thread: true if it took the message. None lets an
  /// exception out, and each takes the lock by itself.
  ///@{
  bool ProcessGGA(CString& strMessage) { return Decode(strMessage, GPS_STRING_GGA); }
  bool ProcessINGGA(CString& strMessage) { return Decode(strMessage, GPS_STRING_INGGA); }
  bool ProcessGSA(CString& strMessage) { return Decode(strMessage, GPS_STRING_GSA); }
  bool ProcessGSV(CString& strMessage) { return Decode(strMessage, GPS_STRING_GSV); }
  bool ProcessVTG(CString& strMessage) { return Decode(strMessage, GPS_STRING_VTG); }
  bool ProcessCRMSS(CString& strMessage) { return Decode(strMessage, GPS_STRING_MSS); }
  bool ProcessCRMSK(CString& strMessage) { return Decode(strMessage, GPS_STRING_MSK); }
  bool ProcessPARPMD(CString& strMessage) { return Decode(strMessage, GPS_STRING_PMD); }
  bool ProcessPARPER(CString& strMessage) { return Decode(strMessage, GPS_STRING_PER); }
  bool ProcessPARPEM(CString& strMessage) { return Decode(strMessage, GPS_STRING_PEM); }
  bool ProcessPARPRTA(CString& strMessage) { return Decode(strMessage, GPS_STRING_PRTA); }
  bool ProcessPSLIRParNmea(CString& strMessage) { return Decode(strMessage, GPS_STRING_PSLIR_NMEA); }
  bool ProcessPSLIRParMode(CString& strMessage) { return Decode(strMessage, GPS_STRING_PSLIR_MODE); }
  bool ProcessPMCAG(CString& strMessage) { return Decode(strMessage, GPS_STRING_PMCAG); }
  bool ProcessJSHOW(CString& strMessage) { return Decode(strMessage, GPS_STRING_JSHOW); }
  bool ProcessJiOrJgeoOrRd1(CString& strMessage) { return Decode(strMessage, GPS_STRING_JI); }
  bool ProcessLOGLIST(CString& strMessage) { return Decode(strMessage, GPS_STRING_LOGLIST); }
  bool ProcessRXCONFIG(CString& strMessage) { return Decode(strMessage, GPS_STRING_RXCONFIG); }
  bool ProcessECUTOFF(CString& strMessage) { return Decode(strMessage, GPS_STRING_ECUTOFF); }
  bool ProcessOMNIINFO(CString& strMessage) { return Decode(strMessage, GPS_STRING_OMNIINFO); }
  bool ProcessOMNISTAT(CString& strMessage) { return Decode(strMessage, GPS_STRING_OMNISTAT); }
  bool ProcessOMNIHPPOS(CString& strMessage) { return Decode(strMessage, GPS_STRING_OMNIHPPOS); }
  bool ProcessWAAS1(CString& strMessage) { return Decode(strMessage, GPS_STRING_WAAS1); }
  bool ProcessRTKSOURCE(CString& strMessage) { return Decode(strMessage, GPS_STRING_RTKSOURCE); }
  bool ProcessSBASCONTROL(CString& strMessage) { return Decode(strMessage, GPS_STRING_SBASCONTROL); }
  bool ProcessPSRDIFFSOURCE(CString& strMessage) { return Decode(strMessage, GPS_STRING_PSRDIFFSOURCE); }
  bool ProcessProprietary(CString& strMessage);
  bool ProcessPASHR(CString& strMessage);
  bool ProcessPASHR_MBN(const void* pPayload);
  bool ProcessPASHR_PBN(const void* pPayload);
  bool ProcessPASHR_SNV(const void* pPayload);
  bool ProcessBIN();
  bool ProcessAxis4BIN();
  ///@}
  /// Reads whether a sentence is on, from "ON" or "OFF" at the head of the text, or from the rate after a
  /// key, which may be missing. False if the text is neither.
  ///@{
  static bool GetNmeaMsgStatus(const CString& text, NmeaMsgStatus& status);
  static bool GetNmeaMsgStatus(const CString& text, NmeaMsgStatus& status, const CString& key);
  ///@}

  /// Publishes the current raw epoch if its position has come, and empties it. False if there was none, or
  /// too few satellites in it.
  bool PostNewDataRaw();
  /// Publishes the last ephemeris and calls the host back. False if it has no week.
  bool PostEphemerisInfo();
  /// Calls the host's callback of this kind, if there is one, on the calling thread.
  void BroadcastNotification(GPSNotificationType type, CGPSNotification* pData);

  /// The model's row. By default empty: a model without commands.
  virtual const CGPSDriver& GetDriver() const;

  // All command sequences go through these. They check IsStopping before each line, and write nothing once it
  // is true. A line marked goOn defers that to after the next one.
  /// Writes a command that has its line end. Without `bWait` it then sleeps `nTime` milliseconds; with it,
  /// waits that long at most for the acknowledgement, and gives whether it came. False if the command was not
  /// written.
  bool WriteAck(const CString& strCommand, bool bWait, int nTime);
  /// The same for each line of a set, with its wait as the time. Goes on after a failure; true if there was
  /// none.
  bool WriteAck(CGPSDriver::Commands commands, bool bWait);
  /// Writes the lines of a command set, each followed by its wait, whether or not a write succeeds. False,
  /// with nothing written or waited for, if the port is closed or the sequence is to stop.
  bool Write(CGPSDriver::Commands commands);
  /// The same for one line, which has its line end.
  bool Write(const CString& strLine, DWORD nWait);
  /// The same without the test of the port: on a closed one the lines are lost and the waits still run.
  void WriteRegardless(CGPSDriver::Commands commands);

  /// Publishes a copy of the working record if there is something to tell, or in any case with `bForce`, and
  /// gives whether it did. Without the record lock.
  bool PostNewData(bool bForce);

  static CSerialPort m_Port;  ///< The one line, of whichever receiver is live.

  /// The working state by its parts, for a receiver of the host's own that holds a RecordLock; the two that
  /// are shared need none.
  ///@{
  static CGPSData& m_GPSData;                  ///< The working record of all decoders.
  static CGPSDataRaw& m_GPSDataRaw;            ///< The current raw epoch.
  static CGPSDataEphemeris& m_GPSEphemeris;    ///< The last ephemeris.
  static CBinBuffer& m_GPSMessageRaw;          ///< The bytes of the current message, for its decoder.
  static CSpeedEngine& m_SpeedEngine;          ///< Speed and heading from positions.
  static bool& m_bComputeMotion;               ///< No VTG has come: speed is to be computed.
  static bool& m_bGSAReceived;                 ///< A GSA has come since the start.
  static bool& m_bGSVReceived;                 ///< A group of GSV has come since the start.
  static int& m_nNextGSV;                      ///< Number of the GSV sentence expected next.
  static int& m_nTotalGSV;                     ///< Size of the current GSV group.
  static CShared<bool>& m_bMonitorNmea;        ///< The kinds that arrive are recorded.
  static CShared<std::uint32_t>& m_wNmeaBits;  ///< The record, bit n for kind n modulo 32.
  ///@}

  CShared<double> m_dRawDataInterval = 0.0;  ///< Seconds, as last set.
  CShared<int> m_nPortNumber = 0;            ///< As set up.
  CShared<double> m_dAntennaHeight = 0.0;    ///< As set up, metres.
  CShared<int> m_nGeoidMode = 0;             ///< As set up.
  /// What the counters give.
  ///@{
  CShared<int> m_nBinaryMessages = 0;
  CShared<int> m_nBadBinaryMessages = 0;
  CShared<int> m_nSentencesRecognised = 0;
  CShared<int> m_nChecksumErrors = 0;
  ///@}
  CString m_strSetupText;                 ///< As set up; the library does not look at it.
  CShared<bool> m_bExternalPort = false;  ///< As set up: the host moves the bytes.

 private:
  const std::shared_ptr<CWordArray> m_pBinWords = std::make_shared<CWordArray>();

 public:
  /// The block that the current WM_GPS_NEW_BIN stands for, as 16-bit words, each with the earlier byte in its
  /// low half. For the thread of the main window, from the moment that it takes the message out of its queue
  /// until it takes out the next one.
  CWordArray& m_BinWords = *m_pBinWords;

 protected:
  /// The registered callbacks, which a thread may look up while another registers one: through the
  /// operations.
  std::map<GPSNotificationType, GPSNotificationEntry> m_Notifications;
  CShared<int> m_nBaudrate = 9600;                ///< Bits a second, as last set.
  CGPSNotification m_Notification;                ///< What callbacks get.
  CShared<bool> m_bAlternateSignalTable = false;  ///< The file GPSStatus has been read.
  std::map<int, int>
      m_AlternateSignalTable;  ///< Signal types by quality indicator. Guarded by the record lock.

 private:
  friend struct CDecoders;
  friend struct CDecoding;

  bool Decode(CString& strMessage, GPSStringType type);
  bool Decode(CWorkingState& state, CString& message, GPSStringType type);
  bool Publish(RecordLock state, bool force);
  bool DecodePayload(const char* name, int size, bool (CGPSReceiver::*decode)(const void*));
  void PostWords();

  static std::mutex s_StateMutex;
  static CWorkingState& s_State;

  mutable std::mutex m_NotificationMutex;
  CWordArray m_LastWords;  // of the last block, guarded by the record lock
};

#pragma GCC visibility pop
