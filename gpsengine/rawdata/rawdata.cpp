#include "gpsengine/rawdata/rawdata.h"

#include <algorithm>
#include <iterator>

#include "gpsengine/rawdata/decoders.h"

namespace rawdata {

namespace {

struct Kind {
  Family family;
  int number;
  bool (*observations)(const BlockReader& block, EpochBuilder& epoch);
  bool (*ephemeris)(const BlockReader& block, BroadcastEphemeris& ephemeris);
};
constexpr Kind kKinds[] = {
    {Family::bin, 96, DecodeBin96, nullptr},        {Family::bin, 95, nullptr, DecodeBin95},
    {Family::oem, 43, DecodeRange, nullptr},        {Family::oem, 140, DecodeCompressedRange, nullptr},
    {Family::oem, 41, nullptr, DecodeRawEphemeris}, {Family::oem, 7, nullptr, DecodeGpsEphemeris},
};

const Kind* FindKind(const BlockHead& head) {
  const auto* kind = std::find_if(std::begin(kKinds), std::end(kKinds), [&](const Kind& candidate) {
    return candidate.family == head.family && candidate.number == head.number;
  });
  return kind == std::end(kKinds) ? nullptr : kind;
}

}  // namespace

BlockHead ReadHead(std::span<const WORD> block) {
  constexpr WORD kBin[] = {'$' | 'B' << 8, 'I' | 'N' << 8};
  constexpr WORD kOemSync = 0xAA | 0x44 << 8, kOemSyncEnd = 0x12;
  if (block.size() < 3) return {};
  if (block[0] == kBin[0] && block[1] == kBin[1]) return {Family::bin, block[2]};
  if (block[0] == kOemSync && (block[1] & 0xFF) == kOemSyncEnd) return {Family::oem, block[2]};
  return {};
}

Content ContentOf(const BlockHead& head) {
  const Kind* kind = FindKind(head);
  if (kind == nullptr) return Content::unknown;
  return kind->observations != nullptr ? Content::observations : Content::ephemeris;
}

bool DecodeObservations(std::span<const WORD> block, PhaseHistory& history, ObservationEpoch& epoch) {
  epoch.signals.clear();
  const Kind* kind = FindKind(ReadHead(block));
  EpochBuilder builder(epoch);
  if (kind != nullptr && kind->observations != nullptr && kind->observations(BlockReader(block), builder) &&
      builder.Finish(history)) {
    return true;
  }
  epoch = ObservationEpoch();
  return false;
}

bool DecodeEphemeris(std::span<const WORD> block, BroadcastEphemeris& ephemeris) {
  const Kind* kind = FindKind(ReadHead(block));
  return kind != nullptr && kind->ephemeris != nullptr && kind->ephemeris(BlockReader(block), ephemeris);
}

}  // namespace rawdata
