#include <algorithm>
#include <array>
#include <cstring>

#include "gpsengine/platform/clock.h"
#include "gpsengine/platform/trace.h"
#include "gpsengine/receiver/decoders.h"
#include "gpsengine/receiver/post.h"
#include "gpsengine/reports/fields.h"
#include "gpsengine/text/number.h"
#include "gpsengine/text/parser.h"

// What a receiver of the "$J" language answers and sends, and the binary blocks that are handed on unread.

namespace {

// The settings of a $>JSHOW line. Each gives false for a value that it cannot take.

bool ShowSource(CGPSStatusData& status, const CString& value) {
  status.m_bDgpsModeValid = true;
  status.m_nDgpsMode = value.StartsWith("BEACON")  ? DGPS_MODE_BEACON
                       : value.StartsWith("LBAND") ? DGPS_MODE_LBAND
                       : value.StartsWith("WAAS")  ? DGPS_MODE_WAAS
                                                   : DGPS_MODE_NONE;
  return true;
}

bool ShowSentence(CGPSStatusData& status, const CString& value) {
  const CString name = value.Left(5);
  const auto field = std::find_if(std::begin(kNmeaFields), std::end(kNmeaFields),
                                  [&](const NmeaField& candidate) { return name == candidate.name; });
  status.m_bNmeaStatusValid = field != std::end(kNmeaFields);
  if (status.m_bNmeaStatusValid) status.*field->state = NMEA_MSG_ON;
  return status.m_bNmeaStatusValid;
}

bool ShowMask(CGPSStatusData& status, const CString& value) {
  if (!ParseInt(value.View(), &status.m_nElevationMask)) return false;
  status.m_bElevationMaskValid = true;
  return true;
}

bool ShowLband(CGPSStatusData& status, const CString& value) {
  double frequency = 0.0;
  int remaining = 0;
  if (!ParseDouble(value.View(), frequency, remaining)) return false;
  status.m_nLbandMode = frequency == 0.0 ? 1 : 2;
  return true;
}

struct ShownSetting {
  const char* pszKeyword;
  bool (*pfnShow)(CGPSStatusData& status, const CString& value);
};
constexpr ShownSetting kShownSettings[] = {
    {"DIFF", ShowSource}, {"ASC", ShowSentence}, {"MASK", ShowMask}, {"FREQ", ShowLband}};

// A $BIN block has this many bytes about its data: tag, number, length, checksum, carriage return, line feed.
constexpr int kBinFrame = 12;

// The receiver forgets its block output on some saves, so it is asked for again after this many seconds of
// blocks.
constexpr double kBinRenewal = 3.0;

int BinDataLength(const char* block, int length) {
  std::array<unsigned char, 8> head{};
  std::memcpy(head.data(), block, std::min(head.size(), static_cast<std::size_t>(length)));
  return head[6] | head[7] << 8;
}

void KeepWords(CWordArray& words, const char* block, int count) {
  words.SetSize(count);
  const auto byte = [&](int index) { return static_cast<BYTE>(block[index]); };
  for (int i = 0; i < count; ++i) words.GetData()[i] = static_cast<WORD>(byte(2 * i) | byte(2 * i + 1) << 8);
}

// Takes a block to the host's thread, which may read it there as long as it likes.
class BlockFreight : public MessageFreight {
 public:
  BlockFreight(CWordArray words, std::shared_ptr<CWordArray> target)
      : m_Words(std::move(words)), m_pTarget(std::move(target)) {}
  void Arrive() override { *m_pTarget = std::move(m_Words); }

 private:
  CWordArray m_Words;
  const std::shared_ptr<CWordArray> m_pTarget;
};

}  // namespace

// One setting a line, and a line for each sentence that is on:
//   $>JSHOW,DIFF,WAAS
//   $>JSHOW,ASC,GPGGA,1.0,OTHER
//   $>JSHOW,MASK,5
//   $>JSHOW,FREQ,1557.8450
bool CDecoders::JSHOW(CGPSStatusData& status, CString& message) {
  CParser parser(message, ",", true);
  CString keyword, value;
  parser.SkipField();
  parser.GetNextString(keyword);
  const auto setting =
      std::find_if(std::begin(kShownSettings), std::end(kShownSettings),
                   [&](const ShownSetting& candidate) { return keyword == candidate.pszKeyword; });
  if (setting == std::end(kShownSettings)) return false;
  parser.GetNextString(value);
  if (!setting->pfnShow(status, value)) return false;
  status.m_bStatusUpdated = true;
  return true;
}

// Lines for a person to read go to the host as they are:
//   $>JI,412345,1,7,14032004,01/06/2004,31/12/2009,3.5,43
//   $>JGEO,SENT=1575.4200,USED=1575.4200,PRN=122,LON=-54,EL=21,AZ=115
//   $RD1,314200,1450,1557.8450,1,2,3,0,4,0,1,0
bool CDecoders::JiOrJgeoOrRd1(CGPSStatusData& status, CString& message) {
  StoreText(status, message);
  return true;
}

void CGPSReceiver::PostWords() {
  CWordArray words;
  GetBinWords(words);
  PostMessageW(AfxGetMainWnd(), WM_GPS_NEW_BIN,
               std::make_unique<BlockFreight>(std::move(words), m_pBinWords));
}

// Bytes of a block with four bytes of data: "$BIN", number 95, length 4, data, checksum, line end:
//   24 42 49 4E  5F 00  04 00  11 22 33 44  AA 00  0D 0A
bool CGPSReceiver::ProcessBIN() {
  RecordLock state;
  int length = 0;
  const char* const block = state->message.GetMessageBin(length);
  Trace("BIN length %d\n", length);
  if (block == nullptr) return false;

  const int words = (BinDataLength(block, length) + kBinFrame) / 2;
  const bool whole = 2 * words <= length;
  KeepWords(m_LastWords, block, whole ? words : 0);
  const bool fast = state->binInterval == 0.2;
  const int renewal = static_cast<int>(kBinRenewal / state->binInterval);
  state.Unlock();
  if (!whole) return false;
  PostWords();

  if (++m_nBinaryMessages % renewal == 0) {
    m_Port.Write(CString(fast ? "$JBIN,95,0.2\r\n" : "$JBIN,95,1\r\n"));
    Sleep(200);
  }
  return true;
}

// Any OEM binary message, from its sync bytes to its CRC:
//   AA 44 12 1C 2A 00 …
bool CGPSReceiver::ProcessAxis4BIN() {
  RecordLock state;
  int length = 0;
  const char* const message = state->message.GetMessageBin(length);
  Trace("BIN length %d\n", length);
  if (message == nullptr) return false;
  KeepWords(m_LastWords, message, length / 2);
  state.Unlock();
  PostWords();
  return true;
}
