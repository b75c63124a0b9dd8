#include "python/binding/binding.h"

namespace binding {

namespace {

template <class T>
Next NextIn(gps::Range<T> range) {
  return [range = std::move(range)]() mutable -> std::optional<gps::Record> {
    auto record = range.next();
    return record ? std::optional<gps::Record>(std::move(*record)) : std::nullopt;
  };
}

}  // namespace

Next NextOf(const gps::Source& source, Kind kind, const gps::Wait& wait) {
  switch (kind) {
    case Kind::fixes:
      return NextIn(source.fixes(wait));
    case Kind::satellites:
      return NextIn(source.satellites(wait));
    case Kind::reports:
      return NextIn(source.reports(wait));
    case Kind::raw:
      return NextIn(source.raw(wait));
    case Kind::records:
      break;
  }
  return NextIn(source.records(wait));
}

}  // namespace binding

PYBIND11_MODULE(_core, module) {
  module.doc() = "The compiled half of gpsengine.";
  binding::DefineErrors(module);
  binding::DefineRecords(module);
  binding::DefineArrays(module);
  binding::DefineReceiver(module);
  binding::DefineRecording(module);
  binding::DefineCommands(module);
}
