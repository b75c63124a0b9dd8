#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "gpsengine/engine/gpsengine.h"
#include "host/line/port.h"
#include "host/records/hostwindow.h"
#include "host/run/deadline.h"

namespace host {

/// Where the bytes of a run come from. What kind of run it is, is asked here. A feed outlives the engine,
/// whose end may still write to the line.
class Feed {
 public:
  enum class Kind { device, simulated, recording };

  Feed(Kind kind, std::string name) : kind_(kind), name_(std::move(name)) {}
  virtual ~Feed() = default;
  Feed(const Feed&) = delete;
  Feed& operator=(const Feed&) = delete;

  Kind GetKind() const { return kind_; }
  /// The kind's name for other programs.
  const char* KindName() const {
    constexpr const char* kNames[] = {"port", "simulated", "recording"};
    return kNames[static_cast<int>(kind_)];
  }
  /// The device or the file, as the user and the records name it.
  const std::string& Name() const { return name_; }
  /// The files that the bytes come from.
  virtual std::vector<std::string> Files() const { return {}; }
  /// A receiver at the end of a line: it may be commanded, be silent and get lost.
  bool IsLive() const { return kind_ != Kind::recording; }
  /// What the source of the bytes is called on a screen; `baud` is the rate of its line.
  virtual std::string Description(int /*baud*/) const { return "playing " + name_; }
  /// Tells the user what may be taken for something else.
  virtual void Announce(const std::string& /*model*/) const {}
  /// The host hands the engine the bytes, whose own port stays closed.
  virtual bool MovesBytes() const { return false; }

  /// Sets the engine going, whose receiver is selected and whose records go to that window. Throws a Failure
  /// that says why that does not work.
  virtual void Open(CGPSEngine& engine, HostWindow& window) = 0;
  /// Takes up the bytes that are due.
  virtual void Step() {}
  /// Hands the engine the bytes that TakeBytes has given. Their records go to the window at once.
  virtual void Decode(CGPSEngine& /*engine*/, std::string_view /*bytes*/) {}
  /// When to call Step at the latest.
  virtual Deadline::Moment NextAt() const { return Deadline::kNever; }
  virtual bool IsAtEnd() const { return false; }
  /// Throws a Failure that says what there was, if the feed is at its end and nothing of use was in it.
  virtual void CheckUnderstood(const HostWindow& /*window*/) const {}

  /// The bytes since the last call.
  virtual std::string TakeBytes() { return {}; }
  /// Readable when there are bytes, or the line has gone; -1 for none.
  virtual int Descriptor() const { return -1; }
  /// Writes to the line, between commands, as much as it takes; gives the count. From any thread.
  virtual std::size_t Write(std::string_view /*bytes*/) const { return 0; }
  /// The line has gone since it was opened.
  virtual bool IsLost() const { return false; }
  /// The port that the line is opened at; null for none. The feed owns it.
  virtual Port* GetPort() const { return nullptr; }
  /// Takes the records; null if it wants none.
  virtual Sink* Records() { return nullptr; }
  /// The texts of messages are wanted among them.
  virtual bool WantsTexts() const { return false; }

 private:
  const Kind kind_;
  const std::string name_;
};

}  // namespace host
