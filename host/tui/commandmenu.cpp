#include "host/tui/commandmenu.h"

#include <algorithm>
#include <initializer_list>
#include <string_view>

#include "host/run/failure.h"
#include "host/tui/dashboard.h"
#include "host/tui/keys.h"

namespace host {

namespace {

constexpr int kPage = 8;
constexpr int kColumns = 76;
constexpr int kFooter = 3;
constexpr std::size_t kLongestInput = 250;

/// A running engine has started its receiver by itself, and would lose the port by a suspension.
bool FitsARun(const Operation& operation) {
  return operation.kind != Operation::Kind::starts && std::string_view(operation.name) != "suspend";
}

/// What the user has written after the operation. A text is one argument, blanks and all.
Arguments ArgumentsOf(const Operation& operation, const std::string& input) {
  if (std::string_view(operation.arguments) != "TEXT") return ReadArguments(input);
  Arguments text;
  if (!input.empty()) text.words.push_back(input);
  return text;
}

}  // namespace

CommandMenu::CommandMenu(CGPSReceiver& receiver) {
  for (const Offer& offer : OffersOf(receiver)) {
    if (FitsARun(*offer.operation)) entries_.push_back(offer);
  }
}

void CommandMenu::Open() {
  state_ = State::list;
}

std::optional<CommandMenu::Order> CommandMenu::OnKey(int key) {
  return state_ == State::prompt ? OnPromptKey(key) : OnListKey(key);
}

std::optional<CommandMenu::Order> CommandMenu::OnListKey(int key) {
  const auto is = [key](std::initializer_list<int> keys) {
    return std::ranges::find(keys, key) != keys.end();
  };
  if (is({key::kEscape, 'c', 'q'})) state_ = State::closed;
  if (is({key::kUp, 'k'})) MoveTo(selected_ - 1);
  if (is({key::kDown, 'j'})) MoveTo(selected_ + 1);
  if (is({key::kPageUp})) MoveTo(selected_ - kPage);
  if (is({key::kPageDown})) MoveTo(selected_ + kPage);
  if (is({key::kHome})) MoveTo(0);
  if (is({key::kEnd})) MoveTo(static_cast<int>(entries_.size()));
  if (key != key::kEnter) return std::nullopt;
  input_.clear();
  error_.clear();
  // What only asks does no harm.
  if (Selected().kind == Operation::Kind::asks) return Complete();
  state_ = State::prompt;
  return std::nullopt;
}

void CommandMenu::MoveTo(int entry) {
  selected_ = std::clamp(entry, 0, static_cast<int>(entries_.size()) - 1);
}

std::optional<CommandMenu::Order> CommandMenu::OnPromptKey(int key) {
  if (key == key::kEnter) return Complete();
  error_.clear();
  if (key == key::kEscape) {
    state_ = State::list;
  } else if (key == key::kBackspace) {
    if (!input_.empty()) input_.pop_back();
  } else if (key == key::kClear) {
    input_.clear();
  } else if (key >= ' ' && key <= '~' && input_.size() < kLongestInput) {
    input_ += static_cast<char>(key);
  }
  return std::nullopt;
}

std::optional<CommandMenu::Order> CommandMenu::Complete() {
  try {
    const Arguments arguments = ArgumentsOf(Selected(), input_);
    const std::string call = CallText(Selected(), arguments);
    Order order{&Selected(), Prepare(Selected(), arguments), call, TimeOf(call)};
    state_ = State::closed;
    return order;
  } catch (const gps::Error& failure) {
    error_ = failure.what();
    return std::nullopt;
  }
}

// An argument may change how long a command takes, most often it does not: without an example of the same,
// the longest one tells.
long long CommandMenu::TimeOf(const std::string& call) const {
  long long time = 0;
  for (const auto& [text, transcript] : SelectedOffer().examples) {
    if (text == call) return transcript.Time();
    time = std::max(time, transcript.Time());
  }
  return time;
}

void CommandMenu::Draw(Canvas& canvas) const {
  const int count = static_cast<int>(entries_.size());
  const Area area = Middle(canvas, std::min(count + kFooter + 3, canvas.Rows() - 2), kColumns);
  Pane inside = Pane(canvas, area).Frame("Commands");
  const int rows = std::max(inside.Rows() - kFooter - 1, 1);
  const int first = std::clamp(selected_ - rows / 2, 0, std::max(count - rows, 0));
  for (int row = 0; row < rows && first + row < count; ++row) {
    const Operation& operation = *entries_[static_cast<std::size_t>(first + row)].operation;
    const std::string line = Print(" %-22s  %s", operation.name, operation.summary);
    const int at = first + row;
    inside.Text(row, 0, line + std::string(kColumns, ' '), at == selected_ ? Style::selected : Style::normal);
  }
  if (first > 0) inside.Right(0, "more ", Style::dim);
  if (first + rows < count) inside.Right(rows - 1, "more ", Style::dim);
  const int footer = inside.Rows() - kFooter;
  inside.Text(footer, 1, CallText(Selected(), {}) + ' ' + Selected().arguments, Style::label);
  if (state_ == State::list) {
    inside.Text(footer + 1, 1, Selected().summary);
    inside.Text(footer + 2, 1, "Enter takes it, Esc leaves", Style::dim);
    return;
  }
  // The end of a long input is what matters.
  const int room = std::max(inside.Columns() - 5, 1);
  const auto skipped = static_cast<std::size_t>(std::max(static_cast<int>(input_.size()) - room, 0));
  const int column = inside.Text(footer + 1, 1, "> " + input_.substr(skipped), Style::value);
  inside.Put(footer + 1, column, U'_', Style::value);
  if (error_.empty()) {
    inside.Text(footer + 2, 1, "Enter sends it, Esc goes back", Style::dim);
  } else {
    inside.Text(footer + 2, 1, Plain(error_), Style::bad);
  }
}

}  // namespace host
