#include <pybind11/pybind11.h>

// What stands above it has to.
#include <datetime.h>

#include <array>
#include <chrono>

#include "python/binding/binding.h"
#include "python/binding/fields.h"

namespace binding {

namespace {

using gps::Fix;
using gps::Raw;
using gps::Report;
using gps::Satellite;
using gps::Sky;
using rawdata::BroadcastEphemeris;
using rawdata::ObservationEpoch;
using rawdata::SignalObservation;

/// The members of an enumeration of gpsengine/_enums.py, by their values less the first one's. Kept for good.
template <int kFirst, std::size_t kCount>
class Members {
 public:
  void Read(const char* name) {
    const py::object type = py::module_::import("gpsengine._enums").attr(name);
    for (std::size_t i = 0; i < kCount; ++i) members_[i] = type(static_cast<int>(i) + kFirst).release();
  }
  /// The last one for a value that is none of theirs.
  py::object Of(int value) const {
    const auto i = static_cast<std::size_t>(value - kFirst);
    return py::reinterpret_borrow<py::object>(members_[i < kCount ? i : kCount - 1]);
  }

 private:
  std::array<py::handle, kCount> members_;
};

Members<0, UDF_SIGNAL_UNKNOWN + 1> g_kinds;
Members<-1, 9> g_systems;

/// A datetime of UTC, which says so.
py::object DateTime(gps::Time time) {
  const auto day = std::chrono::floor<std::chrono::days>(time);
  const std::chrono::year_month_day date(day);
  const std::chrono::hh_mm_ss clock(time - day);
  PyObject* const made = PyDateTimeAPI->DateTime_FromDateAndTime(
      static_cast<int>(date.year()), static_cast<int>(static_cast<unsigned>(date.month())),
      static_cast<int>(static_cast<unsigned>(date.day())), static_cast<int>(clock.hours().count()),
      static_cast<int>(clock.minutes().count()), static_cast<int>(clock.seconds().count()),
      static_cast<int>(clock.subseconds().count()) * 1000, PyDateTime_TimeZone_UTC,
      PyDateTimeAPI->DateTimeType);
  if (made == nullptr) throw py::error_already_set();
  return py::reinterpret_steal<py::object>(made);
}

py::str Text(std::string_view text) {
  // A receiver's own text may be of any bytes.
  return py::reinterpret_steal<py::str>(
      PyUnicode_DecodeUTF8(text.data(), static_cast<py::ssize_t>(text.size()), "replace"));
}

template <class T>
py::tuple TupleOf(const std::vector<T>& values) {
  py::tuple tuple(values.size());
  for (std::size_t i = 0; i < values.size(); ++i) tuple[i] = py::cast(values[i]);
  return tuple;
}

/// What was not measured is 0.
py::object Measured(double value) {
  return value != 0.0 ? py::cast(value) : py::object(py::none());
}

#define FIELD(T, name, value, doc)                            \
  Field<T> {                                                  \
    name, [](const T& r) -> py::object { return value; }, doc \
  }

void DefineFix(py::module_& module) {
  const auto time = [](const Fix& fix) { return fix.time ? DateTime(*fix.time) : py::object(py::none()); };
  Define<Fix>(
      module, "Fix", "What a position sentence says; None for what it does not.",
      {Field<Fix>{"time", time, "UTC, a datetime that knows its zone."},
       FIELD(Fix, "latitude", py::cast(r.latitude), "Degrees, south negative."),
       FIELD(Fix, "longitude", py::cast(r.longitude), "Degrees, west negative."),
       FIELD(Fix, "height_msl", Maybe<double>(r.height_msl), "Metres above mean sea level."),
       FIELD(Fix, "kind", g_kinds.Of(r.signal), "How it was found, a FixKind."),
       FIELD(Fix, "speed", Maybe<double>(r.speed), "Metres a second over ground."),
       FIELD(Fix, "course", Maybe<double>(r.course), "Degrees from north, clockwise; None at rest."),
       FIELD(Fix, "hdop", Maybe<double>(r.hdop), "Horizontal dilution of precision."),
       FIELD(Fix, "pdop", Maybe<double>(r.pdop), "Dilution of precision in three dimensions."),
       FIELD(Fix, "vdop", Maybe<double>(r.vdop), "Vertical dilution of precision."),
       FIELD(Fix, "used", py::cast(r.used), "Satellites that the position is made of."),
       FIELD(Fix, "in_view", py::cast(r.in_view), "Satellites in view."),
       FIELD(Fix, "strength", Maybe<double>(r.strength), "Mean signal of the used satellites, dB-Hz or so."),
       FIELD(Fix, "valid", py::cast(r.valid), "The receiver has found its position."),
       FIELD(Fix, "repeats", py::cast(r.repeats), "Another sentence has told of this moment already."),
       FIELD(Fix, "starts_segment", py::cast(r.starts_segment), "It comes after a gap.")});
}

void DefineSky(py::module_& module) {
  Define<Satellite>(
      module, "Satellite", "A satellite in view; None for what its receiver does not know.",
      {FIELD(Satellite, "name", py::cast(r.id.Name()), "As in RINEX: \"G05\", \"E12\"."),
       FIELD(Satellite, "elevation", Maybe<int>(r.elevation), "Degrees above the horizon."),
       FIELD(Satellite, "azimuth", Maybe<int>(r.azimuth), "Degrees from north, clockwise."),
       FIELD(Satellite, "signal", Maybe<int>(r.signal), "Of its best band, as the receiver gives it."),
       FIELD(Satellite, "used", py::cast(r.used), "By the fix."),
       FIELD(Satellite, "system", g_systems.Of(static_cast<int>(r.id.system)), "Its System."),
       FIELD(Satellite, "number", py::cast(r.id.number), "In its system, from 1 on; PRN or slot.")});
  Define<Sky>(module, "Sky", "The satellites of an epoch.",
              {FIELD(Sky, "satellites", TupleOf(r.satellites), "By system and number."),
               FIELD(Sky, "time_of_day", Maybe<double>(r.time_of_day), "Seconds since midnight UTC."),
               FIELD(Sky, "in_view", py::cast(r.in_view), "How many."),
               FIELD(Sky, "used", Maybe<int>(r.used), "How many of them the fix uses."),
               FIELD(Sky, "hdop", Maybe<double>(r.hdop), "Horizontal dilution of precision."),
               FIELD(Sky, "pdop", Maybe<double>(r.pdop), "Dilution of precision in three dimensions."),
               FIELD(Sky, "vdop", Maybe<double>(r.vdop), "Vertical dilution of precision.")});
}

py::object ValueOf(const Report& report) {
  if (const auto* text = std::get_if<std::string>(&report.value)) return Text(*text);
  return std::visit([](const auto& value) -> py::object { return py::cast(value); }, report.value);
}

void DefineReport(py::module_& module) {
  Define<Report>(module, "Report", "A setting that a receiver has reported, or what else it says of itself.",
                 {FIELD(Report, "key", Text(r.key), "For programs: \"elevationMask\", \"text\", \"ack\" …"),
                  FIELD(Report, "value", ValueOf(r), "A bool, int, float or str, in the unit."),
                  FIELD(Report, "unit", Text(r.unit), "\"deg\", \"kHz\" …; empty for none."),
                  FIELD(Report, "label", Text(r.label), "For people: \"elevation mask\".")});
}

void DefineSignals(py::module_& module) {
  using Signal = SignalObservation;
  Define<Signal>(
      module, "Signal", "One signal of one satellite, by RINEX 3; None for what was not measured.",
      {FIELD(Signal, "system", py::cast(r.system), "G GPS, R GLONASS, E Galileo, C BeiDou …"),
       FIELD(Signal, "satellite", py::cast(r.satellite), "PRN or slot."),
       FIELD(Signal, "code", py::str(r.code, r.code[0] == 0 ? 0 : 2), "Band and attribute, as \"1C\"."),
       FIELD(Signal, "pseudorange", Measured(r.pseudorange), "Metres."),
       FIELD(Signal, "carrier_phase", Measured(r.carrier_phase), "Cycles, which grow with the range."),
       FIELD(Signal, "doppler", Measured(r.doppler), "Hertz, positive on approach."),
       FIELD(Signal, "cn0", Measured(r.cn0), "dB-Hz."),
       FIELD(Signal, "slip", py::cast(r.slip), "The phase is not known to go on from the epoch before."),
       FIELD(Signal, "half_cycle", py::cast(r.half_cycle), "The phase may be off by half a cycle."),
       FIELD(Signal, "glonass_channel", Maybe(r.glonass_channel), "Frequency number, -7 to 6.")});
  Define<ObservationEpoch>(
      module, "Epoch", "What a receiver measured at one reading of its clock.",
      {FIELD(ObservationEpoch, "week", py::cast(r.week), "GPS week, as the receiver tells it."),
       FIELD(ObservationEpoch, "time_of_week", py::cast(r.time_of_week), "GPS seconds."),
       FIELD(ObservationEpoch, "signals", TupleOf(r.signals), "Each Signal once.")});
}

void DefineEphemeris(py::module_& module) {
  using E = BroadcastEphemeris;
  constexpr double kSemicircle = 180.0;  // degrees
#define ORBIT(name, value, doc) FIELD(E, name, py::cast(r.orbit.value), doc)
#define ANGLE(name, value, doc) FIELD(E, name, py::cast(r.orbit.value* kSemicircle), doc)
  Define<E>(module, "Ephemeris", "One GPS satellite's broadcast ephemeris, in the terms of IS-GPS-200.",
            {ORBIT("prn", m_nPRN, "The satellite."),
             ORBIT("week", m_nWeek, "GPS week of tow; ten bits of $BIN."),
             ORBIT("tow", m_lTow, "Seconds of week at which it was sent."),
             ORBIT("toe", m_lToe, "Reference time of the orbit, seconds of week."),
             ORBIT("toc", m_lToc, "Reference time of the clock, seconds of week."),
             ORBIT("af0", m_dAf0, "Clock bias, seconds."),
             ORBIT("af1", m_dAf1, "Clock drift, s/s."),
             ORBIT("af2", m_dAf2, "Clock drift rate, s/s²."),
             ORBIT("tgd", m_dTgd, "Group delay, seconds."),
             ORBIT("iodc", m_lAodc, "Issue of the clock data."),
             ORBIT("iode", m_lAode, "Issue of the orbit data."),
             ORBIT("sqrt_a", m_dSqrtA, "Root of the semi-major axis, √m."),
             ORBIT("eccentricity", m_dEccentricity, "Of the orbit."),
             ANGLE("m0", m_dM0, "Mean anomaly, degrees."),
             ANGLE("delta_n", m_dDeltaN, "Mean motion difference, degrees a second."),
             ANGLE("omega0", m_dOmega0, "Right ascension of the ascending node, degrees."),
             ANGLE("omega_dot", m_dOmegaDot, "Its rate, degrees a second."),
             ANGLE("omega", m_dOmega, "Argument of perigee, degrees."),
             ANGLE("i0", m_dI0, "Inclination, degrees."),
             ANGLE("i_dot", m_dIDot, "Its rate, degrees a second."),
             ORBIT("cuc", m_dCuc, "Radians."),
             ORBIT("cus", m_dCus, "Radians."),
             ORBIT("crc", m_dCrc, "Metres."),
             ORBIT("crs", m_dCrs, "Metres."),
             ORBIT("cic", m_dCic, "Radians."),
             ORBIT("cis", m_dCis, "Radians."),
             FIELD(E, "accuracy", py::cast(r.accuracy), "Of the user's range, metres."),
             FIELD(E, "health", py::cast(r.health), "Six bits, 0 for all is well.")});
#undef ORBIT
#undef ANGLE
}

void DefineRaw(py::module_& module) {
  const auto data = [](const Raw& raw) -> py::object {
    std::string bytes;
    for (const std::uint16_t word : raw.words) {
      bytes += static_cast<char>(word & 0xFF);
      bytes += static_cast<char>(word >> 8);
    }
    return py::bytes(bytes);
  };
  Define<Raw>(module, "Raw", "One block of raw data: of measurements, of an ephemeris, or its bytes alone.",
              {FIELD(Raw, "name", py::cast(r.name), "\"$BIN 96\", \"OEM 43\", \"MBN\" or \"SNV\"."),
               FIELD(Raw, "epoch", Maybe(r.epoch), "The Epoch, if it holds measurements."),
               FIELD(Raw, "ephemeris", Maybe(r.ephemeris), "The Ephemeris, if it holds one."),
               Field<Raw>{"data", data, "The block as bytes; empty for Ashtech's."}});
}

#undef FIELD

}  // namespace

py::object ObjectOf(gps::Record&& record) {
  return std::visit([](auto&& value) { return py::cast(std::move(value)); }, std::move(record));
}

void DefineRecords(py::module_& module) {
  PyDateTime_IMPORT;
  if (PyDateTimeAPI == nullptr) throw py::error_already_set();
  g_kinds.Read("FixKind");
  g_systems.Read("System");
  DefineFix(module);
  DefineSky(module);
  DefineReport(module);
  DefineSignals(module);
  DefineEphemeris(module);
  DefineRaw(module);
}

}  // namespace binding
