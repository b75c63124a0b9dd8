#pragma once

#include <chrono>
#include <string>
#include <vector>

#include "host/run/interrupt.h"

namespace host {

/// The words of --port for a search and for the port that is remembered, and what --baud auto sets.
constexpr char kAutoPort[] = "auto";
constexpr char kLastPort[] = "last";
constexpr int kAutoBaud = -1;

/// A port, its rate and the model on it, as the user names them or as they were found.
struct LineChoice {
  std::string port;  ///< A device, kAutoPort or kLastPort; empty for none.
  int baud = 0;      ///< Bits a second, kAutoBaud, or 0 for what is kept for the model.
  std::string model = "Other";
};

/// Puts a device and a rate in place of "auto" and "last". With "last" the model is the remembered one,
/// unless `model_given`. Tells on standard error what it hears. Throws a Failure if there is none, or if a
/// signal ends the search.
LineChoice ChooseLine(LineChoice choice, bool model_given, const Interrupt& interrupt);

/// What to listen to, and for how long.
struct SearchPlan {
  std::vector<std::string> devices;
  std::vector<int> rates;  ///< The likeliest first.
  /// At each rate. A receiver that has one fix a second and 4800 baud needs up to 1.2 s to get one through,
  /// counted from anywhere in between.
  std::chrono::milliseconds listen{1500};
  /// From the first message that is understood, to hear what else there is.
  std::chrono::milliseconds gather{1000};
};

struct FoundLine {
  std::string device;
  int baud;
};

/// Listens until messages are understood, and writes nothing to any port. Each device is heard once before
/// further rates, and those that sent something come first from there on. Tells on standard error what it
/// hears, and how long that takes at most. Throws a Failure as ChooseLine does.
FoundLine SearchLine(const SearchPlan& plan, const Interrupt& interrupt);

/// The rates to try for a model: what is kept for it, its own, then the common ones.
std::vector<int> LikelyRates(const std::string& model);

}  // namespace host
