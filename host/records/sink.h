#pragma once

#include <optional>

#include "gpsengine/platform/cstring.h"
#include "gpsengine/records/gpsdata.h"
#include "gpsengine/records/gpsdataraw.h"
#include "host/records/kinds.h"
#include "host/sentences/fields.h"
#include "host/sentences/moment.h"
#include "host/sentences/sky.h"

namespace host {

/// Takes what the library publishes, in the order in which it was posted. Each operation says whether it
/// showed the record to the user, since --count counts what was shown.
class Sink {
 public:
  virtual ~Sink() = default;
  virtual bool OnData(const CGPSData& data) = 0;
  virtual bool OnRawData(const CGPSDataRaw& epoch) = 0;
  virtual bool OnEphemeris(const CGPSDataEphemeris& ephemeris) = 0;
  virtual bool OnBin() = 0;
  /// Satellites are wanted: they come as skies, for which the texts of messages are read.
  virtual bool WantsSky() const { return false; }
  /// A sentence of the standard, if any sink wants satellites. It comes ahead of its text.
  virtual bool OnSentence(const Fields& /*sentence*/) { return false; }
  /// The satellites of an epoch.
  virtual bool OnSky(const Sky& /*sky*/) { return false; }
  /// The moment near which the records to come belong, for a recording, which is not of today. Without it,
  /// their moment of publication is that moment.
  virtual void SetReference(std::optional<Moment> /*reference*/) {}
  /// What of the records to come is to be shown, where one carries several kinds. Whole records are shown
  /// whole.
  virtual void SetKinds(Kinds /*kinds*/) {}
  /// The text of a message, while a capture runs. It comes behind the record that the message gave, if any.
  virtual bool OnString(const CString& /*text*/) { return false; }
};

/// Shows nothing.
class NoSink : public Sink {
 public:
  bool OnData(const CGPSData&) override { return false; }
  bool OnRawData(const CGPSDataRaw&) override { return false; }
  bool OnEphemeris(const CGPSDataEphemeris&) override { return false; }
  bool OnBin() override { return false; }
};

}  // namespace host
