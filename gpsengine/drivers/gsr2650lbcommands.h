#pragma once

#include "gpsengine/receiver/command.h"

// Command sets of the GSR2650 LB.
//
// A LOG without a port name, hence the two blanks, outputs to the port on which the command arrives. COM2 is
// the receiver's own port name, whichever port the host uses.

namespace gsr2650lb {

inline constexpr CGPSCommand kDefaultNmea[] = {
    {"LOG  GPGGA ONTIME 1 0 NOHOLD\r\n", 200},
    {"UNLOG  GPGGALONG\r\n", 200},
    {"UNLOG  GPGGARTK\r\n", 200},
    {"UNLOG  GPGLL\r\n", 200},
    {"UNLOG  GPGRS\r\n", 200},
    {"LOG  GPGSA ONTIME 1 0 NOHOLD\r\n", 200},
    {"UNLOG  GPGST\r\n", 200},
    {"LOG  GPGSV ONTIME 1 0 NOHOLD\r\n", 200},
    {"UNLOG  GPRMB\r\n", 200},
    {"UNLOG  GPRMC\r\n", 200},
    {"LOG  GPVTG ONTIME 1 0 NOHOLD\r\n", 200},
    {"UNLOG  GPZDA\r\n", 200},
    {"UNLOG  GPALM\r\n", 200},
};
inline constexpr CGPSCommand kGgaOnlyNmea[] = {
    {"UNLOG  GPALM\r\n", 200},     {"LOG  GPGGA ONTIME 1 0 NOHOLD\r\n", 200},
    {"UNLOG  GPGGALONG\r\n", 200}, {"UNLOG  GPGGARTK\r\n", 200},
    {"UNLOG  GPGLL\r\n", 200},     {"UNLOG  GPGRS\r\n", 200},
    {"UNLOG  GPGSA\r\n", 200},     {"UNLOG  GPGST\r\n", 200},
    {"UNLOG  GPGSV\r\n", 200},     {"UNLOG  GPRMB\r\n", 200},
    {"UNLOG  GPRMC\r\n", 200},     {"UNLOG  GPVTG\r\n", 200},
    {"UNLOG  GPZDA\r\n", 200},
};

inline constexpr CGPSCommand kSetElevMask[] = {{"ECUTOFF #\r\n", 200}, {"SAVECONFIG\r\n", 500}};
inline constexpr CGPSCommand kQueryElevMask[] = {{"LOG COM2 ECUTOFFA ONCE\r\n", 100}};
inline constexpr CGPSCommand kQueryNmea[] = {{"LOG LOGLISTA ONCE\r\n", 200}};
inline constexpr CGPSCommand kQueryBeacon[] = {{"LOG COM2 RXCONFIGA ONCE\r\n", 100}};
inline constexpr CGPSCommand kQuerySource[] = {
    {"LOG COM2 RTKSOURCEA ONCE\r\n", 100},
    {"LOG COM2 SBASCONTROLA ONCE\r\n", 100},
    {"LOG COM2 PSRDIFFSOURCEA ONCE\r\n", 100},
};
inline constexpr CGPSCommand kQueryWaas[] = {{"LOG WAAS1A ONCE\r\n", 200}};
inline constexpr CGPSCommand kQueryOmniStar[] = {
    {"LOG OMNIINFOA ONCE\r\n", 200},
    {"LOG OMNISTATA ONCE\r\n", 200},
    {"LOG OMNIHPPOSA ONCE\r\n", 200},
};

inline constexpr CGPSCommand kDatum[] = {{"UNDULATION TABLE\r\n", 100}, {"DATUM WGS84\r\n", 100}};
// Indexed by DgpsMode.
inline constexpr CGPSCommand kSources[][3] = {
    {{"RTKSOURCE NONE\r\n", 100}, {"PSRDIFFSOURCE NONE\r\n", 100}, {"SBASCONTROL DISABLE AUTO\r\n", 100}},
    {{"RTKSOURCE AUTO ANY\r\n", 100},
     {"PSRDIFFSOURCE AUTO ANY\r\n", 100},
     {"SBASCONTROL ENABLE AUTO\r\n", 100}},
    {{"RTKSOURCE OMNISTAR\r\n", 100}, {"PSRDIFFSOURCE NONE\r\n", 100}, {"SBASCONTROL DISABLE AUTO\r\n", 100}},
    {{"RTKSOURCE NONE\r\n", 100}, {"PSRDIFFSOURCE NONE\r\n", 100}, {"SBASCONTROL ENABLE AUTO\r\n", 100}},
    {{"PSRDIFFSOURCE CDGPS\r\n", 100}, {"RTKSOURCE NONE\r\n", 100}, {"SBASCONTROL DISABLE AUTO\r\n", 100}},
    {{"PSRDIFFSOURCE OMNISTAR\r\n", 100}, {"RTKSOURCE NONE\r\n", 100}, {"SBASCONTROL DISABLE AUTO\r\n", 100}},
};

inline constexpr CGPSCommand kUserDatum[] = {
    {"USERDATUM 6378137 298.257222101 -.9910 1.9072 .5129 .000000125033 .0000000467845 .0000000565292 0 \r\n",
     100},
    {"datum user\r\n", 100},
    {"UNDULATION USER -1.09\r\n", 100},
    {"SAVECONFIG\r\n", 1000},
};
inline constexpr CGPSCommand kLbandAuto[] = {{"RTKSOURCE OMNISTAR ANY\r\n", 800}};
inline constexpr int kLbandModeAuto = 1, kLbandModeFixed = 2;

// After the RANGEB log, which has a variable period.
inline constexpr CGPSCommand kRawOn[] = {{"LOG RAWEPHEMB ONCHANGED\r\n", 100},
                                         {"LOG ALMANACB ONCHANGED\r\n", 100}};
inline constexpr CGPSCommand kRawOff[] = {
    {"UNLOG RANGEB\r\n", 100}, {"UNLOG RAWEPHEMB\r\n", 100}, {"UNLOG ALMANACB\r\n", 100}};

inline constexpr CGPSCommand kReset[] = {{"RESET 0\r\n", 10000}};
inline constexpr DWORD kRestartTime = 3000;

// Saving takes longer the more has changed.
inline constexpr CGPSCommand kSave[] = {{"SAVECONFIG\r\n", 1000}};
inline constexpr CGPSCommand kSaveSource[] = {{"SAVECONFIG\r\n", 2000}};

}  // namespace gsr2650lb
