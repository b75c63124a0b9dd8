#pragma once

#include "gpsengine/drivers/plain.h"

/// What all receivers share. An engine that is to answer the same as another one before it needs it as new.
class SharedState : public COtherGps {
 public:
  static void Reset() {
    m_GPSData = CGPSData();
    m_GPSDataRaw = CGPSDataRaw();
    m_GPSEphemeris = CGPSDataEphemeris();
    m_GPSMessageRaw.Clear();
    m_SpeedEngine.Reset();
    m_nNextGSV = 1;
    m_nTotalGSV = 0;
  }
};
