#pragma once

#include <chrono>
#include <deque>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "simulator/nmea.h"
#include "simulator/obey.h"
#include "simulator/receiver.h"
#include "simulator/world.h"

namespace simulator {

using Nanoseconds = std::chrono::nanoseconds;
Nanoseconds FromSeconds(double seconds);

/// What commands change, and what a save keeps.
struct Settings {
  std::map<std::string, Nanoseconds, std::less<>> output;  ///< the interval of each message that is on
  std::map<std::string, std::string, std::less<>>
      values;                 ///< whatever else a language knows, by a name of its own
  double elevation_mask = 5;  ///< degrees
};

/// What all receivers have in common: input cut into lines and messages of RTCM 3, messages by the clock,
/// answers before them, settings that are saved or lost, and silence while booting. A language adds what it
/// understands.
class Core : public Receiver {
 public:
  void Receive(std::string_view bytes) final;
  std::string Advance(double seconds) final;
  double NextOutputIn() const final;
  std::vector<std::string> TakeComplaints() final;
  void PowerCycle() final;
  void SetPaced(bool paced) final { paced_ = paced; }
  int Baud() const final { return baud_; }
  GpsTime Now() const final;
  Truth TruthAt(const GpsTime& time) const final { return world_.TruthAt(world_.SecondsAt(time)); }

 protected:
  using Writer = std::function<std::string(const Epoch&)>;

  Core(const Options& options, int baud);

  /// One line from the host, without its end and never empty.
  virtual Verdict Understand(std::string_view line) = 0;
  /// Bytes at the head of `input` that are no text and were dealt with; 0 if it begins with text.
  /// `input.npos` if more bytes must come first.
  virtual std::size_t TakeFrame(std::string_view input);
  /// Changes in the epoch what the settings have a say in, such as the quality indicator.
  virtual void Adapt(Epoch&) const {}

  /// Adds a message that `Settings::output` can name. Messages of one moment go out in the order of adding;
  /// those of NMEA (GGA, GSA, GSV, VTG, RMC, GLL, ZDA) are there from the start.
  void AddMessage(std::string name, Writer writer);
  bool HasMessage(std::string_view name) const;

  /// To be called by the constructor: settings as they leave the factory. `messages` go out at the rate of
  /// the options, or GGA alone if the options want it so.
  void LeaveFactory(std::initializer_list<const char*> messages, Settings others = {});

  /// Sends text before everything that falls due.
  void Answer(std::string_view text) { answers_.emplace_back(text); }
  void Complain(std::string_view line, std::string_view reason);

  /// Starts over with those settings, deaf and dumb for a while.
  void Reboot(const Settings& settings, double seconds);

  /// Sets the elevation mask from text in whole degrees; false if it is none, or above the zenith.
  bool SetMask(std::string_view degrees);
  bool IsOn(std::string_view message) const {
    return settings_.output.find(message) != settings_.output.end();
  }
  void Switch(std::string_view message, bool on, Nanoseconds interval);
  const std::string& Value(std::string_view name) const;
  void SetValue(std::string_view name, std::string_view value);
  Nanoseconds UsualInterval() const { return FromSeconds(1 / options_.rate_hz); }
  Epoch EpochNow() const;

  const Options options_;
  const World world_;
  Settings settings_, saved_, factory_;
  int baud_;

 private:
  struct Message {
    std::string name;
    Writer write;
  };

  void TakeLine(std::string_view line);
  std::size_t TakeCorrections(std::string_view input);
  bool Booting() const { return now_ < boot_end_; }
  Nanoseconds NextDue() const;
  Nanoseconds NextFree() const;
  void Send(std::deque<std::string>& from, std::string& out);
  void Transmit(std::string& out);
  void QueueMessages();

  std::vector<Message> messages_;
  Nanoseconds now_{0}, boot_end_{0}, line_free_{0};
  bool paced_ = false;
  int corrections_ = 0;             // messages of RTCM 3 that have come one after another
  Nanoseconds corrections_end_{0};  // until when they help
  std::string input_;
  std::deque<std::string> answers_, due_;
  std::vector<std::string> complaints_;
};

}  // namespace simulator
