#include "gpsengine/sentences/positionerror.h"

namespace gps {

std::optional<PositionError> PositionErrorOf(const Fields& gst) {
  if (!gst.Is("GST")) return std::nullopt;
  return PositionError{TimeOf(gst[1]),   NumberOf(gst[2]), NumberOf(gst[3]), NumberOf(gst[4]),
                       NumberOf(gst[5]), NumberOf(gst[6]), NumberOf(gst[7]), NumberOf(gst[8])};
}

}  // namespace gps
