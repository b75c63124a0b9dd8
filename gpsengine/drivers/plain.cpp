#include "gpsengine/drivers/plain.h"

namespace {

constexpr CGPSCommand kKeepAlive[] = {{"QRV Zelo\r\n", 0}};

constexpr CGPSCommand kLeicaNmea[] = {
    {"$PMVXG,007,,1,,,,,\r\n", 200},
    {"$PMVXG,007,GGA,0,1,,1,6,2\r\n", 200},
    {"$PMVXG,007,GSA,0,1,,1,,,\r\n", 200},
    {"$PMVXG,007,GSV,0,1,,5,,,\r\n", 200},
};

constexpr CGPSCommand kSokkiaStart[] = {{"$PMCAG,008,15,,,,,,,,,,5,,,,,\r\n", 500}};
constexpr CGPSCommand kSokkiaQueryElevMask[] = {{"$PMCAG,004,908\r\n", 200}};
constexpr CGPSCommand kSokkiaSetElevMask[] = {{"$PMCAG,008,15,,,,#,,,,,,,,,,,\r\n", 800}};
constexpr CGPSCommand kSokkiaDefaultNmea[] = {
    {"$PMCAG,005,0,900,0,906,0,907,0,GGA,1,GSA,1,VTG,1,GSV,1,ZDA,0,RMC,0,GLL,0\r\n", 1000}};
constexpr CGPSCommand kSokkiaGgaOnlyNmea[] = {
    {"$PMCAG,005,0,900,0,906,0,907,0,GGA,1,GSA,0,VTG,0,GSV,0,ZDA,0,RMC,0,GLL,0\r\n", 1000}};

}  // namespace

constinit const CGPSDriver CGarmin::s_Driver = {.pszName = "Garmin 17-N", .nBaudrate = 4800};
constinit const CGPSDriver CJavad::s_Driver = {.pszName = "Javad"};
constinit const CGPSDriver CLeica::s_Driver = {
    .pszName = "Leica", .start = kLeicaNmea, .keepAlive = kKeepAlive};
constinit const CGPSDriver COmnistar::s_Driver = {.pszName = "Omnistar", .nBaudrate = 4800};
constinit const CGPSDriver CSatloc::s_Driver = {.pszName = "Satloc"};
constinit const CGPSDriver CSokkia::s_Driver = {
    .pszName = "Sokkia Axis",
    .start = kSokkiaStart,
    .defaultNmea = kSokkiaDefaultNmea,
    .ggaOnlyNmea = kSokkiaGgaOnlyNmea,
    .queryBeacon = CGPSDriver::kQueryBeacon,
    .queryElevMask = kSokkiaQueryElevMask,
    .setElevMask = kSokkiaSetElevMask,
};
constinit const CGPSDriver CTrimble::s_Driver = {
    .pszName = "Trimble", .nBaudrate = 4800, .keepAlive = kKeepAlive};
constinit const CGPSDriver CTrimblePocketGps::s_Driver = {.pszName = "Trimble Pocket"};
constinit const CGPSDriver COtherGps::s_Driver = {.pszName = "Other"};
