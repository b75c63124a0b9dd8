#pragma once

#include <atomic>

#include "gpsengine/platform/messagebox.h"
#include "host/run/event.h"

namespace host {

/// The library's message boxes on a terminal: a text on standard error. A box that is meant to pause waits
/// for Enter, if standard input is a terminal, but never longer than the run.
class Boxes {
 public:
  Boxes();
  ~Boxes();
  Boxes(const Boxes&) = delete;
  Boxes& operator=(const Boxes&) = delete;

  /// From now on no box waits, and one that does goes on.
  void Release() { released_.Set(); }
  /// From now on the keyboard is read by someone else, who calls GoOn when the user wants a box to go on.
  void GiveUpKeyboard() { has_keyboard_ = false; }
  void GoOn() { go_on_.Set(); }

 private:
  void Show(const CString& text, BoxKind kind) const;

  Event released_, go_on_;
  std::atomic<bool> has_keyboard_{true};
};

}  // namespace host
