#include "gpsengine/platform/trace.h"
#include "gpsengine/receiver/gpsreceiver.h"
#include "gpsengine/reports/fields.h"
#include "gpsengine/text/number.h"
#include "gpsengine/text/parser.h"

// The settings of Starlink receivers, and the elevation mask of the Sokkia Axis.

// Output rates, by key; a sentence that is not named is not known of:
//   $PSLIR,PAR,NMEA,GGA:1.0,GSA:1.0,GSV:0,VTG:0.2*1F
bool CGPSReceiver::ProcessPSLIRParNmea(CString& strMessage) try {
  CGPSStatusData& status = m_GPSData.m_Status;
  CParser parser(strMessage, ",", true);
  for (int nTagField = 0; nTagField < 3; ++nTagField) parser.SkipField();
  for (const NmeaField& field : kNmeaFields)
    if (!GetNmeaMsgStatus(strMessage, status.*field.pStatus, field.pszRateKey)) return false;
  status.m_bNmeaStatusValid = status.m_bStatusUpdated = true;
  return true;
} catch (const CException&) {
  Trace("Invalid PSLIR,PAR,NMEA string.\n");
  return false;
}

// Elevation mask in degrees. A report without it confirms the mask that is known:
//   $PSLIR,PAR,MODE,DYN:2,ELM:8*09
bool CGPSReceiver::ProcessPSLIRParMode(CString& strMessage) try {
  CGPSStatusData& status = m_GPSData.m_Status;
  CParser parser(strMessage, ",", true);
  for (int nTagField = 0; nTagField < 3; ++nTagField) parser.SkipField();
  const CString key("ELM:");
  const int nKey = strMessage.Find(key);
  if (nKey >= 0 && !ParseInt(strMessage.Mid(nKey + key.GetLength()), &status.m_nElevationMask)) return false;
  status.m_bElevationMaskValid = status.m_bStatusUpdated = true;
  return true;
} catch (const CException&) {
  Trace("Invalid PSLIR,PAR,MODE string.\n");
  return false;
}

// Report 908 of a Sokkia Axis has the elevation mask in the place where the command to set it has it:
//   $PMCAG,908,15,,,,12.0,,,,,,,,,,,*5C
bool CGPSReceiver::ProcessPMCAG(CString& strMessage) try {
  CGPSStatusData& status = m_GPSData.m_Status;
  CParser parser(strMessage, ",", true);
  CString report;
  double mask = 0.0;
  parser.SkipField();
  parser.GetNextString(report);
  if (report != "908") return false;
  for (int nField = 3; nField <= 6; ++nField) parser.SkipField();
  parser.GetDouble(mask);
  if (!Truncate(mask, status.m_nElevationMask)) return false;
  status.m_bElevationMaskValid = status.m_bStatusUpdated = true;
  return true;
} catch (const CException&) {
  Trace("Invalid PMCAG string.\n");
  return false;
}
