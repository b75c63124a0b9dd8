#pragma once

#include <map>
#include <string>

#include "gpsengine/engine/gpsengine.h"

namespace host {

/// What is remembered for a user, in the profile of the application.
struct Config {
  std::string file;                  ///< The profile, whether or not it is there.
  std::string port, model;           ///< Of the last run that understood a receiver; empty for none.
  std::map<std::string, int> rates;  ///< The baud rates that were kept, by model.
};

/// What is remembered now.
Config ReadConfig(const CGPSEngine& engine);
std::string ConfigAsText(const Config& config);
std::string ConfigAsJson(const Config& config);

/// Remembers a port and the model on it, for "--port last". A port goes by its name under /dev/serial/by-id,
/// if it has one. A profile that cannot be written is left as it is.
void Remember(const std::string& port, const std::string& model);

/// Sets "port", which need not be there now, or "model". Throws a Failure if there is no such thing to set,
/// or it cannot be kept.
void SetConfig(CGPSEngine& engine, const std::string& name, const std::string& value);
/// Forgets port, model and baud rates. Throws a Failure if the profile cannot be written.
void ResetConfig(const CGPSEngine& engine);

}  // namespace host
