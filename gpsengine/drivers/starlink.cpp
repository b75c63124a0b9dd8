#include "gpsengine/drivers/starlink.h"

#include "gpsengine/platform/clock.h"

namespace {

using enum CGPSCommand::Then;

constexpr CGPSCommand kDefaultNmea[] = {
    {"$PSLIS,NME,ALL,A,OFF\r\n", 200, goOn}, {"$PSLIS,NME,GGA,A,ON\r\n", 200},
    {"$PSLIS,NME,GSA,A,ON\r\n", 200},        {"$PSLIS,NME,VTG,A,ON\r\n", 200},
    {"$PSLIS,NME,GSV,A,ON\r\n", 200},
};
constexpr CGPSCommand kGgaOnlyNmea[] = {
    {"$PSLIS,NME,ALL,A,OFF\r\n", 200, goOn},
    {"$PSLIS,NME,GGA,A,ON\r\n", 200},
};
constexpr CGPSCommand kQueryBeacon[] = {{"$PSLIQ,NME,MSS\r\n", 200}, {"$PSLIQ,NME,MSK\r\n", 200}};
constexpr CGPSCommand kQueryPar[] = {{"$PSLIQ,PAR\r\n", 500}};
constexpr CGPSCommand kElevMask[] = {{"$PSLIS,ELM,#\r\n", 200}};
constexpr CGPSCommand kReset[] = {{"$PSLIS,RST,CLR\r\n", 100}, {"", 5000}};

}  // namespace

constinit const CGPSDriver CStarlink::s_Driver = {
    .pszName = "Starlink",
    .bOrthoHeight = true,
    .defaultNmea = kDefaultNmea,
    .ggaOnlyNmea = kGgaOnlyNmea,
    .queryNmea = kQueryPar,
    .queryBeacon = kQueryBeacon,
    .queryElevMask = kQueryPar,
    .setElevMask = kElevMask,
};

bool CStarlink::ResetAll(bool) {
  if (!Initialize() || !m_Port.IsOpen() || IsStopping()) return false;
  const CNoStop until_sentences_are_on;
  const bool written = WriteAck(kReset, false);
  SetDefaultNMEA();
  return written;
}
