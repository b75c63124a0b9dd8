#pragma once

#include <CLI/App.hpp>
#include <limits>
#include <string>

#include "gpsengine/sentences/moment.h"
#include "host/run/face.h"

namespace host {

// What options take, with limits in words, which the help shows after the value's name.

/// The least number above 0, and the greatest one.
constexpr double kAboveZero = std::numeric_limits<double>::denorm_min();
constexpr double kAnyMore = std::numeric_limits<double>::max();
/// Finite numbers.
CLI::Validator Between(double least, double most = kAnyMore);
/// Whole numbers.
CLI::Validator WholeBetween(long long least, long long most = std::numeric_limits<long long>::max());
/// A name that is not empty.
CLI::Validator AName();
/// A text that is not empty, of at most that many characters of ASCII: what a file has columns for.
CLI::Validator AsciiUpTo(std::size_t columns);
/// A receiver model, in any case of its letters, which becomes the name that it is listed by.
CLI::Validator AModel();

/// A baud rate, or kAutoBaud for "auto". Throws a CLI::ValidationError that names --baud.
int BaudOf(const std::string& text);
/// A pace such as 10, PacedFeed::kMax for "max", or 0 for "engine". Throws a CLI::ValidationError that names
/// --speed.
double SpeedOf(const std::string& text);
/// Noon of a day such as 2024-05-14. Throws a CLI::ValidationError that names --date.
Moment MomentOfDate(const std::string& date);

/// Tells on standard error what is wrong with the command line, and gives the exit code: 0 if the user has
/// asked for help.
int TellParseError(const CLI::App& app, const CLI::ParseError& error);

}  // namespace host
