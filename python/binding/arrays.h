#pragma once

#include <pybind11/pybind11.h>

#include <cstdint>
#include <vector>

#include "gpsengine/face/fix.h"

namespace binding {

namespace py = pybind11;

/// A fix as a row of an array, laid out as numpy lays out its type with "align".
struct Row {
  std::int64_t time;  // milliseconds since 1970
  double latitude, longitude, height_msl, speed, course, hdop, pdop, vdop, strength;
  std::int16_t used, in_view;
  std::uint8_t kind;
  bool starts_segment;
};

/// What is none becomes NaN or NaT.
Row RowOf(const gps::Fix& fix);

/// A structured array over these rows, without a copy of them.
py::object ArrayOf(std::vector<Row>&& rows);

}  // namespace binding
