#pragma once

#include <memory>
#include <mutex>
#include <vector>

#include "gpsengine/engine/combuffer.h"
#include "gpsengine/link/binbuffer.h"
#include "gpsengine/platform/event.h"
#include "gpsengine/platform/shared.h"
#include "gpsengine/platform/thread.h"
#include "gpsengine/receiver/gpsreceiver.h"

class CEngineLease;
class CReaderThread;
class CRun;

#pragma GCC visibility push(default)

/// Why a Start failed.
enum GPS_ENGINE_ERROR : int {
  GPS_ENGINE_OK = 0,
  GPS_ENGINE_NO_RECEIVER = 1,  ///< No receiver is selected.
  GPS_ENGINE_INIT_FAILED = 2,  ///< The receiver's port cannot be opened; see GetLastError of platform/file.h.
  GPS_ENGINE_THREAD_FAILED = 3,  ///< The reader thread could not be started.
};

/// The host's entry point. Owns one receiver of every model and, from Start to Stop, the thread that reads
/// the selected one.
///
/// Use: FindReceiver, SetupReceiver on the result, SetReceiver, set the public fields as wanted, Start.
/// Records arrive as messages in the application's main window (receiver/messages.h). All operations belong
/// to one host thread; the public flags may be set while the engine runs.
class CGPSEngine {
 public:
  /// Creates one receiver of every model; none is selected.
  CGPSEngine();
  /// Stops, and deletes the receivers, within a second like Stop. If a host callback has not returned by
  /// then, the receivers are leaked on purpose, so that it can return into them.
  ~CGPSEngine();
  CGPSEngine(const CGPSEngine&) = delete;
  CGPSEngine& operator=(const CGPSEngine&) = delete;

  /// Adds a receiver of the host's own before the last one and takes ownership. If the name is taken, returns
  /// false and the caller keeps it.
  bool AddReceiver(CGPSReceiver* pReceiver);
  /// The receiver with exactly this name, or else the last one, "Other".
  CGPSReceiver* FindReceiver(CString name);
  /// All receivers, in display order. Owned by the engine.
  const std::vector<std::unique_ptr<CGPSReceiver>>& GetReceivers() const { return m_Receivers; }
  /// Sets every receiver's baud rate. Called by the first Start if the host has not.
  void InitReceivers();
  /// Stops, and selects a receiver of this engine, or none.
  void SetReceiver(CGPSReceiver* pReceiver);
  /// The selected receiver, or null.
  CGPSReceiver* GetReceiver() const { return m_pReceiver; }

  /// Stops the current run, initializes the receiver and starts reading. On false, see GetLastError.
  bool Start();
  /// Ends the run within a second and suspends the receiver, even if no run is active. Called from a
  /// callback, it ends the run at once: neither the current message nor later bytes lead to anything more.
  void Stop();
  /// Aliases of Stop and Start.
  ///@{
  void Pause() { Stop(); }
  bool Resume() { return Start(); }
  ///@}
  /// True from a successful Start until the run has been stopped, even if the port has disappeared.
  bool IsActive() const { return m_hStopEvent != nullptr; }
  /// Why the last Start failed, as a code and as a text for the user.
  ///@{
  GPS_ENGINE_ERROR GetLastError() const { return m_nLastError; }
  CString GetLastErrorString() const;
  ///@}

  /// Adds bytes from the selected receiver and decodes every completed message. True if a record was
  /// published. Called by the reader thread, or by a host that moves the bytes itself, from one thread and
  /// not from a callback. Exceptions from host code, such as a receiver class of its own, propagate; the
  /// message that caused one is not decoded again.
  bool UpdateGPSBuffer(CBinBuffer& data);
  /// Messages framed by UpdateGPSBuffer since construction.
  long long GetMessages() const { return m_nMessages; }
  /// How often the stream was discarded for growing too long without a whole message.
  int GetDroppedBuffers() const { return m_nDroppedBuffers; }

  // The order of the fields is part of the interface.

 private:
  CShared<CWinThread*> m_pThread = nullptr;      // of the run under way
  CShared<HANDLE> m_hStopEvent = nullptr;        // of the run under way; null while idle
  CShared<CGPSReceiver*> m_pReceiver = nullptr;  // one of m_Receivers
  CBinBuffer m_Buffer;                           // the stream

 public:
  CComBuffer m_ComBuffer;  ///< The text of the messages, for a host that shows it.
  /// Play a recording instead of reading the port; holds from the next Start.
  CShared<bool> m_bEmulation = false;
  CShared<bool> m_bGotData = true;         ///< Set when a read produced a record; the host may clear it.
  CShared<bool> m_bAttachRawData = false;  ///< Keep each message's bytes, which raw data need.
  CShared<bool> m_bRecordRaw = false;  ///< Record the port's bytes to m_strRecordFile. Reset if that fails.
  CString m_strRecordFile = "Emulation.log";  ///< Set before m_bRecordRaw.
  /// Folder, with trailing separator, of the "Emulation.log" that is played if m_strEmulationFile does not
  /// exist.
  CString m_strEmulationDir;

 private:
  CShared<int> m_nDroppedBuffers = 0;

 public:
  CString m_strEmulationFile;  ///< The recording to play.

 private:
  friend class CReaderThread;
  class Update;

  std::shared_ptr<CRun> TakeRun();
  void EndRun();
  bool UpdateGPSBuffer(const char* pData, int nLength, int nEnds);
  bool Append(const char* pData, int nLength, int nEnds);
  CString TakeMessage(CGPSReceiver& receiver, bool& more);
  void Forward(CString& message);

  std::vector<std::unique_ptr<CGPSReceiver>> m_Receivers;
  bool m_bReceiversInitialized = false;
  GPS_ENGINE_ERROR m_nLastError = GPS_ENGINE_OK;

  const std::shared_ptr<CEngineLease> m_pLease;
  std::mutex m_RunMutex;
  std::shared_ptr<CRun> m_pRun;  // the run under way; null while idle
  int m_nStreamEnds = 0;         // the count of ended runs when the stream was last added to
  bool m_bUpdating = false;
  bool m_bAttached = false;  // the receiver holds the bytes of a message
  CShared<long long> m_nMessages = 0;
};

#pragma GCC visibility pop
