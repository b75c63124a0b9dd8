#include "gpsengine/drivers/ashtech.h"

namespace {

using enum CGPSCommand::Then;

constexpr CGPSCommand kDefaultNmea[] = {
    {"$PASHS,NME,ALL,A,OFF\r\n", 200, goOn}, {"$PASHS,NME,GGA,A,ON\r\n", 200},
    {"$PASHS,NME,GSA,A,ON\r\n", 200},        {"$PASHS,NME,VTG,A,ON\r\n", 200},
    {"$PASHS,NME,SAT,A,ON\r\n", 200},        {"$PASHS,NME,GSV,A,ON\r\n", 200},
};
constexpr CGPSCommand kGgaOnlyNmea[] = {
    {"$PASHS,NME,ALL,A,OFF\r\n", 200, goOn},
    {"$PASHS,NME,GGA,A,ON\r\n", 200},
};
constexpr CGPSCommand kQueryPar[] = {{"$PASHQ,PAR\r\n", 500}};
constexpr CGPSCommand kElevMask[] = {{"$PASHS,PEM,#\r\n", 200}};

// Each line with the time for its acknowledgement. The receiver may come back from the reset with no sentence
// on.
constexpr CGPSCommand kReset[] = {
    {"$PASHS,RST\r\n", 10000, goOn},      {"", 3000, goOn},
    {"$PASHS,RTC,AUT,Y\r\n", 1000, goOn}, {"$PASHS,RTC,REM,B\r\n", 1000, goOn},
    {"$PASHS,NME,GGA,A,ON\r\n", 1000},    {"$PASHS,NME,GSA,A,ON\r\n", 1000},
    {"$PASHS,NME,VTG,A,ON\r\n", 1000},    {"$PASHS,NME,SAT,A,ON\r\n", 1000},
    {"$PASHS,PDP,14\r\n", 1000},          {"$PASHS,HDP,10\r\n", 1000},
    {"$PASHS,VDP,10\r\n", 1000},          {"$PASHS,SAV,Y\r\n", 1000},
};

}  // namespace

constinit const CGPSDriver CAshtech::s_Driver = {
    .pszName = "Ashtech", .bRawData = true, .defaultNmea = kDefaultNmea, .ggaOnlyNmea = kGgaOnlyNmea};
constinit const CGPSDriver CRacal::s_Driver = {.pszName = "Racal",
                                               .bRawData = true,
                                               .bOrthoHeight = true,
                                               .defaultNmea = kDefaultNmea,
                                               .ggaOnlyNmea = kGgaOnlyNmea};
constinit const CGPSDriver CCSI::s_Driver = {
    .pszName = "CSI",
    .bRawData = true,
    .defaultNmea = kDefaultNmea,
    .ggaOnlyNmea = kGgaOnlyNmea,
    .queryNmea = kQueryPar,
    .querySettings = kQueryPar,
    .queryBeacon = CGPSDriver::kQueryBeacon,
    .queryElevMask = kQueryPar,
    .setElevMask = kElevMask,
};

bool CCSI::ResetAll(bool wait_for_ack) {
  return Initialize() && m_Port.IsOpen() && WriteAck(kReset, wait_for_ack);
}
