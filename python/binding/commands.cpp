#include "gpsengine/face/commands.h"

#include <pybind11/stl.h>

#include "gpsengine/face/operations.h"
#include "python/binding/binding.h"
#include "python/binding/waits.h"

namespace binding {

namespace {

std::vector<std::string> CallsOf(const std::string& model) {
  const Use use;
  const py::gil_scoped_release free;
  return gps::commands(model);
}

/// What an operation would write and wait for, a step a line.
std::string Rehearse(const std::string& model, const std::string& operation,
                     const std::vector<std::string>& words) {
  const Use use;
  const py::gil_scoped_release free;
  return gps::rehearse(model, operation, words).Text();
}

/// All operations: name, arguments, summary, and whether it is a step of a run and no command.
py::list Operations() {
  py::list list;
  for (const gps::Operation& operation : gps::Operations()) {
    const bool is_step =
        operation.kind == gps::Operation::Kind::starts || operation.kind == gps::Operation::Kind::ends;
    list.append(py::make_tuple(operation.name, operation.arguments, operation.summary, is_step));
  }
  return list;
}

}  // namespace

void DefineCommands(py::module_& module) {
  module.def("calls_of", &CallsOf);
  module.def("rehearse", &Rehearse);
  module.def("operations", &Operations);
}

}  // namespace binding
