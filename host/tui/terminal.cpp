#include "host/tui/terminal.h"

#define NCURSES_NOMACROS
#define NCURSES_WIDECHAR 1
#include <curses.h>
#include <langinfo.h>
#include <sys/epoll.h>
#include <sys/ioctl.h>
#include <term.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <clocale>
#include <cstdlib>
#include <string_view>
#include <system_error>

#include "host/run/failure.h"
#include "host/tui/keys.h"

namespace host {

namespace {

/// The curses library takes signals for itself, in handlers that may run on any thread. They are given back.
class KeptSignals {
 public:
  KeptSignals() {
    for (std::size_t i = 0; i < kTaken.size(); ++i) sigaction(kTaken[i], nullptr, &actions_[i]);
  }
  ~KeptSignals() {
    for (std::size_t i = 0; i < kTaken.size(); ++i) sigaction(kTaken[i], &actions_[i], nullptr);
  }
  KeptSignals(const KeptSignals&) = delete;
  KeptSignals& operator=(const KeptSignals&) = delete;

 private:
  static constexpr std::array kTaken = {SIGINT, SIGTERM, SIGTSTP, SIGWINCH};
  std::array<struct sigaction, kTaken.size()> actions_{};
};

bool IsUnicode() {
  std::setlocale(LC_CTYPE, "");
  return std::string_view(nl_langinfo(CODESET)) == "UTF-8";
}

bool WantsColour() {
  const char* no_color = std::getenv("NO_COLOR");
  return (no_color == nullptr || *no_color == '\0') && has_colors();
}

bool IsForeground() {
  return tcgetpgrp(STDIN_FILENO) == getpgrp();
}

/// Where there is no other screen to go back to, the prompt comes upon the last line.
void LeaveScreen() {
  move(getmaxy(stdscr) - 1, 0);
  clrtoeol();
  refresh();
  endwin();
}

int KeyOf(wint_t code, bool is_function_key) {
  constexpr struct {
    bool is_function_key;
    wint_t code;
    int key;
  } kKeys[] = {{true, KEY_UP, key::kUp},        {true, KEY_DOWN, key::kDown},
               {true, KEY_PPAGE, key::kPageUp}, {true, KEY_NPAGE, key::kPageDown},
               {true, KEY_HOME, key::kHome},    {true, KEY_END, key::kEnd},
               {true, KEY_ENTER, key::kEnter},  {true, KEY_BACKSPACE, key::kBackspace},
               {true, KEY_DC, key::kBackspace}, {true, KEY_F(1), key::kHelp},
               {false, '\n', key::kEnter},      {false, '\b', key::kBackspace}};
  for (const auto& known : kKeys) {
    if (known.is_function_key == is_function_key && known.code == code) return known.key;
  }
  return is_function_key ? 0 : static_cast<int>(code);
}

struct Look {
  attr_t attributes;  // without colours
  short colour;       // -1: the terminal's own
  attr_t with_colour;
};

// In the order of Style.
constexpr Look kLooks[] = {
    {A_NORMAL, -1, A_NORMAL},
    {A_DIM, -1, A_DIM},
    {A_NORMAL, COLOR_CYAN, A_NORMAL},
    {A_BOLD, -1, A_BOLD},
    {A_REVERSE, -1, A_REVERSE},
    {A_BOLD, COLOR_GREEN, A_BOLD},
    {A_BOLD, COLOR_YELLOW, A_BOLD},
    {A_REVERSE, COLOR_RED, A_BOLD | A_REVERSE},
    {A_BOLD, COLOR_GREEN, A_NORMAL},
    {A_NORMAL, -1, A_NORMAL},
    {A_DIM, -1, A_DIM},
    {A_REVERSE, -1, A_REVERSE},
};
static_assert(std::size(kLooks) == static_cast<std::size_t>(Style::count));

}  // namespace

struct Terminal::Window {
  Window() {
    const KeptSignals kept;
    screen = newterm(nullptr, stdout, stdin);
    if (screen == nullptr) throw Failure(ExitCode::failed, "the terminal cannot be used as a screen");
    cbreak();
    noecho();
    nonl();
    curs_set(0);
    set_escdelay(25);
    keypad(stdscr, true);
    nodelay(stdscr, true);
    leaveok(stdscr, true);
    colour = WantsColour();
    if (!colour) return;
    start_color();
    use_default_colors();
    short pair = 0;
    for (const Look& look : kLooks) init_pair(++pair, look.colour, -1);
  }
  ~Window() { delscreen(screen); }
  Window(const Window&) = delete;
  Window& operator=(const Window&) = delete;

  void Put(int row, int column, const Cell& cell) const {
    const wchar_t text[] = {static_cast<wchar_t>(cell.glyph), L'\0'};
    const Look& look = kLooks[static_cast<std::size_t>(cell.style)];
    cchar_t character;
    const auto pair = static_cast<short>(colour ? static_cast<int>(cell.style) + 1 : 0);
    setcchar(&character, text, colour ? look.with_colour : look.attributes, pair, nullptr);
    mvadd_wch(row, column, &character);
  }

  SCREEN* screen;
  bool colour = false;
};

std::string Terminal::Obstacle() {
  if (isatty(STDIN_FILENO) == 0 || isatty(STDOUT_FILENO) == 0) {
    return "the screen needs a terminal as standard input and output";
  }
  int error = 0;
  const bool known = setupterm(nullptr, STDOUT_FILENO, &error) == OK;
  if (known) {
    const char* move = tigetstr("cup");
    const bool moves = move != nullptr && move != reinterpret_cast<const char*>(-1);
    del_curterm(cur_term);
    if (moves) return "";
  }
  const char* type = std::getenv("TERM");
  return std::string("a terminal of the type \"") + (type != nullptr ? type : "") +
         "\" cannot be used as a screen: set TERM to its type";
}

Terminal::Terminal() : unicode_(IsUnicode()) {
  if (const std::string obstacle = Obstacle(); !obstacle.empty()) {
    throw Failure(ExitCode::usage, obstacle + ", or use --format text");
  }
  signals_.emplace({SIGTSTP, SIGCONT, SIGWINCH, SIGQUIT});
  events_ = UniqueDescriptor(epoll_create1(EPOLL_CLOEXEC));
  for (const int source : {signals_->Descriptor(), STDIN_FILENO}) {
    epoll_event event{.events = EPOLLIN, .data = {}};
    if (epoll_ctl(events_.Get(), EPOLL_CTL_ADD, source, &event) != 0) {
      throw std::system_error(errno, std::generic_category(), "cannot watch the keyboard");
    }
  }
  window_ = std::make_unique<Window>();
  FitSize();  // the environment may tell of another size
}

Terminal::~Terminal() {
  Close();
}

void Terminal::Close() {
  if (closed_) return;
  closed_ = true;
  if (!suspended_) LeaveScreen();
  window_.reset();
  signals_.reset();
}

std::optional<int> Terminal::ReadKey() {
  HandleSignals();
  if (closed_ || suspended_) return std::nullopt;
  wint_t code = 0;
  const int kind = get_wch(&code);
  if (kind == ERR) return std::nullopt;
  return KeyOf(code, kind == KEY_CODE_YES);
}

void Terminal::HandleSignals() {
  while (const int signal = closed_ ? 0 : signals_->Take()) {
    if (signal == SIGTSTP || signal == SIGQUIT) {
      StopOrQuit(signal);
    } else if (signal == SIGCONT) {
      Redraw();
    } else {
      FitSize();
    }
  }
}

// The signal has its usual effect, on a terminal that is as it was.
void Terminal::StopOrQuit(int signal) {
  Suspend();
  sigset_t one;
  sigemptyset(&one);
  sigaddset(&one, signal);
  raise(signal);
  pthread_sigmask(SIG_UNBLOCK, &one, nullptr);
  pthread_sigmask(SIG_BLOCK, &one, nullptr);
}

void Terminal::Suspend() {
  if (suspended_) return;
  suspended_ = true;
  LeaveScreen();
  // What is typed now is meant for another program.
  epoll_ctl(events_.Get(), EPOLL_CTL_DEL, STDIN_FILENO, nullptr);
}

bool Terminal::Resume() {
  if (!suspended_) return true;
  if (!IsForeground()) return false;  // it was sent on in the background
  suspended_ = false;
  epoll_event event{.events = EPOLLIN, .data = {}};
  epoll_ctl(events_.Get(), EPOLL_CTL_ADD, STDIN_FILENO, &event);
  Redraw();
  return true;
}

void Terminal::Redraw() {
  if (closed_ || !Resume()) return;
  reset_prog_mode();
  FitSize();
  clearok(curscr, true);
  changed_ = true;
}

void Terminal::FitSize() {
  winsize size{};
  if (suspended_ || ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_row == 0 || size.ws_col == 0)
    return;
  if (is_term_resized(size.ws_row, size.ws_col)) resizeterm(size.ws_row, size.ws_col);
  changed_ = true;
}

bool Terminal::TakeChange() {
  return std::exchange(changed_, false);
}

Canvas Terminal::MakeCanvas() const {
  return closed_ ? Canvas(0, 0, unicode_) : Canvas(getmaxy(stdscr), getmaxx(stdscr), unicode_);
}

void Terminal::Show(const Canvas& canvas) {
  if (closed_ || !Resume()) return;
  for (int row = 0; row < canvas.Rows(); ++row) {
    for (int column = 0; column < canvas.Columns(); ++column)
      window_->Put(row, column, canvas.At(row, column));
  }
  refresh();
}

}  // namespace host
