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
  GPS_ENGINE_NO_RECEIVER = 1,    ///< SetReceiver has selected none.
  GPS_ENGINE_INIT_FAILED = 2,    ///< The receiver's port does not open; platform/file.h tells why.
  GPS_ENGINE_THREAD_FAILED = 3,  ///< The system has no thread left.
};

/// What a host creates first and keeps as long as it wants GPS data. It owns one receiver of every model and,
/// from Start to Stop, the thread that reads the selected one.
///
/// Use: FindReceiver, SetupReceiver on the result, SetReceiver, set the public fields as wanted, Start.
/// Records arrive as messages in the application's main window (receiver/messages.h). All operations belong
/// to one host thread; the public flags may be set while the engine runs.
class CGPSEngine {
 public:
  /// Makes one receiver of every model, with none selected.
  CGPSEngine();
  /// Stops, and deletes the receivers. Takes a second at most, as Stop does: receivers of which a callback of
  /// the host has not returned by then are never deleted, so that the callback has something to return to.
  ~CGPSEngine();
  CGPSEngine(const CGPSEngine&) = delete;
  CGPSEngine& operator=(const CGPSEngine&) = delete;

  /// Adds a receiver of the host's own, ahead of the last one, and takes ownership. False, with the caller
  /// keeping it, if the name is taken.
  bool AddReceiver(CGPSReceiver* pReceiver);
  /// The receiver of exactly this name, or else the last one, which is "Other".
  CGPSReceiver* FindReceiver(CString name);
  /// All receivers, in the order in which hosts list them. They belong to the engine.
  const std::vector<std::unique_ptr<CGPSReceiver>>& GetReceivers() const { return m_Receivers; }
  /// Gives every receiver its baud rate; the first Start does it otherwise.
  void InitReceivers();
  /// Stops, and selects a receiver of this engine, or none.
  void SetReceiver(CGPSReceiver* pReceiver);
  /// The selected receiver, or null.
  CGPSReceiver* GetReceiver() const { return m_pReceiver; }

  /// Stops what runs, sets the receiver up and starts reading. False leaves the reason in GetLastError.
  bool Start();
  /// Ends the run, within a second, and suspends the receiver, even if nothing runs. From within a callback
  /// it ends the run at once: of what the callback was called for, and of the bytes behind it, nothing comes
  /// any more.
  void Stop();
  /// The same as Stop and Start, under the names that a host's menu has.
  ///@{
  void Pause() { Stop(); }
  bool Resume() { return Start(); }
  ///@}
  /// From a Start that gave true until a Stop has ended the run. A run whose port has gone away is active all
  /// the same.
  bool IsActive() const { return m_hStopEvent != nullptr; }
  /// Why the last Start failed, as a number and as a text for the user.
  ///@{
  GPS_ENGINE_ERROR GetLastError() const { return m_nLastError; }
  CString GetLastErrorString() const;
  ///@}

  /// Takes bytes of the selected receiver in and decodes every message that they complete. True if a record
  /// went to the host. The reader thread calls it, and so may a host that moves the bytes itself, from any
  /// one thread, but not from within a callback. An exception of the host's, out of a receiver class of its
  /// own, say, passes through; the message that led to it is done with.
  bool UpdateGPSBuffer(CBinBuffer& data);
  /// Messages framed by UpdateGPSBuffer since the engine was made.
  long long GetMessages() const { return m_nMessages; }
  /// How often the stream was thrown away for being too long without a whole message.
  int GetDroppedBuffers() const { return m_nDroppedBuffers; }

  // The fields stand in the order in which hosts know them.

 private:
  CShared<CWinThread*> m_pThread = nullptr;      // of the run under way
  CShared<HANDLE> m_hStopEvent = nullptr;        // of the run under way; null while idle
  CShared<CGPSReceiver*> m_pReceiver = nullptr;  // one of m_Receivers
  CBinBuffer m_Buffer;                           // the stream

 public:
  CComBuffer m_ComBuffer;  ///< The text of the messages, for a host that shows it.
  /// Play a recording instead of reading the port; holds from the next Start.
  CShared<bool> m_bEmulation = false;
  CShared<bool> m_bGotData = true;         ///< Set when a read led to a record; the host may clear it.
  CShared<bool> m_bAttachRawData = false;  ///< Keep each message's bytes, which raw data need.
  CShared<bool> m_bRecordRaw =
      false;  ///< Write the port's bytes to m_strRecordFile. Goes back if that fails.
  CString m_strRecordFile = "Emulation.log";  ///< Set before m_bRecordRaw.
  /// Folder, with its separator, of the "Emulation.log" that is played if m_strEmulationFile is no file.
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
  int m_nStreamEnds = 0;         // the ends of runs when the stream was last added to
  bool m_bUpdating = false;
  bool m_bAttached = false;  // the receiver holds the bytes of a message
  CShared<long long> m_nMessages = 0;
};

#pragma GCC visibility pop
