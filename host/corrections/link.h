#pragma once

#include <chrono>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

#include "host/corrections/queue.h"
#include "host/corrections/rtcm.h"
#include "host/corrections/source.h"
#include "host/run/event.h"

namespace host {

/// What a link has done so far.
struct CorrectionStatus {
  enum class State { connecting, flowing, waiting, ended };

  State state = State::connecting;
  std::string source;
  std::string trouble;     ///< Why nothing flows.
  long long bytes = 0;     ///< That have come.
  long long written = 0;   ///< Bytes that the receiver's line has taken.
  long long messages = 0;  ///< Of RTCM 3, with a good checksum.
  long long bad_checksums = 0;
  long long dropped = 0;           ///< Messages, and pieces of other bytes, that the receiver did not get.
  int connections = 0;             ///< How often something began to flow.
  std::map<int, long long> types;  ///< Messages by their number.
  std::optional<double> age;       ///< Seconds since the last whole message.
};

/// "flowing", "waiting", …
const char* NameOf(CorrectionStatus::State state);
/// "1005 1077".
std::string TypesOf(const CorrectionStatus& status);

/// What the user wants of corrections.
struct CorrectionOptions {
  std::string source;  ///< Empty for none.
  std::string password_file;
  int baud = 9600;  ///< Of a serial device that they come from.
  double gga_interval = 10.0;
  bool rtcm_only = false;  ///< Nothing but RTCM 3 messages of a good checksum passes.
};

/// Carries corrections from a source to the receiver's line, on two threads: one reads the source, whatever
/// it does, and one writes, as fast as the line takes them. A source that is lost is tried again after
/// growing pauses. What is wrong is told once.
class CorrectionLink {
 public:
  /// Writes to the line, as much as that takes; gives the count.
  using Write = std::function<std::size_t(std::string_view)>;
  struct Limits {
    std::size_t queue = 8 << 10;
    std::chrono::milliseconds first_pause{1000}, longest_pause{60'000};
    double patience = 60.0;
  };

  /// Throws a Failure if the source cannot be one.
  CorrectionLink(const CorrectionOptions& options, Write write, const Limits& limits);
  ~CorrectionLink() { Stop(); }
  CorrectionLink(const CorrectionLink&) = delete;
  CorrectionLink& operator=(const CorrectionLink&) = delete;

  void Start();
  void Stop();
  /// Whether the receiver's line is there, and its start is over.
  void SetOpen(bool open) { queue_.SetOpen(open); }
  /// Where the receiver is, as a sentence.
  void SetPosition(const std::string& gga);
  CorrectionStatus Status() const;

 private:
  using Clock = std::chrono::steady_clock;

  void Read();
  SourceEnd ReadOnce();
  void Pass();
  void Take(std::string_view bytes);
  void TakePiece(std::string_view piece, std::optional<int> type);
  void Note(const SourceEnd& end);
  void NoteFlow();
  bool Pause(std::chrono::milliseconds time) const;

  const CorrectionOptions options_;
  const CorrectionSource source_;
  const std::string password_;
  const Write write_;
  const Limits limits_;
  Event stop_;
  CorrectionQueue queue_;
  std::thread reader_, writer_;
  // The reading thread's.
  RtcmFramer framer_;
  std::string told_;  // what is wrong, as the user has been told
  bool warned_ = false;
  // Guarded by the mutex.
  mutable std::mutex mutex_;
  CorrectionStatus status_;
  std::optional<Clock::time_point> message_at_;
  std::string gga_;
};

}  // namespace host
