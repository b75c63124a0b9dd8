#pragma once

#include <cmath>
#include <limits>
#include <string>

#include "gpsengine/platform/cstring.h"
#include "gpsengine/records/gpsdata.h"

// What the report decoders of several makes share.

/// A sentence whose output receivers report on: its name, its key in a list of rates, and where its state is
/// kept.
struct NmeaField {
  const char* name;
  const char* rate_key;
  NmeaMsgStatus CGPSStatusData::*state;
};
inline constexpr NmeaField kNmeaFields[] = {
    {"GPGGA", "GGA:", &CGPSStatusData::m_nNmeaGGA}, {"GPGSA", "GSA:", &CGPSStatusData::m_nNmeaGSA},
    {"GPZDA", "ZDA:", &CGPSStatusData::m_nNmeaZDA}, {"GPGLL", "GLL:", &CGPSStatusData::m_nNmeaGLL},
    {"GPVTG", "VTG:", &CGPSStatusData::m_nNmeaVTG}, {"GPGSV", "GSV:", &CGPSStatusData::m_nNmeaGSV},
};

/// Drops the decimals. False, with `whole` untouched, for a number that has no place in an int.
inline bool Truncate(double number, int& whole) {
  if (!(std::fabs(number) <= std::numeric_limits<int>::max())) return false;
  whole = static_cast<int>(number);
  return true;
}

/// Hands a text on to the host, as 8-bit text.
inline void StoreText(CGPSStatusData& status, const CString& text) {
  std::string bytes;
  text.ToBytes(bytes);
  status.SetText(bytes.data(), static_cast<int>(bytes.size()));
}
