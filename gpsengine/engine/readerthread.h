#pragma once

#include <cstdint>
#include <memory>

#include "gpsengine/engine/gpsengine.h"
#include "gpsengine/engine/lease.h"
#include "gpsengine/engine/run.h"
#include "gpsengine/platform/file.h"
#include "gpsengine/text/textfile.h"

/// The thread of one run: moves bytes from the port, or lines of a recording, into the engine.
class CReaderThread {
 public:
  /// Starts the thread; null on failure.
  static std::unique_ptr<CWinThread> Begin(std::shared_ptr<CEngineLease> lease, std::shared_ptr<CRun> run,
                                           bool emulation);

 private:
  CReaderThread(std::shared_ptr<CEngineLease> lease, std::shared_ptr<CRun> run, bool emulation);

  static unsigned ThreadMain(void* param);
  void Run();

  /// The scope of one step on the engine.
  class Step {
   public:
    explicit Step(const CReaderThread& reader);
    /// False if the run is over for this thread.
    explicit operator bool() const { return m_pEngine != nullptr; }
    CGPSEngine* operator->() const { return m_pEngine; }
    /// The selected receiver; null if there is none or the run is over.
    CGPSReceiver* Receiver() const;

   private:
    const CEngineLease::Hold m_Hold;
    CGPSEngine* const m_pEngine;
  };

  /// Waits on the stop event; false if the run should end.
  bool Pause(DWORD ms);

  // The live loop.
  void ReadPort();
  bool ReadPass(HANDLE port);
  bool KeepAlive();
  void ResetAfterSilence();
  void Take(const char* data, int length);

  // Recording.
  void Record(const char* data, int length);
  void OpenRecording();
  void GiveUpRecording();

  // Playback.
  void PlayRecording();
  void StopRun();
  CString FindRecording();
  bool ReadLine(CTextFile& file, CString& line);
  void ShowPause(const CString& line);

  const std::shared_ptr<CEngineLease> m_pLease;
  const std::shared_ptr<CRun> m_pRun;
  const bool m_bEmulation;
  std::uint64_t m_nLastData = 0;  // milliseconds, of the last record or reset
  CFile m_Recording;
  bool m_bRecording = false;
};
