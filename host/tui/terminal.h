#pragma once

#include <memory>
#include <optional>
#include <string>

#include "host/run/signals.h"
#include "host/tui/canvas.h"

namespace host {

/// The terminal of standard input and output as a screen, with its keys. It has its former state again when
/// the object goes, and while the program is stopped by the user. Made before any other thread starts, since
/// it takes signals.
class Terminal {
 public:
  /// Why there can be no screen, for the user; empty if there can.
  static std::string Obstacle();

  /// Throws a Failure if there is an obstacle.
  Terminal();
  ~Terminal();
  Terminal(const Terminal&) = delete;
  Terminal& operator=(const Terminal&) = delete;

  /// Readable while there are keys to read or signals to handle.
  int Descriptor() const { return events_.Get(); }
  /// The next key (host/tui/keys.h); none if there is none. Handles the signals of terminals by the way.
  std::optional<int> ReadKey();
  /// A canvas of the terminal's size.
  Canvas MakeCanvas() const;
  void Show(const Canvas& canvas);
  /// Sends everything again with the next picture, since something else has written to the terminal.
  void Redraw();
  /// The size or the whole picture has changed since the last call.
  bool TakeChange();
  /// Gives the terminal back, for good.
  void Close();

 private:
  struct Window;  // of the curses library

  void HandleSignals();
  void StopOrQuit(int signal);
  void Suspend();
  bool Resume();
  void FitSize();

  bool unicode_ = false;
  bool closed_ = false;
  bool suspended_ = false;
  bool changed_ = true;
  std::optional<Signals> signals_;
  UniqueDescriptor events_;
  std::unique_ptr<Window> window_;
};

}  // namespace host
