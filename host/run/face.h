#pragma once

#include "gpsengine/sentences/moment.h"

// What the library has for hosts in plain C++ is the program's own too.
namespace host {

using namespace gps;
using Moment = gps::Time;

}  // namespace host
