#pragma once

#include <optional>

#include "gpsengine/face/block.h"
#include "gpsengine/platform/cstring.h"
#include "gpsengine/records/gpsdataraw.h"
#include "gpsengine/sentences/fields.h"
#include "gpsengine/sentences/sky.h"
#include "host/records/epoch.h"
#include "host/run/face.h"

namespace host {

/// Takes what the library publishes, in the order in which it was posted, and by itself shows nothing. Each
/// operation says whether it showed the record to the user, since --count counts what was shown.
class Sink {
 public:
  virtual ~Sink() = default;
  /// Whether it shows anything of any kind.
  virtual bool WantsRecords() const { return true; }
  virtual bool OnData(const Record& /*record*/) { return false; }
  virtual bool OnRawData(const CGPSDataRaw& /*epoch*/) { return false; }
  virtual bool OnEphemeris(const CGPSDataEphemeris& /*ephemeris*/) { return false; }
  virtual bool OnBin(const Block& /*block*/) { return false; }
  /// Satellites are wanted: they come as skies, for which the texts of messages are read.
  virtual bool WantsSky() const { return false; }
  /// A sentence of the standard, if any sink wants satellites. It comes before its text.
  virtual bool OnSentence(const Fields& /*sentence*/) { return false; }
  /// The satellites of an epoch.
  virtual bool OnSky(const Sky& /*sky*/) { return false; }
  /// The moment near which the records to come belong, for a recording, which is not of today. Without it,
  /// their moment of publication is that moment.
  virtual void SetReference(std::optional<Moment> /*reference*/) {}
  /// What of a run is shown, for what is made of texts.
  virtual void SetKinds(Kinds /*kinds*/) {}
  /// The text of a message, while a capture runs. It comes after the record that the message gave, if any.
  virtual bool OnString(const CString& /*text*/) { return false; }
};

}  // namespace host
