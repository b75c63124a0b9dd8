#pragma once

#include <cstdint>
#include <string>

#include "simulator/bytes.h"

/// Puts the payload of a binary message together, big-endian.
class WireBuilder {
 public:
  template <class... T>
  WireBuilder& Put(T... values) {
    (simulator::AppendBig(m_Bytes, values), ...);
    return *this;
  }
  /// Bytes that nobody reads, not zero, so that the checksum has to take them in.
  WireBuilder& Fill(int count) {
    m_Bytes.append(static_cast<std::size_t>(count), '\x5A');
    return *this;
  }
  /// The whole $PASHR message of this kind, with its checksum, right but for `error`.
  std::string Pashr(const std::string& kind, int error = 0) {
    int sum = error;
    for (std::size_t i = 0; i + 1 < m_Bytes.size(); i += 2)
      sum += static_cast<unsigned char>(m_Bytes[i]) << 8 | static_cast<unsigned char>(m_Bytes[i + 1]);
    Put(static_cast<std::uint16_t>(sum));
    return "$PASHR," + kind + "," + m_Bytes + "\r";
  }

 private:
  std::string m_Bytes;
};

/// One satellite's measurement.
struct Mbn {
  int prn = 1;
  int toFollow = 0;
  int count = 0;
  double range = 0.93;
  int doppler = 0;
  double phase = 0.0;
  int dataType = 1;
  int goodBad = 24;
  int checksumError = 0;

  std::string Message() const {
    WireBuilder payload;
    payload.Put(std::uint8_t(dataType), std::uint8_t(toFollow), std::int8_t(prn)).Fill(1).Put(count).Fill(1);
    payload.Put(std::uint8_t(goodBad)).Fill(2).Put(range, doppler, phase).Fill(8);
    return payload.Pashr("MBN", checksumError);
  }
};

/// A position and clock.
struct Pbn {
  double x = 6378137.0, y = 0.0, z = 0.0;
  int milliseconds = 0;
  float clockOffset = 0.0F;
  float clockDrift = 0.0F;
  int checksumError = 0;

  std::string Message() const {
    WireBuilder payload;
    payload.Put(milliseconds).Fill(4).Put(x, y, z, clockOffset).Fill(12).Put(clockDrift).Fill(2);
    return payload.Pashr("PBN", checksumError);
  }
};

/// An ephemeris, of which a test chooses little; each other field counts on from the last.
struct Snv {
  int week = 1450;
  int prnLessOne = 8;
  int checksumError = 0;

  std::string Message() const {
    WireBuilder payload;
    payload.Put(std::int16_t(week), 1, 2.5F, 3, 4, 5.5F, 6.5F, 7.5F, 8, 9.5F, 10.25, 11.25, 12.25, 13);
    payload.Put(14.5F, 15.5F, 16.5F, 17.5F, 18.5F, 19.5F, 20.25, 21.25, -22.25, 23.5F, -24.5F).Fill(6);
    payload.Put(std::int8_t(prnLessOne)).Fill(1);
    return payload.Pashr("SNV", checksumError);
  }
};
