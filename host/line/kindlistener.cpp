#include "host/line/kindlistener.h"

#include <algorithm>

#include "gpsengine/face/words.h"
#include "host/run/face.h"
#include "host/run/failure.h"

namespace host {

namespace {

// The engine takes up to 16 KB at a time.
constexpr std::size_t kPiece = 4096;

void AddOnce(std::vector<std::string>& list, const std::string& entry) {
  if (std::find(list.begin(), list.end(), entry) == list.end()) list.push_back(entry);
}

/// The head of a text message, "$GPGGA" of "$GPGGA,…", as far as it can be shown.
std::string HeadOf(const CString& message) {
  constexpr int kLongest = 12;
  std::string head;
  for (int i = 0; i < std::min(message.GetLength(), kLongest); ++i) {
    const WCHAR c = message.GetAt(i);
    if (c <= u' ' || c > u'~' || c == u',' || c == u'*' || c == u':') break;
    head += static_cast<char>(c);
  }
  return head;
}

/// A receiver that has the library tell it of every message.
class ListeningReceiver : public CGPSReceiver {
 public:
  explicit ListeningReceiver(MessageKinds& kinds) : kinds_(kinds) { SetupReceiver(0, 0, 0.0, "", true); }
  CString GetName() override { return "listener"; }

  using CGPSReceiver::Parse;
  bool Parse(CString& message, GPSStringType type) override {
    const int binary_messages = GetBinaryMessages(), bad = GetBadBinaryMessages();
    const bool published = CGPSReceiver::Parse(message, type);
    if (type == GPS_STRING_NONE) {
      // A good checksum makes noise unlikely: another instrument, or a sentence that is not decoded.
      if (message.StartsWith("$") && message.Find("*") > 0 && IsChecksumOK(message)) {
        AddOnce(kinds_.foreign, HeadOf(message));
      }
    } else if (type == GPS_STRING_AXIS4_BIN || type == GPS_STRING_BIN) {
      AddOnce(kinds_.binary, type == GPS_STRING_BIN ? "$BIN" : "AA 44 12");
    } else if (GetBinaryMessages() > binary_messages) {
      if (GetBadBinaryMessages() == bad) AddOnce(kinds_.binary, HeadOf(message));
    } else if (type <= GPS_STRING_MSK) {
      AddOnce(kinds_.sentences, HeadOf(message).substr(3));
    } else {
      AddOnce(kinds_.reports, HeadOf(message));
    }
    return published;
  }

 private:
  MessageKinds& kinds_;
};

/// What a recording holds, as far as its beginning tells, for a user to whom nothing of it was of use.
std::string WhatIsIn(const Recording& recording) {
  const std::string_view head = recording.Head();
  if (head.empty()) return "it holds no bytes";
  if (head.starts_with("\xFF\xFE") || head.starts_with("\xFE\xFF")) {
    return "it is text in UTF-16, as its byte order mark says: save it as plain text, for instance with "
           "\"iconv -f UTF-16 -t ASCII\"";
  }
  std::string bytes;
  for (const char c : head)
    bytes += recording.IsTextLog() && c == '\n' ? std::string("\r\n") : std::string(1, c);
  KindListener listener;
  listener.Hear(bytes + "\r\n");
  const MessageKinds& kinds = listener.Kinds();
  std::vector<std::string> parts, useless;
  for (const auto* list : {&kinds.sentences, &kinds.reports, &kinds.foreign})
    useless.insert(useless.end(), list->begin(), list->end());
  if (!useless.empty()) parts.push_back("sentences that tell no position (" + Join(useless) + ")");
  if (listener.ChecksumErrors() > 0) parts.push_back("sentences whose checksum is wrong");
  if (!kinds.binary.empty())
    parts.push_back("binary blocks that are handed on undecoded (" + Join(kinds.binary) + ")");
  const std::string where =
      recording.IsAllInHead() ? "" : "in its first " + std::to_string(head.size() / 1024) + " KB ";
  return where + (parts.empty() ? "its bytes make no message" : "it holds only " + Join(parts));
}

}  // namespace

KindListener::KindListener() {
  auto* const receiver = new ListeningReceiver(kinds_);
  engine_.AddReceiver(receiver);
  engine_.SetReceiver(receiver);
  engine_.m_bAttachRawData = true;
}

void KindListener::Hear(std::string_view bytes) {
  for (; !bytes.empty(); bytes.remove_prefix(std::min(kPiece, bytes.size()))) {
    CBinBuffer piece(bytes.data(), static_cast<int>(std::min(kPiece, bytes.size())));
    engine_.UpdateGPSBuffer(piece);
  }
}

void CheckUnderstood(const Recording& recording, const HostWindow& window) {
  const Published& published = window.GetPublished();
  const long long of_use = published.data - published.unread + published.raw_data + published.ephemeris +
                           published.read_bin + window.Shown();
  if (of_use > 0) return;
  throw Failure(ExitCode::nothing_understood,
                "nothing of " + recording.Name() + " was understood: " + WhatIsIn(recording));
}

}  // namespace host
