#include "gpsengine/receiver/decoders.h"
#include "gpsengine/reports/fields.h"
#include "gpsengine/text/number.h"
#include "gpsengine/text/parser.h"

// The settings of Starlink receivers, and the elevation mask of the Sokkia Axis.

// Output rates, by key; a sentence that is not named is not known of:
//   $PSLIR,PAR,NMEA,GGA:1.0,GSA:1.0,GSV:0,VTG:0.2*1F
bool CDecoders::PSLIRParNmea(CGPSStatusData& status, CString& message) {
  CParser parser(message, ",", true);
  for (int tag_field = 0; tag_field < 3; ++tag_field) parser.SkipField();
  for (const NmeaField& field : kNmeaFields)
    if (!CGPSReceiver::GetNmeaMsgStatus(message, status.*field.state, field.rate_key)) return false;
  status.m_bNmeaStatusValid = status.m_bStatusUpdated = true;
  return true;
}

// Elevation mask in degrees. A report without it confirms the mask that is known:
//   $PSLIR,PAR,MODE,DYN:2,ELM:8*09
bool CDecoders::PSLIRParMode(CGPSStatusData& status, CString& message) {
  CParser parser(message, ",", true);
  for (int tag_field = 0; tag_field < 3; ++tag_field) parser.SkipField();
  const CString key("ELM:");
  const int place = message.Find(key);
  if (place >= 0 && !ParseInt(message.Mid(place + key.GetLength()), &status.m_nElevationMask)) return false;
  status.m_bElevationMaskValid = status.m_bStatusUpdated = true;
  return true;
}

// Report 908 of a Sokkia Axis has the elevation mask in the place where the command to set it has it:
//   $PMCAG,908,15,,,,12.0,,,,,,,,,,,*5C
bool CDecoders::PMCAG(CGPSStatusData& status, CString& message) {
  CParser parser(message, ",", true);
  CString report;
  double mask = 0.0;
  parser.SkipField();
  parser.GetNextString(report);
  if (report != "908") return false;
  for (int field = 3; field <= 6; ++field) parser.SkipField();
  parser.GetDouble(mask);
  if (!Truncate(mask, status.m_nElevationMask)) return false;
  status.m_bElevationMaskValid = status.m_bStatusUpdated = true;
  return true;
}
