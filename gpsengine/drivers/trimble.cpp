#include "gpsengine/drivers/trimble.h"

namespace {

constexpr CGPSCommand kKeepAlive[] = {{"QRV Zelo\r\n", 0}};

constexpr CGPSCommand kLeicaNmea[] = {
    {"$PMVXG,007,,1,,,,,\r\n", 200},
    {"$PMVXG,007,GGA,0,1,,1,6,2\r\n", 200},
    {"$PMVXG,007,GSA,0,1,,1,,,\r\n", 200},
    {"$PMVXG,007,GSV,0,1,,5,,,\r\n", 200},
};

}  // namespace

void CTrimble::KeepAlive() {
  WriteRegardless(kKeepAlive);
}

void CLeica::KeepAlive() {
  WriteRegardless(kKeepAlive);
}

bool CLeica::Initialize() {
  if (!CGPSReceiver::Initialize()) return false;
  WriteRegardless(kLeicaNmea);
  return true;
}
