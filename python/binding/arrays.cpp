#include <pybind11/numpy.h>

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <new>
#include <type_traits>

#include "python/binding/arrays.h"
#include "python/binding/binding.h"

namespace binding {

namespace {

constexpr std::pair<const char*, const char*> kFields[] = {
    {"time", "M8[ms]"}, {"latitude", "f8"}, {"longitude", "f8"}, {"height_msl", "f8"},    {"speed", "f8"},
    {"course", "f8"},   {"hdop", "f8"},     {"pdop", "f8"},      {"vdop", "f8"},          {"strength", "f8"},
    {"used", "i2"},     {"in_view", "i2"},  {"kind", "u1"},      {"starts_segment", "?"},
};

constexpr std::int64_t kNotATime = std::numeric_limits<std::int64_t>::min();
constexpr std::size_t kLeastRoom = 256;

double OrNan(const gps::Optional<double>& value) {
  return value.value_or(std::numeric_limits<double>::quiet_NaN());
}

py::dtype TypeOfRows() {
  py::list fields;
  for (const auto& [name, format] : kFields) fields.append(py::make_tuple(name, format));
  py::module_ numpy;
  try {
    numpy = py::module_::import("numpy");
  } catch (py::error_already_set& error) {
    py::raise_from(error, PyExc_ImportError,
                   "arrays need numpy: apt install python3-numpy, or pip install numpy");
    throw py::error_already_set();
  }
  return numpy.attr("dtype")(fields, py::arg("align") = true);
}

}  // namespace

void Rows::Add(const gps::Fix& fix) {
  if (size_ == room_) Grow();
  rows_[size_++] = {fix.time ? fix.time->time_since_epoch().count() : kNotATime,
                    fix.latitude,
                    fix.longitude,
                    OrNan(fix.height_msl),
                    OrNan(fix.speed),
                    OrNan(fix.course),
                    OrNan(fix.hdop),
                    OrNan(fix.pdop),
                    OrNan(fix.vdop),
                    OrNan(fix.strength),
                    static_cast<std::int16_t>(fix.used),
                    static_cast<std::int16_t>(fix.in_view),
                    static_cast<std::uint8_t>(fix.signal),
                    fix.starts_segment};
}

void Rows::Grow() {
  static_assert(std::is_trivially_copyable_v<Row>);
  const std::size_t room = std::max<std::size_t>(kLeastRoom, 2 * room_);
  auto* const rows = static_cast<Row*>(std::realloc(rows_.get(), room * sizeof(Row)));
  if (rows == nullptr) throw std::bad_alloc();
  (void)rows_.release();  // which that has taken
  rows_.reset(rows);
  room_ = room;
}

py::object Rows::ToArray() && {
  const py::dtype type = TypeOfRows();
  const py::capsule owner(rows_.get(), &std::free);
  return py::array(type, {static_cast<py::ssize_t>(size_)}, {static_cast<py::ssize_t>(sizeof(Row))},
                   rows_.release(), owner);
}

void DefineArrays(py::module_& module) {
  const auto array_of = [](const py::iterable& fixes) {
    Rows rows;
    for (const py::handle fix : fixes) {
      if (!py::isinstance<gps::Fix>(fix)) {
        throw py::type_error("to_numpy takes fixes, and this is none: " + std::string(py::repr(fix)));
      }
      rows.Add(fix.cast<const gps::Fix&>());
    }
    return std::move(rows).ToArray();
  };
  module.def("to_numpy", array_of, py::arg("fixes"),
             "Fixes as a structured array: NaN and NaT for what is None, kinds as the numbers of FixKind.");
}

}  // namespace binding
