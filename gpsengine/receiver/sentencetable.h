#pragma once

#include <algorithm>
#include <array>
#include <iterator>
#include <string_view>

#include "gpsengine/receiver/decoders.h"

/// What is told by its first characters.
struct SentenceRow {
  GPSStringType type;
  std::u16string_view tag;
  CDecoders::Decoder* decoder = nullptr;  ///< Null: recognised only, or decoded by the dispatch itself.
  const char* name = "";                  ///< For the trace, if a CException may leave the decoder.
};

/// One row a tag.
struct SentenceTable {
  using Row = SentenceRow;

  /// A report on the receiver's settings.
  template <CDecoders::Report decode>
  static bool Status(const CDecoding& in) {
    return decode(in.state.record.m_Status, in.message);
  }

  using D = CDecoders;
  // Of those that begin alike, the ones that come most often are looked at first.
  static constexpr Row kRows[] = {
      {GPS_STRING_ALM, u"$GPALM"},
      {GPS_STRING_GSV, u"$GPGSV", D::GSV},
      {GPS_STRING_GSA, u"$GPGSA", D::GSA},
      {GPS_STRING_GGA, u"$GPGGA", D::GGA},
      {GPS_STRING_INGGA, u"$INGGA", D::INGGA},
      {GPS_STRING_GLL, u"$GPGLL"},
      {GPS_STRING_RMC, u"$GPRMC"},
      {GPS_STRING_VTG, u"$GPVTG", D::VTG},
      {GPS_STRING_ZDA, u"$GPZDA"},
      {GPS_STRING_ALM, u"$GNALM"},
      {GPS_STRING_GSV, u"$GNGSV", D::GSV},
      {GPS_STRING_GSA, u"$GNGSA", D::GSA},
      {GPS_STRING_GGA, u"$GNGGA", D::GGA},
      {GPS_STRING_GLL, u"$GNGLL"},
      {GPS_STRING_RMC, u"$GNRMC"},
      {GPS_STRING_VTG, u"$GNVTG", D::VTG},
      {GPS_STRING_ZDA, u"$GNZDA"},
      {GPS_STRING_MSS, u"$CRMSS", Status<D::CRMSS>, "CRMSS"},
      {GPS_STRING_MSS, u"$GPMSS", Status<D::CRMSS>, "CRMSS"},
      {GPS_STRING_MSK, u"$CRMSK", Status<D::CRMSK>, "CRMSK"},
      {GPS_STRING_MSK, u"$GPMSK", Status<D::CRMSK>, "CRMSK"},
      {GPS_STRING_PEM, u"PEM:", Status<D::PARPEM>, "PAR PEM"},
      {GPS_STRING_PMD, u"PMD:", Status<D::PARPMD>, "PAR PMD"},
      {GPS_STRING_PRTA, u"PRTA:", Status<D::PARPRTA>, "PAR PRTA"},
      {GPS_STRING_PER, u"PER:", Status<D::PARPER>, "PAR PER"},
      {GPS_STRING_PASHR, u"$PASHR"},
      {GPS_STRING_PSLIR_NMEA, u"$PSLIR,PAR,NMEA", Status<D::PSLIRParNmea>, "PSLIR,PAR,NMEA"},
      {GPS_STRING_PSLIR_MODE, u"$PSLIR,PAR,MODE", Status<D::PSLIRParMode>, "PSLIR,PAR,MODE"},
      {GPS_STRING_PMCAG, u"$PMCAG", Status<D::PMCAG>, "PMCAG"},
      {GPS_STRING_JSHOW, u"$>JSHOW", Status<D::JSHOW>, "JSHOW"},
      {GPS_STRING_JI, u"$>JI", Status<D::JiOrJgeoOrRd1>},
      {GPS_STRING_JGEO, u"$>JGEO", Status<D::JiOrJgeoOrRd1>},
      {GPS_STRING_RD1, u"$RD1", Status<D::JiOrJgeoOrRd1>},
      {GPS_STRING_BIN, u"$BIN"},
      {GPS_STRING_LOGLIST, u"#LOGLISTA", Status<D::LOGLIST>},
      {GPS_STRING_RXCONFIG, u"#RXCONFIGA", Status<D::RXCONFIG>},
      {GPS_STRING_ECUTOFF, u"#ECUTOFF", Status<D::ECUTOFF>},
      {GPS_STRING_OMNIINFO, u"#OMNIINFO", Status<D::OMNIINFO>},
      {GPS_STRING_OMNISTAT, u"#OMNISTAT", Status<D::OMNISTAT>},
      {GPS_STRING_OMNIHPPOS, u"#OMNIHPPOS", Status<D::OMNIHPPOS>},
      {GPS_STRING_WAAS1, u"#WAAS1", Status<D::WAAS1>},
      {GPS_STRING_RTKSOURCE, u"#RTKSOURCE", Status<D::RTKSOURCE>},
      {GPS_STRING_SBASCONTROL, u"#SBASCONTROL", Status<D::SBASCONTROL>},
      {GPS_STRING_PSRDIFFSOURCE, u"#PSRDIFFSOURCE", Status<D::PSRDIFFSOURCE>},
  };

  /// The row whose tag stands at the head of the message, or null.
  static const Row* Find(std::u16string_view message);
  /// A row of this kind, or null.
  static const Row* OfKind(GPSStringType type);
  /// Kinds up to the border carry a checksum that counts.
  static constexpr bool IsChecksumTested(GPSStringType type) { return type <= kChecksumBorder; }

 private:
  static constexpr int kChecksumBorder = 15;
};
