#include "host/corrections/source.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fstream>

#include "gpsengine/text/words.h"
#include "host/run/face.h"
#include "host/run/failure.h"

namespace host {

namespace {

constexpr int kCasterPort = 2101;

constexpr struct {
  std::string_view scheme;
  CorrectionSource::Kind kind;
  bool tls;
} kSchemes[] = {{"ntrip", CorrectionSource::Kind::caster, false},
                {"ntrips", CorrectionSource::Kind::caster, true},
                {"tcp", CorrectionSource::Kind::tcp, false}};

[[noreturn]] void RefuseSource(const std::string& reason) {
  throw Failure(ExitCode::usage, "--corrections: " + reason);
}

/// Takes "user@" off. A password is refused, and said nowhere.
void TakeUser(std::string& rest, CorrectionSource& source) {
  const std::size_t slash = std::min(rest.find('/'), rest.size());
  const std::size_t at = rest.rfind('@', slash);
  // After a password with a slash in it, there is an "@" that is not found otherwise.
  const bool hides = at == std::string::npos && rest.find('@') != std::string::npos;
  if (hides || (at != std::string::npos && rest.find(':') < at)) {
    RefuseSource(
        "no password in an address, since others on this machine can read it there: set "
        "GPSENGINE_CORRECTIONS_PASSWORD, or name a file with --corrections-password-file");
  }
  if (at == std::string::npos) return;
  source.user = rest.substr(0, at);
  rest.erase(0, at + 1);
}

/// Takes "host:port", or "[::1]:port", off what stands before the mount point.
void TakeHost(const std::string& rest, CorrectionSource& source) {
  const std::size_t bracket = rest.starts_with('[') ? rest.find(']') : 0;
  const std::size_t slash = std::min(rest.find('/'), rest.size());
  const std::string address = rest.substr(0, slash);
  const std::size_t colon = bracket == std::string::npos ? bracket : address.find(':', bracket);
  source.host = address.substr(0, colon);
  if (slash < rest.size()) source.path = rest.substr(slash + 1);
  if (colon != std::string::npos) {
    const auto port = ReadNumber<int>(address.substr(colon + 1));
    if (!port || *port < 1 || *port > 65535) RefuseSource("\"" + address + "\" has no port from 1 to 65535");
    source.port = *port;
  }
  const auto is_foreign = [](char c) {
    return c <= ' ' || c > '~' || std::strchr("\"<>\\^`{|}?#%", c) != nullptr;
  };
  if (source.host.empty() || std::any_of(rest.begin(), rest.end(), is_foreign))
    RefuseSource("\"" + rest + "\" is no address such as caster.example:2101/MOUNT");
}

CorrectionSource ParseAddress(const std::string& text, std::size_t scheme_end) {
  const std::string scheme = text.substr(0, scheme_end);
  const auto* const row = std::find_if(std::begin(kSchemes), std::end(kSchemes),
                                       [&](const auto& one) { return one.scheme == scheme; });
  if (row == std::end(kSchemes))
    RefuseSource("\"" + scheme + "://\" is not known; there are ntrip://, ntrips:// and tcp://");
  CorrectionSource source;
  source.kind = row->kind;
  source.tls = row->tls;
  std::string rest = text.substr(scheme_end + 3);
  TakeUser(rest, source);
  TakeHost(rest, source);
  if (source.kind == CorrectionSource::Kind::caster) {
    if (source.port == 0) source.port = kCasterPort;
  } else if (source.port == 0 || !source.path.empty() || !source.user.empty()) {
    RefuseSource("an address of TCP is like tcp://host:port");
  }
  return source;
}

}  // namespace

std::string CorrectionSource::Name() const {
  if (kind == Kind::device || kind == Kind::file) return path;
  const char* const scheme = kind == Kind::tcp ? "tcp://" : tls ? "ntrips://" : "ntrip://";
  return scheme + host + ':' + std::to_string(port) + (path.empty() ? "" : '/' + path);
}

CorrectionSource ParseCorrections(const std::string& text) {
  if (const std::size_t end = text.find("://"); end != std::string::npos) {
    CorrectionSource source = ParseAddress(text, end);
    if (source.kind == CorrectionSource::Kind::caster && source.path.empty())
      RefuseSource("which mount point? \"gpsengine ntrip " + source.host + ':' + std::to_string(source.port) +
                   "\" lists those of the caster; then " + source.Name() + "/MOUNT");
    return source;
  }
  struct stat facts {};
  if (stat(text.c_str(), &facts) != 0) RefuseSource("cannot open " + text + ": " + std::strerror(errno));
  if (S_ISDIR(facts.st_mode)) RefuseSource(text + " is a folder");
  CorrectionSource source;
  source.kind = S_ISCHR(facts.st_mode) ? CorrectionSource::Kind::device : CorrectionSource::Kind::file;
  source.path = text;
  return source;
}

CorrectionSource ParseCaster(const std::string& text) {
  const std::size_t end = text.find("://");
  CorrectionSource source =
      end == std::string::npos ? ParseAddress("ntrip://" + text, 5) : ParseAddress(text, end);
  if (source.kind != CorrectionSource::Kind::caster) RefuseSource("a caster is like ntrip://caster:2101");
  source.path.clear();
  return source;
}

std::string CorrectionsPassword(const std::string& file) {
  if (file.empty()) {
    const char* const password = std::getenv("GPSENGINE_CORRECTIONS_PASSWORD");
    return password == nullptr ? "" : password;
  }
  std::ifstream stream(file);
  std::string line;
  if (!std::getline(stream, line))
    throw Failure(ExitCode::usage, "cannot read a password from " + file + ": its first line is to hold it");
  if (line.ends_with('\r')) line.pop_back();
  return line;
}

}  // namespace host
