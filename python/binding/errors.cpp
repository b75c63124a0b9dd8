#include "gpsengine/face/error.h"

#include <map>

#include "python/binding/binding.h"

namespace binding {

namespace {

/// The classes of gpsengine/_errors.py by their codes. Kept for good, as the translator is.
std::map<int, py::object>& Classes() {
  static auto* const classes = new std::map<int, py::object>;
  return *classes;
}

void Raise(const gps::Error& error) {
  const auto found = Classes().find(static_cast<int>(error.code()));
  const auto& type = (found != Classes().end() ? *found : *Classes().begin()).second;
  PyErr_SetString(type.ptr(), error.what());
}

}  // namespace

void DefineErrors(py::module_&) {
  for (py::handle type : py::module_::import("gpsengine._errors").attr("CLASSES")) {
    Classes().emplace(type.attr("code").cast<int>(), py::reinterpret_borrow<py::object>(type));
  }
  py::register_exception_translator([](std::exception_ptr thrown) {
    try {
      if (thrown) std::rethrow_exception(thrown);
    } catch (const gps::Error& error) {
      Raise(error);
    }
  });
}

}  // namespace binding
