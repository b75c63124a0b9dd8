#pragma once

#include <gtest/gtest.h>

#include <vector>

#include "gpsengine/platform/application.h"
#include "gpsengine/receiver/messages.h"

/// A host's main window that keeps what the library posts.
class HostWindow : public CGPSWindow {
 public:
  HostWindow() { Create(); }

  std::vector<CGPSData> records;
  std::vector<CString> strings;
  std::vector<CGPSDataRaw> epochs;
  std::vector<CGPSDataEphemeris> ephemerides;
  int blocks = 0;

 protected:
  void OnNewData(const CGPSData& data) override { records.push_back(data); }
  void OnNewString(const CString& text) override { strings.push_back(text); }
  void OnNewRawData(const CGPSDataRaw& epoch) override { epochs.push_back(epoch); }
  void OnNewEphemeris(const CGPSDataEphemeris& ephemeris) override { ephemerides.push_back(ephemeris); }
  void OnNewBin() override { ++blocks; }
};
