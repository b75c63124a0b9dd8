// Blocks of raw data with anything in them, some with their checksum made right, as a receiver with a fault
// of its own sends them. What is taken as measurements has to be such.
#include <cmath>
#include <set>
#include <vector>

#include "fuzz/support.h"
#include "gpsengine/rawdata/rawdata.h"
#include "simulator/oemlog.h"

namespace {

unsigned char ByteOf(const std::string& block, std::size_t at) {
  return static_cast<unsigned char>(block[at]);
}

std::uint32_t Little(const std::string& block, std::size_t at, std::size_t width) {
  std::uint32_t value = 0;
  while (width-- > 0) value = value << 8 | ByteOf(block, at + width);
  return value;
}

// Where the checksum of a block stands, its width, and what it should be. Width 0: the block has none.
struct Checksum {
  std::size_t at = 0, width = 0;
  std::uint32_t value = 0;
};

Checksum ChecksumOf(const std::string& block) {
  Checksum sum;
  if (block.size() >= 12 && block.starts_with("$BIN")) {
    sum = {8 + Little(block, 6, 2), 2};
    for (std::size_t i = 8; i < std::min(sum.at, block.size()); ++i) sum.value += ByteOf(block, i);
    sum.value &= 0xFFFF;
  } else if (block.size() >= 32 && block.starts_with("\xAA\x44\x12")) {
    sum = {ByteOf(block, 3) + Little(block, 8, 2), 4};
    sum.value = simulator::OemCrc(block.substr(0, sum.at));
  }
  if (sum.at + sum.width > block.size()) sum.width = 0;
  return sum;
}

void Repair(std::string& block) {
  const Checksum sum = ChecksumOf(block);
  for (std::size_t i = 0; i < sum.width; ++i) block[sum.at + i] = static_cast<char>(sum.value >> 8 * i);
}

void CheckEpoch(const rawdata::ObservationEpoch& epoch) {
  Require(epoch.week >= 0 && epoch.time_of_week >= 0.0 && epoch.time_of_week < 604800.0, "a time of GPS");
  Require(!epoch.signals.empty(), "an epoch has a measurement");
  std::set<std::string> names;
  for (const rawdata::SignalObservation& signal : epoch.signals) {
    const std::string name = signal.system + std::to_string(signal.satellite) + signal.code;
    Require(names.insert(name).second, "each signal comes once");
    Require(signal.satellite > 0 && signal.satellite < 64 && std::string(signal.code).size() == 2,
            "a signal");
    const double range = signal.pseudorange;
    Require(range == 0.0 || (range >= 1e6 && range <= 1e8), "a range");
    Require(range != 0.0 || signal.carrier_phase != 0.0, "a measurement");
    Require(std::isfinite(signal.carrier_phase) && std::isfinite(signal.doppler) && std::isfinite(signal.cn0),
            "numbers");
  }
  CGPSDataRaw raw;
  Require(rawdata::ToDataRaw(epoch, raw) == (raw.GetNumSV() > 0) && raw.GetNumSV() <= 11, "a record's room");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t nSize) {
  Input input(pData, nSize);
  rawdata::PhaseHistory history;
  rawdata::ObservationEpoch epoch;
  while (!input.IsEmpty()) {
    const unsigned choice = input.Byte();
    const std::size_t length = input.Byte() | (choice & 7) << 8;
    std::string block(input.Take(length));
    if ((choice & 0x80) == 0) Repair(block);
    block.resize(block.size() / 2 * 2);
    std::vector<WORD> words;
    for (std::size_t i = 0; i < block.size(); i += 2) words.push_back(static_cast<WORD>(Little(block, i, 2)));

    rawdata::BroadcastEphemeris ephemeris;
    const bool observed = rawdata::DecodeObservations(words, history, epoch);
    const bool told = rawdata::DecodeEphemeris(words, ephemeris);
    Require(!(observed && told), "a block is one thing");
    Require(observed || epoch.signals.empty(), "what is refused leaves nothing");
    Require(told == (ephemeris.orbit.m_nPRN >= 1 && ephemeris.orbit.m_nPRN <= 32),
            "an ephemeris is of a satellite");
    if (!observed && !told) continue;
    const Checksum sum = ChecksumOf(block);
    Require(sum.width > 0 && Little(block, sum.at, sum.width) == sum.value, "a good checksum");
    if (observed) CheckEpoch(epoch);
    const rawdata::Content content = observed ? rawdata::Content::observations : rawdata::Content::ephemeris;
    Require(rawdata::ContentOf(rawdata::ReadHead(words)) == content, "a block tells what it holds");
  }
  return 0;
}
