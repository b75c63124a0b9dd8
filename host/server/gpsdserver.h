#pragma once

#include <poll.h>

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/server/gpsdclient.h"
#include "host/server/listener.h"

namespace host {

/// What one server grants its clients.
struct GpsdLimits {
  std::size_t clients = 64;
  std::size_t request = 4096;               ///< Bytes of one request.
  std::size_t queue = 256 * 1024;           ///< Bytes that wait for one client.
  std::chrono::milliseconds stall{60'000};  ///< How long a client may take nothing of what waits.
};

/// The receiver behind the server, as DEVICES tells of it.
struct GpsdDevice {
  std::string path;
  std::string driver;
  int bps = 0;            ///< 0 if it has none.
  std::string activated;  ///< Since when it is understood, ISO 8601; empty if it is not.
};

/// What has happened since the server started.
struct GpsdCounts {
  long long accepted = 0;
  long long refused = 0;  ///< Because there were too many.
  long long stalled = 0;  ///< Connections that were ended since nobody read them.
  long long dropped = 0;  ///< Pieces that clients were too slow for.
  long long errors = 0;   ///< Requests that were answered with ERROR.
};

/// A server of gpsd's JSON protocol, for clients that only want to know: no request reaches the receiver. It
/// never blocks, starts no thread, and lives in its owner's poll loop: AddWaits, poll, Handle.
class GpsdServer {
 public:
  /// Listens. Throws a Failure if it cannot.
  GpsdServer(const std::string& address, int port, const GpsdLimits& limits = {});

  int Port() const { return listener_.Port(); }
  /// Tells those who watch JSON, if the receiver has come or gone.
  void SetDevice(GpsdDevice device);

  /// Sends a line, with its line end, to those who watch JSON.
  void PublishJson(std::string_view line);
  /// Sends a sentence, with its line end, to those who watch NMEA.
  void PublishSentence(std::string_view sentence);
  /// Sends bytes of the receiver to those who watch everything.
  void PublishBytes(std::string_view bytes);

  /// Appends what to wait for, having sent what can be sent.
  void AddWaits(std::vector<pollfd>& waits);
  /// The wait may last until the earlier of this and `other`.
  Deadline::Clock::time_point Earlier(Deadline::Clock::time_point other) const;
  /// Takes note of what poll found, after the `first` waits of others.
  void Handle(const std::vector<pollfd>& waits, std::size_t first);

  std::size_t Clients() const { return clients_.size(); }
  GpsdCounts Counts() const;

 private:
  void Accept();
  /// What follows the "=" of a request, if there is one.
  using Argument = std::optional<std::string_view>;

  std::string Answer(GpsdClient& client, const GpsdRequest& request);
  std::string AnswerWatch(GpsdClient& client, Argument argument);
  std::string AnswerDevice(GpsdClient& client, Argument argument);
  std::string AnswerDevices(GpsdClient& client, Argument argument);
  std::string AnswerVersion(GpsdClient& client, Argument argument);
  std::string AnswerPoll(GpsdClient& client, Argument argument);
  std::string Refuse(const std::string& text);
  void RemoveGone();
  void Publish(std::string_view text, bool (*wants)(const GpsdWatch&));

  const GpsdLimits limits_;
  const Listener listener_;
  GpsdDevice device_;
  std::vector<std::unique_ptr<GpsdClient>> clients_;
  std::string position_, satellites_;  // the last TPV and SKY, without their line ends
  GpsdCounts counts_;
  Deadline accept_again_;  // after the system had no descriptor left
};

}  // namespace host
