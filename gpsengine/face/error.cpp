#include "gpsengine/face/error.h"

#include "gpsengine/face/words.h"

namespace gps {

Error NoSuch(const std::string& kind, const std::string& name, const std::vector<std::string>& names,
             const std::string& quote) {
  return Error(ErrorCode::usage, "no " + kind + " is called \"" + name + '"' + DidYouMean(name, names) +
                                     "; the " + kind + "s are " + quote + Join(names, quote + ", " + quote) +
                                     quote);
}

}  // namespace gps
