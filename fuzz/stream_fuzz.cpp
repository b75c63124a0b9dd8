// Bytes of any kind at the engine's door, in pieces of any size, with everything on that a host may switch
// on. Whatever they were, the next good sentences come through.
#include <algorithm>
#include <random>

#include "fuzz/support.h"

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* pData, std::size_t nSize, std::size_t nMaxSize);

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* pData, std::size_t nSize, std::size_t nMaxSize,
                                               unsigned nSeed) {
  const std::size_t size = LLVMFuzzerMutate(pData, nSize, nMaxSize);
  if (nSeed % 4 != 0) RepairChecksums(pData, size);
  return size;
}

namespace {

constexpr std::size_t kLongestPiece[] = {1, 20, 400, 20000};

// At the worst the rest of the stream has to fill up and be thrown away first.
void RequireThatAFixComesThrough(Rig& rig) {
  constexpr char kGga[] = "$GPGGA,123519.25,4807.038,N,01131.000,E,1,08,0.9,545.4,M,46.9,M,,*6E\r\n";
  constexpr std::size_t kMost = 16392 / (sizeof kGga - 1) + 2;
  for (std::size_t i = 0; i < kMost; ++i) {
    rig.Feed(kGga);
    if (rig.window.HasFix(45319.25)) return;
  }
  Require(false, "a good sentence comes through again");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t nSize) {
  Input input(pData, nSize);
  const unsigned model = input.Byte();
  const unsigned switches = input.Byte();
  std::minstd_rand random(input.Byte() + 1);

  Rig& rig = Rig::Instance();
  CGPSReceiver& receiver = rig.StartOver(model, static_cast<int>(switches >> 2 & 3));
  rig.engine.m_ComBuffer.m_bPaused = (switches & 1) == 0;
  receiver.MonitorNmea((switches & 2) != 0);
  const std::size_t longest = kLongestPiece[switches >> 4 & 3];

  // Several times over a short input fills the stream too.
  for (int round = (switches & 128) != 0 ? 6 : 1; round > 0; --round) {
    for (Input stream = input; !stream.IsEmpty();) {
      rig.Feed(stream.Take(1 + random() % longest));
      if ((switches & 64) != 0) receiver.KeepAlive();
    }
  }
  RequireThatAFixComesThrough(rig);
  return 0;
}
