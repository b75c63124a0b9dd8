#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "simulator/gpstime.h"

namespace simulator {

/// The 32-bit cyclic redundancy check of the OEM receivers: polynomial 0xEDB88320, from 0, not inverted.
std::uint32_t OemCrc(std::string_view bytes);

/// "#NAME,head;data*crc" and the line end.
std::string OemText(std::string_view name, const GpsTime& time, std::string_view data);

/// The bytes AA 44 12, a head of 28 bytes in all, the body and its check.
std::string OemBinary(std::uint16_t message, const GpsTime& time, std::string_view body);

}  // namespace simulator
