#pragma once

#include <pybind11/pybind11.h>

#include <functional>
#include <optional>

#include "gpsengine/face/source.h"

namespace binding {

namespace py = pybind11;

// What each file adds to the module.
void DefineErrors(py::module_& module);
void DefineRecords(py::module_& module);
void DefineArrays(py::module_& module);
void DefineReceiver(py::module_& module);
void DefineRecording(py::module_& module);
void DefineCommands(py::module_& module);

/// A record as the object of its class.
py::object ObjectOf(gps::Record&& record);

/// The kinds of records that can be asked for, in the order of Record; the last is all of them.
enum class Kind { fixes, satellites, reports, raw, records };
constexpr std::size_t kKinds = 5;

/// Gives the next record of a kind; none at the end.
using Next = std::function<std::optional<gps::Record>()>;
/// Of a source.
Next NextOf(const gps::Source& source, Kind kind, const gps::Wait& wait);

}  // namespace binding
