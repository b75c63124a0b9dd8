#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "simulator/receiver.h"

namespace simulator {

/// Runs one receiver in real time at the end of a pseudo-terminal, on a thread of its own. What the peer does
/// not read is dropped once the terminal is full, as on a serial line without flow control; the peer may come
/// and go. All members are for the owner's thread alone, but for TakeComplaints() and TruthAt().
class PtyRunner {
 public:
  struct Settings {
    double speed_up = 1;               ///< simulated seconds in a real one
    bool paced = true;                 ///< messages follow each other at the line's rate, not in bursts
    bool garble_at_wrong_rate = true;  ///< a peer at another baud rate gets, and sends, rubbish
    /// Called on the runner's thread with each complaint, instead of keeping it for TakeComplaints().
    std::function<void(const std::string&)> on_complaint;
  };

  /// Opens the pseudo-terminal; throws std::system_error if there is none to be had.
  explicit PtyRunner(std::unique_ptr<Receiver> receiver);
  PtyRunner(std::unique_ptr<Receiver> receiver, Settings settings);
  ~PtyRunner();  ///< Stops.
  PtyRunner(const PtyRunner&) = delete;
  PtyRunner& operator=(const PtyRunner&) = delete;

  /// The device that the peer opens, such as "/dev/pts/3".
  const std::string& PortName() const { return port_name_; }

  /// Sets the receiver going, or going on. Simulated time stands still while it is stopped.
  void Start();
  /// Returns at once, whatever the peer does.
  void Stop();
  /// Stops for good and closes the line, as a pulled plug does: the peer sees a hang-up.
  void HangUp();

  /// The receiver's complaints since the last call. Thread-safe.
  std::vector<std::string> TakeComplaints();

  /// See Receiver::TruthAt(). Thread-safe.
  Truth TruthAt(const GpsTime& time) const { return receiver_->TruthAt(time); }

 private:
  void Run();
  void Read();
  void Write(const std::string& bytes);
  void PassComplaints();
  int WrongRate() const;

  const std::unique_ptr<Receiver> receiver_;
  const Settings settings_;
  int master_ = -1, slave_ = -1, wake_ = -1;
  std::string port_name_;
  std::thread thread_;
  std::atomic<bool> stopping_{false};
  std::mutex mutex_;
  std::vector<std::string> complaints_;  // guarded by mutex_
};

}  // namespace simulator
