#pragma once

#include <pybind11/pybind11.h>

#include <cstdint>
#include <cstdlib>
#include <memory>

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
  std::uint16_t padding = 0;
};

/// Rows that come one by one. They grow by realloc, for which the system moves many pages without a copy.
class Rows {
 public:
  Rows() { Grow(); }

  /// What is none becomes NaN or NaT.
  void Add(const gps::Fix& fix);
  /// A structured array over these rows, without a copy of them.
  py::object ToArray() &&;

 private:
  void Grow();

  struct Free {
    void operator()(Row* rows) const { std::free(rows); }
  };

  std::unique_ptr<Row[], Free> rows_;
  std::size_t size_ = 0, room_ = 0;
};

}  // namespace binding
