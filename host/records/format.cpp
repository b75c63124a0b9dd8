#include "host/records/format.h"

#include "host/records/gpsdsink.h"
#include "host/records/recordsink.h"
#include "host/records/textsink.h"

namespace host {

namespace {

/// Where nothing is shown.
class NoSink : public Sink {
 public:
  bool WantsRecords() const override { return false; }
};

}  // namespace

std::unique_ptr<Sink> MakeSink(Format format, std::string& out, const std::string& device, Geoid geoid,
                               const Display& display) {
  switch (format) {
    case Format::text:
      return std::make_unique<TextSink>(out, TextSink::Shows::fixes, display);
    case Format::json:
      return std::make_unique<GpsdSink>(out, device, geoid);
    case Format::record:
      return std::make_unique<RecordSink>(out);
    case Format::none:
    case Format::tui:
      break;
  }
  return std::make_unique<NoSink>();
}

}  // namespace host
