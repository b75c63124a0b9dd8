#include "host/line/kindlistener.h"

#include <algorithm>

#include "gpsengine/engine/gpsengine.h"
#include "host/run/failure.h"
#include "host/run/words.h"

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

void Hear(CGPSEngine& engine, std::string_view bytes) {
  for (; !bytes.empty(); bytes.remove_prefix(std::min(kPiece, bytes.size()))) {
    CBinBuffer piece(bytes.data(), static_cast<int>(std::min(kPiece, bytes.size())));
    engine.UpdateGPSBuffer(piece);
  }
}

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
  CGPSEngine engine;
  auto* const listener = new KindListener;
  engine.AddReceiver(listener);
  engine.SetReceiver(listener);
  engine.m_bAttachRawData = true;
  Hear(engine, bytes + "\r\n");
  std::vector<std::string> parts, useless;
  for (const auto* list : {&listener->sentences, &listener->reports, &listener->foreign})
    useless.insert(useless.end(), list->begin(), list->end());
  if (!useless.empty()) parts.push_back("sentences that tell no position (" + Join(useless) + ")");
  if (listener->GetChecksumErrors() > 0) parts.push_back("sentences whose checksum is wrong");
  if (!listener->binary.empty())
    parts.push_back("binary blocks that are handed on undecoded (" + Join(listener->binary) + ")");
  const std::string where =
      recording.IsAllInHead() ? "" : "in its first " + std::to_string(head.size() / 1024) + " KB ";
  return where + (parts.empty() ? "its bytes make no message" : "it holds only " + Join(parts));
}

}  // namespace

bool KindListener::Parse(CString& message, GPSStringType type) {
  const int binary_messages = GetBinaryMessages(), bad = GetBadBinaryMessages();
  const bool published = CGPSReceiver::Parse(message, type);
  if (type == GPS_STRING_NONE) {
    // A good checksum makes noise unlikely: another instrument, or a sentence that is not decoded.
    if (message.StartsWith("$") && message.Find("*") > 0 && IsChecksumOK(message)) {
      AddOnce(foreign, HeadOf(message));
    }
  } else if (type == GPS_STRING_AXIS4_BIN || type == GPS_STRING_BIN) {
    AddOnce(binary, type == GPS_STRING_BIN ? "$BIN" : "AA 44 12");
  } else if (GetBinaryMessages() > binary_messages) {
    if (GetBadBinaryMessages() == bad) AddOnce(binary, HeadOf(message));
  } else if (type <= GPS_STRING_MSK) {
    AddOnce(sentences, HeadOf(message).substr(3));
  } else {
    AddOnce(reports, HeadOf(message));
  }
  return published;
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
