#pragma once

#include <numbers>

#include "gpsengine/drivers/plain.h"
#include "gpsengine/platform/rehearsal.h"
#include "gpsengine/platform/trace.h"
#include "gpsengine/receiver/workingstate.h"
#include "tests/support/basics.h"
#include "tests/support/hostwindow.h"

/// The sentence with the checksum of what stands after its "$", and its line end.
inline std::string WithChecksum(std::string_view sentence) {
  unsigned sum = 0;
  for (const char c : sentence.substr(1)) sum ^= static_cast<unsigned char>(c);
  constexpr char kHex[] = "0123456789ABCDEF";
  return std::string(sentence) + '*' + kHex[sum >> 4 & 15] + kHex[sum & 15] + "\r\n";
}

/// A position of eight satellites at a time of day, "123519" say.
inline std::string GgaAt(const std::string& time, int nQuality = 1,
                         const std::string& latitude = "4807.038") {
  return WithChecksum("$GPGGA," + time + ',' + latitude + ",N,01131.000,E," + std::to_string(nQuality) +
                      ",08,0.9,545.4,M,46.9,M,,");
}
/// One at ten seconds past midnight plus up to 49, which tells it from others.
inline std::string FixAt(int nSecond) {
  return GgaAt("0000" + std::to_string(10 + nSecond % 50));
}

constexpr double kDegree = std::numbers::pi / 180.0;

/// A fix at 12:35:19 on 2024-05-14 that moves south-west.
inline CGPSData FixRecord() {
  CGPSData data;
  data.m_Time = CTime(1715688000);
  data.m_dTimeOfDay = 45319.25;
  data.m_dLatitude = 48.1173 * kDegree;
  data.m_dLongitude = -11.5 * kDegree;
  data.m_dAltitude = 545.4;
  data.m_dHDOP = 0.9;
  data.m_nSatellitesUsed = 8;
  data.m_nSatellitesInView = 11;
  data.m_nSignalType = UDF_SIGNAL_WAAS;
  data.m_dHeading = 225.0 * kDegree;
  data.m_dSpeed = 5.0;
  data.m_bPositionValid = data.m_bVelocityValid = data.m_bDOPValid = true;
  return data;
}

/// A receiver on one thread with rehearsed time: sentences go in at Parse, records come out at the host's
/// window.
template <class Receiver = COtherGps>
class ReceiverTest : public testing::Test {
 protected:
  ReceiverTest() {
    CGPSReceiver::RecordLock()->Reset();
    app.SetMainWnd(&window);
    receiver.SetupReceiver(1, 0, 0.0, "", false);
    receiver.Initialize();
    line.ForgetSteps();
  }

  /// Hands a message to the receiver, and what it published to the window. Gives the result of Parse.
  bool Feed(std::string_view message) {
    CString text(message.data(), static_cast<int>(message.size()));
    const bool published = receiver.Parse(text);
    window.Drain();
    return published;
  }
  /// The same for a sentence that still lacks its checksum.
  bool FeedSentence(std::string_view sentence) { return Feed(WithChecksum(sentence)); }
  /// Attaches the bytes, as the engine does with raw data on, then parses their text as the framing gives it.
  bool FeedBinary(std::string_view bytes) {
    receiver.AttachRawData(bytes.data(), static_cast<int>(bytes.size()));
    return Feed(std::string(bytes.substr(0, bytes.find('\0'))) + "\n");
  }
  /// What is traced meanwhile.
  static std::string TraceOf(const std::function<void()>& call) {
    std::string traced;
    SetTraceHandler([&traced](const CString& text) { traced += text.ToUtf8(); });
    call();
    SetTraceHandler({});
    return traced;
  }
  /// The last record that was published.
  const CGPSData& Last() const { return window.records.back(); }
  std::size_t Published() const { return window.records.size(); }
  /// A satellite of the last record; nullptr, if it has no slot.
  const CGPSSatelliteData* Find(int number) const {
    for (const CGPSSatelliteData& slot : Last().m_Satellites)
      if (slot.m_nPRN == number) return &slot;
    return nullptr;
  }

  CRehearsal line;
  CWinApp app{"gpsengine-test"};
  HostWindow window;
  Receiver receiver;
};
