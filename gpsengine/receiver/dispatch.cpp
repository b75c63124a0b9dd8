#include <array>
#include <cstdint>
#include <utility>

#include "gpsengine/platform/textscan.h"
#include "gpsengine/receiver/sentencetable.h"

namespace {

constexpr int kPromptLength = 6;  // "[COM" and the two characters after it

constexpr auto kHexDigits = [] {
  std::array<std::int8_t, 128> values{};
  values.fill(-1);
  for (int i = 0; i < 10; ++i) values[static_cast<std::size_t>('0' + i)] = static_cast<std::int8_t>(i);
  for (int i = 10; i < 16; ++i)
    values[static_cast<std::size_t>('a' + i - 10)] = values[static_cast<std::size_t>('A' + i - 10)] =
        static_cast<std::int8_t>(i);
  return values;
}();

int HexDigit(WCHAR c) {
  return c < kHexDigits.size() ? kHexDigits[c] : -1;
}

// Reads at most four hexadecimal digits; none give 0.
unsigned ReadHex(const WCHAR* p, const WCHAR* end) {
  unsigned value = 0;
  const WCHAR* const last = end - p > 4 ? p + 4 : end;
  for (int digit = 0; p != last && (digit = HexDigit(*p)) >= 0; ++p)
    value = value << 4 | static_cast<unsigned>(digit);
  return value;
}

// Where a port prompt stands in the message, or -1. Nearly no message has one, nor the bracket that begins
// it.
int FindPrompt(const CString& message) {
  return textscan::Contains(message.View(), u'[') ? message.Find("[COM") : -1;
}

bool IsOemBinary(const CString& message) {
  const auto low = [&](int index) { return message.GetAt(index) & 0xFF; };
  return low(0) == 0xAA && low(1) == 0x44 && low(2) == 0x12;
}

// The acknowledgement of a command: the wait for it is released by the publication that follows.
bool TakeAck(CGPSStatusData& status, const CString& message) {
  if (!message.StartsWith("$PASHR,ACK")) return false;
  status.m_bAck = status.m_bStatusUpdated = true;
  return true;
}

// Bit n stands for kind n; the kinds from 32 up share the bits from 0 up.
std::uint32_t NmeaBit(GPSStringType type) {
  return 1u << (static_cast<unsigned>(type) % 32);
}

}  // namespace

bool CGPSReceiver::Parse(CString& sentence) {
  if (const int prompt = FindPrompt(sentence); prompt >= 0) sentence = sentence.Mid(prompt + kPromptLength);
  const GPSStringType type = GetGPSStringType(sentence);
  if (m_bMonitorNmea) GotNmea(type);
  return Parse(sentence, type);
}

GPSStringType CGPSReceiver::GetGPSStringType(const CString& sentence) {
  const SentenceTable::Row* row = SentenceTable::Find(sentence.View());
  if (row == nullptr) return IsOemBinary(sentence) ? GPS_STRING_AXIS4_BIN : GPS_STRING_NONE;
  m_nSentencesRecognised.Count();
  if (!SentenceTable::IsChecksumTested(row->type) || IsChecksumOK(sentence)) return row->type;
  m_nChecksumErrors.Count();
  return GPS_STRING_NONE;
}

bool CGPSReceiver::IsChecksumOK(const CString& sentence) {
  std::u16string_view message = sentence.View();
  if (!message.starts_with(u'$')) {
    const auto dollar = message.find(u'$');
    // An asterisk before the "$" is the first one, and no end of what stands after.
    if (dollar == std::u16string_view::npos || message.find(u'*') < dollar) return false;
    message.remove_prefix(dollar);
  }
  message.remove_prefix(1);
  unsigned sum = 0;
  const int star = textscan::SumUpTo(message, u'*', sum);
  if (star < 0) return false;
  return ((sum ^ ReadHex(message.data() + star + 1, message.data() + message.size())) & 0xFF) == 0;
}

bool CGPSReceiver::Parse(CString& sentence, GPSStringType type) {
  // One lock from here to the copy of the record, but for the makes' reports that call out to the host or
  // write.
  RecordLock state;
  state->record.m_bProprietaryValid = false;
  bool force = false;
  switch (type) {
    case GPS_STRING_GGA:
    case GPS_STRING_INGGA:
      if (!Decode(*state, sentence, type)) return false;
      if (state->record.m_bPositionValid && state->computeMotion) state->speed.ComputeMotion(state->record);
      break;
    case GPS_STRING_GSA:
      if (!Decode(*state, sentence, type)) return false;
      state->gsaReceived = true;
      break;
    case GPS_STRING_GSV:
      if (!Decode(*state, sentence, type)) return false;
      state->gsvReceived = force = true;
      break;
    case GPS_STRING_PASHR:
      if (TakeAck(state->record.m_Status, sentence)) break;
      // Who sends standard satellite sentences needs no reports to the same end.
      if (state->gsaReceived && state->gsvReceived) return false;
      state.Unlock();
      if (!ProcessPASHR(sentence)) return false;
      if (PostNewDataRaw()) return true;
      return PostNewData(true);
    case GPS_STRING_BIN:
      state.Unlock();
      return ProcessBIN();
    case GPS_STRING_AXIS4_BIN:
      state.Unlock();
      return ProcessAxis4BIN() && PostNewData(false);
    default:
      if (!Decode(*state, sentence, type)) return false;
  }
  return Publish(std::move(state), force);
}

bool CGPSReceiver::Decode(CString& sentence, GPSStringType type) {
  return Decode(*RecordLock(), sentence, type);
}

// Runs the decoder of a kind. A sentence of a make that has none is kept for the host; the rest is not for
// us.
bool CGPSReceiver::Decode(CWorkingState& state, CString& message, GPSStringType type) {
  const SentenceTable::Row* const row = SentenceTable::OfKind(type);
  if (row == nullptr || row->decoder == nullptr) {
    if (!message.StartsWith("$P") || message.GetLength() <= 5) return false;
    CDecoders::Proprietary(state.record, message);
    return true;
  }
  try {
    return row->decoder({*this, state, message});
  } catch (const CException&) {
    return InvalidSentence(row->name);
  }
}

void CGPSReceiver::MonitorNmea(bool on) {
  m_bMonitorNmea = on;
  m_wNmeaBits = 0;
}

void CGPSReceiver::GotNmea(GPSStringType type) {
  m_wNmeaBits |= NmeaBit(type);
}

bool CGPSReceiver::HaveGotNmea(GPSStringType type) const {
  return (m_wNmeaBits & NmeaBit(type)) != 0;
}
