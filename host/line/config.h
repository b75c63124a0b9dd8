#pragma once

#include <map>
#include <string>

#include "gpsengine/receiver/gpsreceiver.h"

namespace host {

/// What is remembered for a user, in the profile of the application.
struct Config {
  std::string file;                  ///< The profile, whether or not it is there.
  std::string port, model;           ///< Of the last run that understood a receiver; empty for none.
  std::map<std::string, int> rates;  ///< The baud rates that were kept, by model.
};

/// What is remembered now.
Config ReadConfig();
std::string ConfigAsText(const Config& config);
std::string ConfigAsJson(const Config& config);

/// Remembers a port and the receiver on it, for "--port last", and the rate it is read at, for its model. A
/// device goes by its name under /dev/serial/by-id, if it has one, an address as it is. A profile that cannot
/// be written is left as it is.
void Remember(const std::string& port, CGPSReceiver& receiver);
/// Keeps the rate that a receiver is read at for later runs of its model, unless it is what they have anyway.
void KeepRate(CGPSReceiver& receiver);
/// Whether the rate that a receiver is read at is one that was kept.
bool IsKeptRate(CGPSReceiver& receiver);

/// Sets "port", which need not be there now, or "model". Throws a Failure if there is no such thing to set,
/// or it cannot be kept.
void SetConfig(const std::string& name, const std::string& value);
/// Forgets the rate of one model. Throws a Failure if there is no such model, or the profile cannot be
/// written.
void ForgetRate(const std::string& model);
/// Forgets port, model and baud rates. Throws a Failure if the profile cannot be written.
void ResetConfig();

}  // namespace host
