#include "host/cli/values.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <chrono>
#include <limits>
#include <sstream>
#include <type_traits>

#include "gpsengine/engine/gpsengine.h"
#include "gpsengine/face/models.h"
#include "gpsengine/face/words.h"
#include "host/line/portsearch.h"
#include "host/run/face.h"
#include "host/run/failure.h"
#include "host/session/recordingfeed.h"

namespace host {

namespace {

std::string Digits(double value) {
  std::string text = std::to_string(value);
  text.erase(text.find_last_not_of('0') + 1);
  if (text.ends_with('.')) text.pop_back();
  return text;
}

/// What the help says of limits, and what is said of a number outside them.
std::string LimitsText(double least, double most) {
  const bool is_open = most >= static_cast<double>(std::numeric_limits<long long>::max());
  if (least < -most / 2) return "";
  const std::string upper = Digits(most);
  if (least == kAboveZero || (is_open && least == 1.0))
    return is_open ? "above 0" : "above 0 and up to " + upper;
  return "from " + Digits(least) + (is_open ? " up" : " to " + upper);
}

template <class T>
CLI::Validator Numbers(T least, T most, const std::string& text) {
  const auto check = [=](const std::string& word) -> std::string {
    const auto value = ReadNumber<T>(word);
    if (value && *value >= least && *value <= most) return "";
    return '"' + word + "\" is no " + (std::is_integral_v<T> ? "whole " : "") + "number " + text;
  };
  return CLI::Validator(check, text);
}

/// The command that the command line has come to.
const CLI::App& DeepestOf(const CLI::App& app) {
  const auto nested = app.get_subcommands();
  return nested.empty() ? app : DeepestOf(*nested.front());
}

/// What a user may have meant by a word that the command does not take.
std::vector<std::string> NamesIn(const CLI::App& command, bool options) {
  std::vector<std::string> names;
  if (!options) {
    for (const CLI::App* nested : command.get_subcommands([](const CLI::App*) { return true; }))
      names.push_back(nested->get_name());
    return names;
  }
  for (const CLI::Option* option : command.get_options()) {
    for (const std::string& name : option->get_lnames()) names.push_back("--" + name);
  }
  return names;
}

}  // namespace

CLI::Validator Between(double least, double most) {
  return Numbers(least, most, LimitsText(least, most));
}

CLI::Validator WholeBetween(long long least, long long most) {
  return Numbers(least, most, LimitsText(static_cast<double>(least), static_cast<double>(most)));
}

CLI::Validator AName() {
  return CLI::Validator(
      [](const std::string& word) { return word.empty() ? "the name is empty" : std::string(); }, "");
}

CLI::Validator AsciiUpTo(std::size_t columns) {
  const auto check = [columns](const std::string& word) -> std::string {
    const auto is_other = [](char c) { return c < ' ' || c > '~'; };
    if (word.find_first_not_of(' ') == std::string::npos) return "the text is empty";
    if (std::any_of(word.begin(), word.end(), is_other))
      return '"' + word + "\" has characters that are not in ASCII, for which RINEX has no place";
    if (word.size() <= columns) return "";
    return '"' + word + "\" is longer than the " + std::to_string(columns) +
           " characters that RINEX has for it";
  };
  return CLI::Validator(check, "");
}

CLI::Validator AModel() {
  return CLI::Validator(
      [](std::string& word) -> std::string {
        try {
          word = FindModel(word).GetName().ToUtf8();
          return "";
        } catch (const gps::Error& failure) {
          return failure.what();
        }
      },
      "");
}

int BaudOf(const std::string& text) {
  if (text == "auto") return kAutoBaud;
  if (const auto baud = ReadNumber<int>(text); baud && *baud > 0) return *baud;
  throw CLI::ValidationError("--baud", text + " is no baud rate such as 9600, nor auto");
}

double SpeedOf(const std::string& text) {
  if (text == "max") return PacedFeed::kMax;
  if (text == "engine") return 0.0;
  if (const auto speed = ReadNumber<double>(text); speed && *speed > 0.0 && *speed <= 1e6) return *speed;
  throw CLI::ValidationError("--speed", text + " is no number above 0, and neither \"max\" nor \"engine\"");
}

Moment MomentOfDate(const std::string& date) {
  int year = 0, month = 0, day = 0;
  char dash1 = 0, dash2 = 0;
  std::istringstream text(date);
  text >> year >> dash1 >> std::noskipws >> month >> dash2 >> day;
  const auto ymd = std::chrono::year(year) / month / day;
  if (!text || !text.eof() || dash1 != '-' || dash2 != '-' || month < 0 || day < 0 || !ymd.ok()) {
    throw CLI::ValidationError("--date", date + " is no date such as 2024-05-14");
  }
  return std::chrono::sys_days(ymd) + kDay / 2;
}

int TellParseError(const CLI::App& app, const CLI::ParseError& error) {
  const CLI::App& command = DeepestOf(app);
  const auto extra = app.remaining(true);
  if (error.get_exit_code() == 0 || extra.empty())
    return app.exit(error) == 0 ? 0 : static_cast<int>(ExitCode::usage);
  const std::string word = extra.front().substr(0, extra.front().find('='));
  const bool is_option = word.size() > 1 && word.starts_with('-');
  const std::string kind = is_option ? "option" : "command";
  const bool is_argument = !is_option && command.get_parent() != nullptr;
  const std::string where = command.get_parent() == nullptr ? "gpsengine" : "gpsengine " + command.get_name();
  Complain((is_argument ? '"' + word + "\" is one argument too many"
                        : "no " + kind + " is called \"" + word + '"') +
           DidYouMean(word, NamesIn(command, is_option)) + "; " + where + " --help lists them");
  return static_cast<int>(ExitCode::usage);
}

}  // namespace host
