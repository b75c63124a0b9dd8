#pragma once

#include <memory>
#include <string>

#include "gpsengine/platform/serial.h"

/// Opens a terminal device of the system for this program alone, DTR and RTS on. Null on failure, with the
/// reason left for GetLastError: ENOTTY for something that is no terminal, EBUSY for one that another program
/// holds.
std::unique_ptr<SerialLine> OpenTtyLine(const std::string& strDevice);
