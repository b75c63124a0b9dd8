#pragma once

#include <pybind11/pybind11.h>

#include <optional>
#include <string>
#include <vector>

namespace binding {

namespace py = pybind11;

/// A value of a record, as Python sees it.
template <class T>
struct Field {
  const char* name;             ///< Of the attribute.
  py::object (*get)(const T&);  ///< Makes it.
  const char* doc;              ///< Its meaning and its unit.
};

/// A value, None where there is none.
template <class T>
py::object Maybe(const std::optional<T>& value) {
  return value ? py::cast(*value) : py::object(py::none());
}

/// All values of a record, in the order of its table.
template <class T>
py::tuple Values(const std::vector<Field<T>>& fields, const T& record) {
  py::tuple values(fields.size());
  for (std::size_t i = 0; i < fields.size(); ++i) values[i] = fields[i].get(record);
  return values;
}

/// "Fix(latitude=47.6, …)": what is known.
template <class T>
std::string Represent(const std::string& name, const std::vector<Field<T>>& fields, const T& record) {
  std::string text;
  for (const Field<T>& field : fields) {
    const py::object value = field.get(record);
    if (value.is_none()) continue;
    text += (text.empty() ? "" : ", ") + std::string(field.name) + '=' + std::string(py::repr(value));
  }
  return name + '(' + text + ')';
}

/// Makes an immutable class of a table: attributes, what "match" goes by, and what a value has.
template <class T>
void Define(py::module_& module, const char* name, const std::string& doc, std::vector<Field<T>> fields) {
  py::class_<T> made(module, name, doc.c_str());
  py::tuple names(fields.size());
  for (std::size_t i = 0; i < fields.size(); ++i) {
    made.def_property_readonly(fields[i].name, fields[i].get, fields[i].doc);
    names[i] = fields[i].name;
  }
  made.attr("__match_args__") = names;
  made.attr("__module__") = "gpsengine";
  made.def("__repr__", [=](const T& record) { return Represent(name, fields, record); });
  made.def("__hash__", [=](const T& record) { return py::hash(Values(fields, record)); });
  made.def("__eq__", [=](const T& record, const py::object& other) -> py::object {
    if (!py::isinstance<T>(other)) return py::reinterpret_borrow<py::object>(Py_NotImplemented);
    return py::bool_(Values(fields, record).equal(Values(fields, other.cast<const T&>())));
  });
  const auto as_dict = [=](const T& record) {
    py::dict dict;
    for (const Field<T>& field : fields) dict[field.name] = field.get(record);
    return dict;
  };
  made.def("as_dict", as_dict, "The values by their names.");
}

}  // namespace binding
