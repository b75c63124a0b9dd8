#pragma once

#include "gpsengine/platform/types.h"

#pragma GCC visibility push(default)

/// Copies entry `nId` of the library's string table, cut to `nBuffer` - 1 characters, and gives its length; 0
/// if there is no such entry.
int LoadStringW(UINT nId, WCHAR* pBuffer, int nBuffer);

/// What a dialog template says, for a host that wants to show it.
struct DialogTemplate {
  UINT nId;  ///< As FindDialogTemplate takes it.
  /// Dialog units.
  ///@{
  short nWidth, nHeight;
  ///@}
  const char* pszFont;   ///< Name of the font, of nFontSize points.
  short nFontSize;       ///< Points.
  const char* pszTitle;  ///< For the title bar.
  const char* pszText;   ///< The one static text.
  /// Where the text stands, in dialog units.
  ///@{
  short nTextX, nTextY, nTextWidth, nTextHeight;
  ///@}
};

/// The template with this number, or null.
const DialogTemplate* FindDialogTemplate(UINT nId);

#pragma GCC visibility pop
