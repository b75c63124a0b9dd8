#pragma once

#include <algorithm>
#include <array>
#include <iterator>
#include <string_view>

#include "gpsengine/receiver/gpsreceiver.h"

/// Everything that is told by its first characters: one row a tag.
struct SentenceTable {
  using Decoder = bool (CGPSReceiver::*)(CString&);

  struct Row {
    GPSStringType type;
    std::u16string_view tag;
    Decoder decoder;  ///< Null: recognised only, or decoded by the dispatch itself.
  };

  using R = CGPSReceiver;
  static constexpr Row kRows[] = {
      {GPS_STRING_ALM, u"$GPALM", nullptr},
      {GPS_STRING_GGA, u"$GPGGA", &R::ProcessGGA},
      {GPS_STRING_INGGA, u"$INGGA", &R::ProcessINGGA},
      {GPS_STRING_GLL, u"$GPGLL", nullptr},
      {GPS_STRING_GSA, u"$GPGSA", &R::ProcessGSA},
      {GPS_STRING_GSV, u"$GPGSV", &R::ProcessGSV},
      {GPS_STRING_RMC, u"$GPRMC", nullptr},
      {GPS_STRING_VTG, u"$GPVTG", &R::ProcessVTG},
      {GPS_STRING_ZDA, u"$GPZDA", nullptr},
      {GPS_STRING_ALM, u"$GNALM", nullptr},
      {GPS_STRING_GGA, u"$GNGGA", &R::ProcessGGA},
      {GPS_STRING_GLL, u"$GNGLL", nullptr},
      {GPS_STRING_GSA, u"$GNGSA", &R::ProcessGSA},
      {GPS_STRING_GSV, u"$GNGSV", &R::ProcessGSV},
      {GPS_STRING_RMC, u"$GNRMC", nullptr},
      {GPS_STRING_VTG, u"$GNVTG", &R::ProcessVTG},
      {GPS_STRING_ZDA, u"$GNZDA", nullptr},
      {GPS_STRING_MSS, u"$CRMSS", &R::ProcessCRMSS},
      {GPS_STRING_MSS, u"$GPMSS", &R::ProcessCRMSS},
      {GPS_STRING_MSK, u"$CRMSK", &R::ProcessCRMSK},
      {GPS_STRING_MSK, u"$GPMSK", &R::ProcessCRMSK},
      {GPS_STRING_PEM, u"PEM:", &R::ProcessPARPEM},
      {GPS_STRING_PMD, u"PMD:", &R::ProcessPARPMD},
      {GPS_STRING_PRTA, u"PRTA:", &R::ProcessPARPRTA},
      {GPS_STRING_PER, u"PER:", &R::ProcessPARPER},
      {GPS_STRING_PASHR, u"$PASHR", nullptr},
      {GPS_STRING_PSLIR_NMEA, u"$PSLIR,PAR,NMEA", &R::ProcessPSLIRParNmea},
      {GPS_STRING_PSLIR_MODE, u"$PSLIR,PAR,MODE", &R::ProcessPSLIRParMode},
      {GPS_STRING_PMCAG, u"$PMCAG", &R::ProcessPMCAG},
      {GPS_STRING_JSHOW, u"$>JSHOW", &R::ProcessJSHOW},
      {GPS_STRING_JI, u"$>JI", &R::ProcessJiOrJgeoOrRd1},
      {GPS_STRING_JGEO, u"$>JGEO", &R::ProcessJiOrJgeoOrRd1},
      {GPS_STRING_RD1, u"$RD1", &R::ProcessJiOrJgeoOrRd1},
      {GPS_STRING_BIN, u"$BIN", nullptr},
      {GPS_STRING_LOGLIST, u"#LOGLISTA", &R::ProcessLOGLIST},
      {GPS_STRING_RXCONFIG, u"#RXCONFIGA", &R::ProcessRXCONFIG},
      {GPS_STRING_ECUTOFF, u"#ECUTOFF", &R::ProcessECUTOFF},
      {GPS_STRING_OMNIINFO, u"#OMNIINFO", &R::ProcessOMNIINFO},
      {GPS_STRING_OMNISTAT, u"#OMNISTAT", &R::ProcessOMNISTAT},
      {GPS_STRING_OMNIHPPOS, u"#OMNIHPPOS", &R::ProcessOMNIHPPOS},
      {GPS_STRING_WAAS1, u"#WAAS1", &R::ProcessWAAS1},
      {GPS_STRING_RTKSOURCE, u"#RTKSOURCE", &R::ProcessRTKSOURCE},
      {GPS_STRING_SBASCONTROL, u"#SBASCONTROL", &R::ProcessSBASCONTROL},
      {GPS_STRING_PSRDIFFSOURCE, u"#PSRDIFFSOURCE", &R::ProcessPSRDIFFSOURCE},
  };

  /// The row whose tag stands at the head of the message, or null.
  static const Row* Find(std::u16string_view message);
  /// The decoder of a kind, or null. It runs with the record lock held.
  static Decoder DecoderOf(GPSStringType type);
  /// Kinds up to the border carry a checksum that counts.
  static constexpr bool IsChecksumTested(GPSStringType type) { return type <= kChecksumBorder; }

 private:
  static constexpr int kChecksumBorder = 15;
};
