#pragma once

#include <array>
#include <memory>
#include <string>
#include <vector>

#include "gpsengine/rawdata/gpstime.h"
#include "gpsengine/rawdata/rawdata.h"
#include "host/run/face.h"

namespace host {

/// The versions of the format that are written.
enum class RinexVersion { v2_11, v3_04 };

/// What a file's header tells of the mark and what stands on it, each text as long as RINEX has columns for
/// it and in ASCII; empty for what is not known.
struct RinexStation {
  std::string marker, marker_number;                        ///< Up to 60 and 20 characters.
  std::string observer, agency;                             ///< 20 and 40.
  std::string receiver_number, receiver, receiver_version;  ///< 20 each.
  std::string antenna_number, antenna;                      ///< 20 each.
  double antenna_height = 0.0;                              ///< Metres from the mark to the antenna.
  std::array<double, 3> place{};  ///< About where the mark is: earth-centred metres, 0 if not known.
  double interval = 0.0;          ///< Seconds between the epochs, 0 if not known.
  GpsTime first;                  ///< The first epoch.
};

/// What is known of a kind of receiver before its first epoch.
struct RinexKind {
  bool in_decibels =
      false;                ///< The strength of a signal comes in dB-Hz, and not in a unit of the receiver's.
  std::size_t systems = 1;  ///< How many at most, GPS among them.
  bool more_than_l1_ca = false;  ///< There may be other signals than the C/A code, or its like, on L1.
};

/// An ephemeris, with its times made whole.
struct RinexEphemeris {
  const rawdata::BroadcastEphemeris& told;
  bool has_state = false;  ///< Accuracy, health and fit interval have come with it.
  GpsTime toc, toe;
  double sent = 0.0;  ///< Seconds since the beginning of the week of `toe`.
};

using SignalList = std::vector<rawdata::SignalObservation>;

/// One version's observation file, as text. It learns as it goes what its header has to declare; a header is
/// as long at the end as at the beginning, and no line written before becomes another by what is learned.
class RinexFormat {
 public:
  virtual ~RinexFormat() = default;
  /// Takes note of what an epoch has. True if the header is another one by that.
  virtual bool Learn(const SignalList& signals) = 0;
  virtual std::string Header(const RinexStation& station) const = 0;
  /// Appends an epoch, whose signals have been learned; nothing if the version has room for none of them.
  virtual void Append(std::string& text, const GpsTime& time, const SignalList& signals) const = 0;
};

std::unique_ptr<RinexFormat> MakeRinex2(const RinexKind& kind);
std::unique_ptr<RinexFormat> MakeRinex3(const RinexKind& kind);
inline std::unique_ptr<RinexFormat> MakeRinex(RinexVersion version, const RinexKind& kind) {
  return version == RinexVersion::v2_11 ? MakeRinex2(kind) : MakeRinex3(kind);
}

/// The signals satellite by satellite, those of GPS first; each one's in their order.
std::vector<const rawdata::SignalObservation*> BySatellite(const SignalList& signals);
/// OBSERVATION DATA and the system that these are the letters of, or MIXED.
std::string ObservationKind(const std::string& systems);
/// The header's lines from the mark's name to the antenna's place, which both versions have.
std::string StationLines(const RinexStation& station);
/// TIME OF FIRST OBS, and the interval if it is known.
std::string TimeLines(const RinexStation& station);
/// Appends the digits for a loss of lock and the strength of a signal, one column each, after a phase.
void AppendIndicators(std::string& text, const rawdata::SignalObservation& signal, const RinexKind& kind,
                      bool is_phase);

/// The navigation file: of GPS alone.
std::string NavigationHeader(RinexVersion version, bool has_state);
std::string NavigationRecord(RinexVersion version, const RinexEphemeris& ephemeris);

}  // namespace host
