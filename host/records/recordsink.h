#pragma once

#include <string>

#include "host/records/sink.h"

namespace host {

/// The format "record": one JSON object for each posted message, with every field under its own name, for
/// programs that want what the library gives and nothing else.
class RecordSink : public Sink {
 public:
  explicit RecordSink(std::string& out) : out_(out) {}

  bool OnData(const Record& record) override;
  bool OnRawData(const CGPSDataRaw& epoch) override;
  bool OnEphemeris(const CGPSDataEphemeris& ephemeris) override;
  bool OnBin(const Block& block) override;

 private:
  std::string& out_;
};

}  // namespace host
