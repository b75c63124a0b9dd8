#pragma once

#include <string>

#include "gpsengine/platform/cstring.h"
#include "gpsengine/platform/window.h"

#pragma GCC visibility push(default)

/// The host application: its main window, which gets the library's messages, and its profile. A host creates
/// it first and keeps it until it exits. All operations may be called from any thread unless they say
/// otherwise.
class CWinApp {
 public:
  /// `name` names the profile: the file name.ini in the user's configuration folder.
  explicit CWinApp(const CString& name);
  virtual ~CWinApp();
  CWinApp(const CWinApp&) = delete;
  CWinApp& operator=(const CWinApp&) = delete;

  /// The window that gets the library's messages; null for none. Destroying the window resets this to none.
  void SetMainWnd(const CWnd* pWnd);

  /// A whole number of the profile, or `nDefault` if there is none or the file cannot be read.
  int GetProfileInt(const CString& section, const CString& entry, int nDefault);
  /// False if the profile cannot be written. The file is written whole and renamed into place.
  bool WriteProfileInt(const CString& section, const CString& entry, int nValue);
  /// A text of the profile, trimmed, or `strDefault` if there is none.
  CString GetProfileString(const CString& section, const CString& entry, const CString& strDefault = "");
  /// False if the profile cannot be written, or if the text contains a line end.
  bool WriteProfileString(const CString& section, const CString& entry, const CString& strValue);
  /// Removes an entry if it exists. False if the profile cannot be written.
  bool RemoveProfileEntry(const CString& section, const CString& entry);
  /// Uses another file for the profile.
  void SetProfilePath(const CString& path);
  /// The file that holds the profile. It may not exist yet.
  CString GetProfilePath() const;

  /// Waits for the next message in the calling thread's queue and dispatches it. False on WM_QUIT.
  virtual bool PumpMessage();
  /// Pumps messages until WM_QUIT.
  void Run();
  /// Shows (1) or hides (-1) the wait cursor; calls nest. The default does nothing.
  virtual void DoWaitCursor(int nCode);

 private:
  struct Profile;
  CString m_strProfilePath;
};

/// The application, or null.
CWinApp* AfxGetApp();
/// The window that gets the library's messages, or null.
HWND AfxGetMainWnd();

/// Shows the wait cursor during its lifetime.
class CWaitCursor {
 public:
  CWaitCursor();
  ~CWaitCursor();
  CWaitCursor(const CWaitCursor&) = delete;
  CWaitCursor& operator=(const CWaitCursor&) = delete;
};

#pragma GCC visibility pop
