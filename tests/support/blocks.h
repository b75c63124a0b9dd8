#pragma once

#include <string>
#include <vector>

#include "simulator/simulator.h"

/// A kind of blocks of raw data, and how a receiver is told to send it.
struct BlockSource {
  const char* model;
  const char* command;
  std::size_t length;                        ///< Of a block; 0: that of an OEM message.
  double range = 0, phase = 0, doppler = 0;  ///< What the block's steps leave of a measurement.
};
constexpr BlockSource kObservations[] = {
    {"CSI - MAX", "$JBIN,96,1\r\n", 312, 1e-6, 1e-6, 0.001},
    {"GSR2650 LB", "LOG RANGEB ONTIME 1\r\n", 0, 1e-6, 1e-6, 0.001},
    {"GSR2650 LB", "LOG RANGECMPB ONTIME 1\r\n", 0, 0.004, 0.002, 0.002},
};
constexpr BlockSource kEphemerides[] = {
    {"CSI - MAX", "$JBIN,95,1\r\n", 140},
    {"GSR2650 LB", "LOG RAWEPHEMB ONCHANGED\r\n", 0},
    {"GSR2650 LB", "LOG GPSEPHEMB ONCHANGED\r\n", 0},
};

/// What comes in that time, but for sentences.
inline std::vector<std::string> Blocks(const BlockSource& source, int seconds) {
  const auto receiver = simulator::MakeReceiver({.model = source.model});
  receiver->Receive("$JOFF\r\nUNLOG GPGGA\r\nUNLOG GPGSA\r\nUNLOG GPGSV\r\nUNLOG GPVTG\r\n");
  receiver->Receive(source.command);
  receiver->Advance(0);
  const std::string bytes = receiver->Advance(seconds);
  std::vector<std::string> blocks;
  for (std::size_t at = 0; at < bytes.size(); at += blocks.back().size()) {
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(bytes.at(at + i)); };
    const std::size_t length = source.length > 0 ? source.length : 28 + (byte(8) | byte(9) << 8) + 4;
    blocks.push_back(bytes.substr(at, length));
  }
  return blocks;
}
