#include "host/line/config.h"

#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <system_error>

#include "gpsengine/face/models.h"
#include "gpsengine/platform/application.h"
#include "host/line/port.h"
#include "host/line/ports.h"
#include "host/records/jsonwriter.h"
#include "host/run/face.h"
#include "host/run/failure.h"

namespace host {

namespace {

// The section is named like no model, whose sections stand beside it.
constexpr char kSection[] = "Last", kPortEntry[] = "Port", kModelEntry[] = "Model", kBaudEntry[] = "Baud";

std::string Read(const char* entry) {
  return AfxGetApp()->GetProfileString(kSection, entry).ToUtf8();
}

bool Write(const char* entry, const std::string& value) {
  return Read(entry) == value || AfxGetApp()->WriteProfileString(kSection, entry, CString::FromUtf8(value));
}

/// The failure to write the profile, whose folder or disk is most often why.
Failure CannotWrite() {
  const std::filesystem::path path = AfxGetApp()->GetProfilePath().ToUtf8();
  std::error_code error;
  std::filesystem::create_directories(path.parent_path(), error);
  if (!error &&
      (access(path.parent_path().c_str(), W_OK) != 0 || (access(path.c_str(), R_OK) != 0 && errno != ENOENT)))
    error = {errno, std::generic_category()};
  return Failure(ExitCode::failed,
                 "cannot write " + path.string() + ": " + (error ? error.message() : "is the disk full?"));
}

std::string Absolute(const std::string& path) {
  std::error_code error;
  const auto absolute = std::filesystem::absolute(path, error);
  return error ? path : absolute.lexically_normal().string();
}

/// The name that a port is remembered by.
std::string Lasting(const std::string& port) {
  return IsAddress(port) ? port : StableName(Absolute(port));
}

}  // namespace

Config ReadConfig() {
  Config config{AfxGetApp()->GetProfilePath().ToUtf8(), Read(kPortEntry), Read(kModelEntry), {}};
  for (const auto& receiver : Models()) {
    const CString name = receiver->GetName();
    const int rate = AfxGetApp()->GetProfileInt(name, kBaudEntry, 0);
    if (rate > 0) config.rates[name.ToUtf8()] = rate;
  }
  return config;
}

std::string ConfigAsText(const Config& config) {
  const auto value = [](const std::string& text) { return (text.empty() ? "none yet" : text) + '\n'; };
  std::error_code error;
  const bool exists = std::filesystem::exists(config.file, error);
  std::string text = "file   " + config.file + (exists ? "\n" : " (not there yet)\n");
  text += "port   " + value(config.port) + "model  " + value(config.model);
  for (const auto& [model, rate] : config.rates) {
    text += "baud   " + std::to_string(rate) + " for " + model + '\n';
  }
  return text;
}

std::string ConfigAsJson(const Config& config) {
  std::string text;
  JsonWriter json(text);
  json.BeginObject();
  json.Known("file", config.file);
  json.Known("port", config.port);
  json.Known("model", config.model);
  json.Key("baud");
  json.BeginObject();
  for (const auto& [model, rate] : config.rates) json.Member(model, rate);
  json.EndObject();
  json.EndObject();
  return text + '\n';
}

void Remember(const std::string& port, CGPSReceiver& receiver) {
  Write(kPortEntry, Lasting(port));
  Write(kModelEntry, receiver.GetName().ToUtf8());
  KeepRate(receiver);
}

void KeepRate(CGPSReceiver& receiver) {
  const int rate = receiver.GetCurrentBaudrate();
  const int used = AfxGetApp()->GetProfileInt(receiver.GetName(), kBaudEntry, receiver.GetDefaultBaudrate());
  if (rate != used) AfxGetApp()->WriteProfileInt(receiver.GetName(), kBaudEntry, rate);
}

bool IsKeptRate(CGPSReceiver& receiver) {
  return AfxGetApp()->GetProfileInt(receiver.GetName(), kBaudEntry, 0) == receiver.GetCurrentBaudrate();
}

void SetConfig(const std::string& name, const std::string& value) {
  bool written = false;
  if (name == "port") {
    if (value.empty()) throw Failure(ExitCode::usage, "the name of a port is not empty");
    if (Port::Of(value)->IsInput()) throw Failure(ExitCode::usage, "standard input is not remembered");
    written = Write(kPortEntry, Lasting(value));
    std::error_code error;
    if (!IsAddress(value) && !std::filesystem::exists(value, error))
      Complain("there is no " + value + " now; it is remembered all the same");
  } else if (name == "model") {
    written = Write(kModelEntry, FindModel(value).GetName().ToUtf8());
  } else {
    throw Failure(ExitCode::usage, "\"" + name + "\" cannot be set; port and model can");
  }
  if (!written) throw CannotWrite();
}

void ForgetRate(const std::string& model) {
  if (!AfxGetApp()->RemoveProfileEntry(FindModel(model).GetName(), kBaudEntry)) throw CannotWrite();
}

void ResetConfig() {
  bool written = true;
  for (const char* entry : {kPortEntry, kModelEntry}) {
    written &= AfxGetApp()->RemoveProfileEntry(kSection, entry);
  }
  for (const auto& receiver : Models()) {
    written &= AfxGetApp()->RemoveProfileEntry(receiver->GetName(), kBaudEntry);
  }
  if (!written) throw CannotWrite();
}

}  // namespace host
