#pragma once

#include <optional>

#include "gpsengine/records/gpsdata.h"
#include "gpsengine/sentences/skyreader.h"

#pragma GCC visibility push(default)

namespace gps {

/// Where the satellites of a run come from: the sentences, as long as there are groups of satellites among
/// them, and else the records, which have those of a make's own reports.
class SkySource {
 public:
  /// Takes a record, before the text that gave it. The sky that is whole with it; null for none. The sky is
  /// there until the next call.
  const Sky* OnData(const CGPSData& data);
  /// Takes the text of a message by its fields, which may be none.
  const Sky* OnText(const Fields& text);
  /// There is nothing more to come.
  const Sky* Finish();

 private:
  const Sky* Release();
  void Hold(const CGPSData& data);
  Sky SkyOf(const CGPSData& data) const;

  SkyReader sentences_;
  std::optional<Sky> held_;      // of the record whose text is yet to come
  std::optional<Sky> released_;  // the last one that came from a record
  bool had_position_ = false;    // before any satellites
  bool tells_count_ = false;     // a record has told how many satellites are used
  bool tells_used_ = false;      // and which
};

}  // namespace gps

#pragma GCC visibility pop
