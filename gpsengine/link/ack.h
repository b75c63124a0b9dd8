#pragma once

#include "gpsengine/link/precisetimer.h"
#include "gpsengine/platform/dialog.h"
#include "gpsengine/platform/shared.h"
#include "gpsengine/records/gpsdata.h"

#pragma GCC visibility push(default)

/// Waits for a receiver's acknowledgement; one object per wait. The host's thread waits while the reader
/// thread reads, and keeps handling its window messages.
///
/// Constructing the object arms the wait: an acknowledgement that comes from then on counts, so it is
/// constructed before the command is written.
class CAck : public CDialog {
 public:
  /// An acknowledgement has been published since the last CAck was constructed.
  static CShared<bool> m_bGotAck;

  /// Arms the wait. The parent is ignored.
  explicit CAck(CWnd* pParent = nullptr);
  ~CAck() override;

  /// True if the acknowledgement comes within `nTimeout` milliseconds, which must be above 0; one that
  /// arrives just as the time runs out still counts. Runs on the thread that created the dialog, with the
  /// wait cursor on.
  bool Wait(int nTimeout);
  /// Notes a record about to be published, on the reader thread.
  static void OnNewGPSData(CGPSData* pData);
  /// The tick that ends the wait.
  long OnPreciseTimer(unsigned int wParam, long lParam);

 protected:
  /// The tick of the timer, and the map of the base class.
  ///@{
  const AFX_MSGMAP* GetMessageMap() const override;
  static const AFX_MSGMAP* _GetBaseMessageMap();
  ///@}

 private:
  CPreciseTimer m_Timer;
  bool m_bTimedOut = false;
};

#pragma GCC visibility pop
