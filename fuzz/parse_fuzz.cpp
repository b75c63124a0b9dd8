// Messages straight into one receiver: of any kind, by their tag or by a kind that the caller claims, with
// bytes attached or without, in 8-bit text or in any characters at all.

#include "fuzz/support.h"

namespace {

constexpr unsigned kWide = 1, kAttached = 2, kClaimed = 4, kRepaired = 8;

// A line of the input as a message: a choice, perhaps a kind, and the text.
void ParseLine(Rig& rig, CGPSReceiver& receiver, std::string_view line) {
  Input input(reinterpret_cast<const std::uint8_t*>(line.data()), line.size());
  const unsigned choice = input.Byte();
  const auto type =
      static_cast<GPSStringType>(static_cast<int>((choice & kClaimed) != 0 ? input.Byte() : 0) - 2);
  std::string bytes(input.Rest());
  if ((choice & kRepaired) != 0) RepairChecksums(reinterpret_cast<std::uint8_t*>(bytes.data()), bytes.size());

  // Some of them cut short, as a message after a port prompt may be.
  const std::size_t attached = (choice & kAttached) != 0 ? bytes.size() * (16 - choice / 16) / 16 : 0;
  receiver.AttachRawData(bytes.data(), static_cast<int>(attached));
  CString text = TextOf(bytes, (choice & kWide) != 0);
  for (int i = 0; i < text.GetLength(); ++i)  // text ends at a zero byte: the framing lets none through
    if ((text[i] & 0xFF) == 0) text.SetAt(i, u' ');
  text += "\r\n";
  const int length = text.GetLength();
  (choice & kClaimed) != 0 ? receiver.Parse(text, type) : receiver.Parse(text);
  Require(text.GetLength() <= length, "a message is shortened at the most");
  rig.window.Drain();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t nSize) {
  Input input(pData, nSize);
  Rig& rig = Rig::Instance();
  CGPSReceiver& receiver = rig.StartOver(input.Byte(), static_cast<int>(input.Byte() % 3));
  while (!input.IsEmpty()) ParseLine(rig, receiver, input.TakeThrough('\n'));
  return 0;
}
