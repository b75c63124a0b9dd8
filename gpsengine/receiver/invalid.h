#pragma once

#include "gpsengine/platform/trace.h"

/// A decoder's way out of a sentence that lacks a field. A receiver that has no fix sends such sentences all
/// the time, so that this is no exception.
inline bool InvalidSentence(const char* pszName) {
  Trace("Invalid %s string.\n", pszName);
  return false;
}
