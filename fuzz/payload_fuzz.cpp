// Binary messages that are framed right and carry anything: what a receiver with a fault of its own may send.
#include <string>

#include "fuzz/support.h"

namespace {

using namespace std::string_literals;

struct Kind {
  const char* pszHead;
  std::size_t nLength;  // of the whole message; 0: the header tells
  bool bChecked;        // ends with a checksum of its content
};
constexpr Kind kKinds[] = {
    {"$PASHR,MBN,", 54, true},  {"$PASHR,PBN,", 68, true},  {"$PASHR,SNV,", 144, true},
    {"$PASHR,MCA,", 49, false}, {"$PASHR,SAL,", 82, false}, {"$BIN_", 140, false},
    {"$BIN`", 312, false},      {"\xAA\x44\x12", 0, false},
};

// A message of the chosen kind, filled from the input as far as it goes.
std::string Message(Input& input, unsigned choice) {
  const Kind& kind = kKinds[choice % 8];
  std::string message = kind.pszHead;
  if (kind.nLength > 0) {
    message += input.Take(kind.nLength - message.size());
    message.resize(kind.nLength);
    // Few of the rest have a wrong checksum, and are refused for it.
    if (kind.bChecked && choice < 0xE0)
      RepairChecksums(reinterpret_cast<std::uint8_t*>(message.data()), message.size());
    return message;
  }
  const std::size_t body = input.Byte() | (choice & 8) << 5;
  message += static_cast<char>(28);
  message += input.Take(4);
  message.resize(8);
  message += static_cast<char>(body & 0xFF);
  message += static_cast<char>(body >> 8);
  message += input.Take(18 + body + 4);
  message.resize(28 + body + 4);
  return message;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t nSize) {
  Input input(pData, nSize);
  Rig& rig = Rig::Instance();
  CGPSReceiver& receiver = rig.StartOver(input.Byte(), 0);
  GrowingCounters counters(rig.engine);
  CWordArray words;
  while (!input.IsEmpty()) {
    const unsigned choice = input.Byte();
    const unsigned eighths = input.Byte() % 8;
    const std::string message = Message(input, choice);
    const auto before = rig.engine.GetMessages();
    rig.Feed(message);
    Require(rig.engine.GetMessages() == before + 1, "a whole message is one message");
    receiver.GetBinWords(words);
    Require(words.GetSize() * 2 <= static_cast<int>(28 + 511 + 4), "a block has no more words than came");
    rig.Feed("\n");
    Require(rig.engine.GetMessages() == before + 1, "a line feed is none");
    // Some of them cut short, as a message behind a port prompt may be.
    receiver.AttachRawData(message.data(), static_cast<int>(message.size() * eighths / 8));
    CString text(message.data(), static_cast<int>(message.find('\0')));
    receiver.Parse(text);
    rig.window.Drain();
    counters.Check();
  }
  return 0;
}
