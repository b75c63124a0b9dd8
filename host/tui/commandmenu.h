#pragma once

#include <optional>
#include <string>
#include <vector>

#include "gpsengine/face/models.h"
#include "host/run/face.h"
#include "host/tui/canvas.h"

namespace host {

/// The commands that a model offers while it runs, as a menu with a prompt for what a command takes.
class CommandMenu {
 public:
  /// A command that the user wants.
  struct Order {
    const Operation* operation;
    Action action;
    std::string text;  ///< As the user would write it.
    long long time;    ///< How long it takes, in milliseconds.
  };

  /// No engine may run meanwhile, since the model's operations may have to be rehearsed.
  explicit CommandMenu(CGPSReceiver& receiver);

  void Open();
  bool IsOpen() const { return state_ != State::closed; }
  /// Takes a key while the menu is open. Gives the command that it completes, which closes the menu.
  std::optional<Order> OnKey(int key);
  void Draw(Canvas& canvas) const;

 private:
  enum class State { closed, list, prompt };
  const Offer& SelectedOffer() const { return entries_[static_cast<std::size_t>(selected_)]; }
  const Operation& Selected() const { return *SelectedOffer().operation; }
  void MoveTo(int entry);
  std::optional<Order> OnListKey(int key);
  std::optional<Order> OnPromptKey(int key);
  std::optional<Order> Complete();
  long long TimeOf(const std::string& call) const;

  std::vector<Offer> entries_;
  State state_ = State::closed;
  int selected_ = 0;
  std::string input_, error_;
};

}  // namespace host
