#include "gpsengine/receiver/decoders.h"
#include "gpsengine/reports/fields.h"
#include "gpsengine/text/number.h"

// The "#" logs of a GSR2650. Each has a head, of which only the name counts, a ";", the data, and "*" with a
// checksum.

namespace {

/// What stands after the head; nothing if there is no head's end.
std::u16string_view Data(const CString& log) {
  const auto head = log.View().find(u';');
  return head == std::u16string_view::npos ? std::u16string_view() : log.View().substr(head + 1);
}

/// The data through the `count`-th `delimiter`, which stays; nothing if there are fewer.
std::u16string_view DataThrough(const CString& log, WCHAR delimiter, int count = 1) {
  const auto data = Data(log);
  std::size_t end = 0;
  for (int i = 0; i < count; ++i) {
    const auto next = data.find(delimiter, end);
    if (next == data.npos) return {};
    end = next + 1;
  }
  return data.substr(0, end);
}

/// Hands data on to the host, after a short name in place of the log's head.
void StoreLog(CGPSStatusData& status, const char* name, std::u16string_view data) {
  StoreText(status, CString(name) + CString(data));
}

struct Source {
  std::u16string_view data;  // what the data begin with, whole fields
  DgpsMode nMode;
};
constexpr Source kRtkSources[] = {{u"OMNISTAR,", DGPS_MODE_LBAND}, {u"AUTO,", DGPS_MODE_BEACON}};
constexpr Source kSbasSources[] = {{u"ENABLE,AUTO,", DGPS_MODE_WAAS}};
constexpr Source kDifferentialSources[] = {{u"OMNISTAR,", DGPS_MODE_OMNISTAR}, {u"CDGPS,", DGPS_MODE_CDGPS}};

/// A source that is not listed says nothing: three logs answer the one query, and the source in use is in one
/// of them.
void StoreSource(CGPSStatusData& status, std::u16string_view data, std::span<const Source> sources) {
  for (const Source& source : sources) {
    if (!data.starts_with(source.data)) continue;
    status.m_nDgpsMode = source.nMode;
    status.m_bDgpsModeValid = status.m_bStatusUpdated = true;
  }
}

}  // namespace

// The logs that are on. One that is not named is off:
//   #LOGLISTA,COM1,0,71.5,FINESTEERING,1450,314159.265,00000000,0000,1234;2,COM1,GPGGA,ONTIME,1.0,…*1f2e3d4c
bool CDecoders::LOGLIST(CGPSStatusData& status, CString& message) {
  const auto state = [&](const char* name) { return message.Find(name) >= 0 ? NMEA_MSG_ON : NMEA_MSG_OFF; };
  for (const NmeaField& field : kNmeaFields) status.*field.state = state(field.name);
  status.m_nNmeaSAT = state("GPSAT");
  status.m_bNmeaStatusValid = status.m_bStatusUpdated = true;
  return true;
}

// The receiver's configuration, of which nothing is kept.
bool CDecoders::RXCONFIG(CGPSStatusData&, CString&) {
  return true;
}

// Elevation mask in degrees:
//   #ECUTOFFA,COM1,0,71.5,FINESTEERING,1450,314159.265,00000000,0000,1234;7.5*1f2e3d4c
bool CDecoders::ECUTOFF(CGPSStatusData& status, CString& message) {
  const auto data = DataThrough(message, u'*');
  double mask = 0.0;
  int remaining = 0;
  if (data.empty() || !ParseDouble(data, mask, remaining)) return false;
  if (!Truncate(mask, status.m_nElevationMask)) return false;
  status.m_bElevationMaskValid = status.m_bStatusUpdated = true;
  return true;
}

// The L-band subscription and signal, for a person to read:
//   #OMNIINFOA,COM1,0,71.5,FINESTEERING,1450,314159.265,00000000,0000,1234;ENABLED,00000007,"NASAT"*1f2e3d4c
bool CDecoders::OMNIINFO(CGPSStatusData& status, CString& message) {
  StoreLog(status, "$OMNII,", DataThrough(message, u'*'));
  return true;
}

//   #OMNISTATA,COM1,0,71.5,FINESTEERING,1450,314159.265,00000000,0000,1234;FREQUENCY,SIGNAL,0.00*1f2e3d4c
bool CDecoders::OMNISTAT(CGPSStatusData& status, CString& message) {
  StoreLog(status, "$OMNIS,", DataThrough(message, u'*'));
  return true;
}

// The high precision position; its head, down to the height, is what tells how good the solution is:
//   #OMNIHPPOSA,COM1,0,71.5,FINESTEERING,1450,314159.265,00000000,0000,1234;SOL_COMPUTED,OMNISTAR_HP,51.1,-114.0,1063.2,…
bool CDecoders::OMNIHPPOS(CGPSStatusData& status, CString& message) {
  StoreLog(status, "$OMNIP,", DataThrough(message, u',', 5));
  return true;
}

//   #WAAS1A,COM1,0,71.5,FINESTEERING,1450,314159.265,00000000,0000,1234;122,ffffffff,2*1f2e3d4c
bool CDecoders::WAAS1(CGPSStatusData& status, CString& message) {
  StoreLog(status, "$WAAS1,", DataThrough(message, u'*'));
  return true;
}

//   #RTKSOURCEA,COM1,0,71.5,FINESTEERING,1450,314159.265,00000000,0000,1234;OMNISTAR,"ANY"*1f2e3d4c
bool CDecoders::RTKSOURCE(CGPSStatusData& status, CString& message) {
  StoreSource(status, Data(message), kRtkSources);
  return true;
}

//   #SBASCONTROLA,COM1,0,71.5,FINESTEERING,1450,314159.265,00000000,0000,1234;ENABLE,AUTO,0,NONE*1f2e3d4c
bool CDecoders::SBASCONTROL(CGPSStatusData& status, CString& message) {
  StoreSource(status, Data(message), kSbasSources);
  return true;
}

//   #PSRDIFFSOURCEA,COM1,0,71.5,FINESTEERING,1450,314159.265,00000000,0000,1234;CDGPS,"ANY"*1f2e3d4c
bool CDecoders::PSRDIFFSOURCE(CGPSStatusData& status, CString& message) {
  StoreSource(status, Data(message), kDifferentialSources);
  return true;
}
