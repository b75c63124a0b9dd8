#include "simulator/oemlog.h"

#include <cmath>

#include "simulator/bytes.h"
#include "simulator/text.h"

namespace simulator {

std::uint32_t OemCrc(std::string_view bytes) {
  std::uint32_t crc = 0;
  for (const char c : bytes) {
    crc ^= static_cast<unsigned char>(c);
    for (int i = 0; i < 8; ++i) crc = (crc & 1) != 0 ? crc >> 1 ^ 0xEDB88320U : crc >> 1;
  }
  return crc;
}

std::string OemText(std::string_view name, const GpsTime& time, std::string_view data) {
  const std::string body =
      Format("%.*s,COM2,0,82.5,FINESTEERING,%d,%.3f,00000000,0000,3681;%.*s", static_cast<int>(name.size()),
             name.data(), time.week, time.seconds, static_cast<int>(data.size()), data.data());
  return Format("#%s*%08x\r\n", body.c_str(), OemCrc(body));
}

std::string OemBinary(std::uint16_t message, const GpsTime& time, std::string_view body) {
  constexpr std::uint8_t kHeadLength = 28, kPort = 0x40, kFineTime = 160;
  std::string log = "\xAA\x44\x12";
  AppendLittle(log, kHeadLength);
  AppendLittle(log, message);
  AppendLittle(log, std::uint8_t{0});  // measured by the first antenna, binary
  AppendLittle(log, kPort);
  AppendLittle(log, static_cast<std::uint16_t>(body.size()));
  AppendLittle(log, std::uint16_t{0});   // last of its sequence
  AppendLittle(log, std::uint8_t{165});  // idle time in half percents
  AppendLittle(log, kFineTime);
  AppendLittle(log, static_cast<std::uint16_t>(time.week));
  AppendLittle(log, static_cast<std::uint32_t>(std::llround(time.seconds * 1000)));
  AppendLittle(log, std::uint32_t{0});  // receiver status
  AppendLittle(log, std::uint16_t{0});
  AppendLittle(log, std::uint16_t{3681});  // firmware build
  log += body;
  AppendLittle(log, OemCrc(log));
  return log;
}

}  // namespace simulator
