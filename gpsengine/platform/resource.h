#pragma once

#include "gpsengine/platform/types.h"

#pragma GCC visibility push(default)

/// Copies entry `nId` of the library's string table, cut to `nBuffer` - 1 characters, and gives its length; 0
/// if there is no such entry.
int LoadStringW(UINT nId, WCHAR* pBuffer, int nBuffer);

/// What a dialog template says, for a host that wants to show it.
struct DialogTemplate {
  UINT nId;
  short nWidth, nHeight;  ///< Dialog units.
  const char* pszFont;
  short nFontSize;
  const char* pszTitle;
  const char* pszText;  ///< The one static text.
  short nTextX, nTextY, nTextWidth, nTextHeight;
};

/// The template with this number, or null.
const DialogTemplate* FindDialogTemplate(UINT nId);

#pragma GCC visibility pop
