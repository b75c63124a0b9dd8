#pragma once

#include "gpsengine/platform/cstring.h"

#pragma GCC visibility push(default)

/// Copies entry `nId` of the library's string table, truncated to `nBuffer` - 1 characters. Returns the
/// length, 0 if there is no such entry.
int LoadStringW(UINT nId, WCHAR* pBuffer, int nBuffer);
/// The same as a text. A message box tells of an entry that is missing.
CString LoadText(UINT nId);

/// The contents of a dialog template, for a host that wants to show it.
struct DialogTemplate {
  UINT nId;  ///< Its number, for FindDialogTemplate.
  /// Dialog units.
  ///@{
  short nWidth, nHeight;
  ///@}
  const char* pszFont;   ///< Name of the font, of nFontSize points.
  short nFontSize;       ///< Points.
  const char* pszTitle;  ///< Text of the title bar.
  const char* pszText;   ///< The one static text.
  /// Position of the text, in dialog units.
  ///@{
  short nTextX, nTextY, nTextWidth, nTextHeight;
  ///@}
};

/// The template with this number, or null.
const DialogTemplate* FindDialogTemplate(UINT nId);

#pragma GCC visibility pop
