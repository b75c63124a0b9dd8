#include "host/corrections/source.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "host/run/failure.h"
#include "host/run/url.h"

namespace host {

namespace {

constexpr int kCasterPort = 2101;
constexpr char kPasswordVariable[] = "GPSENGINE_CORRECTIONS_PASSWORD";

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

CorrectionSource ParseAddress(const std::string& text) {
  const Url url = ReadUrl(text);
  const auto* const row = std::find_if(std::begin(kSchemes), std::end(kSchemes),
                                       [&](const auto& one) { return one.scheme == url.scheme; });
  if (row == std::end(kSchemes))
    RefuseSource("\"" + url.scheme + "://\" is not known; there are ntrip://, ntrips:// and tcp://");
  if (url.has_password) throw PasswordInAddress("--corrections", kPasswordVariable);
  if (!url.wrong.empty()) RefuseSource(text + " is no address: " + url.wrong);
  if (url.host.empty()) RefuseSource(text + " names no host");
  const auto is_foreign = [](char c) {
    return c <= ' ' || c > '~' || std::strchr("\"<>\\^`{|}?#%", c) != nullptr;
  };
  if (std::any_of(url.path.begin(), url.path.end(), is_foreign))
    RefuseSource("\"" + url.path + "\" is the name of no mount point");
  const bool is_caster = row->kind == CorrectionSource::Kind::caster;
  if (!is_caster && (url.port == 0 || !url.path.empty() || !url.user.empty()))
    RefuseSource("an address of TCP is like tcp://host:port");
  return {row->kind, row->tls, url.user, url.host, url.port > 0 ? url.port : kCasterPort, url.path};
}

bool IsAddress(const std::string& text) {
  return text.find("://") != text.npos;
}

}  // namespace

std::string CorrectionSource::Name() const {
  if (kind == Kind::device || kind == Kind::file) return path;
  const char* const scheme = kind == Kind::tcp ? "tcp://" : tls ? "ntrips://" : "ntrip://";
  return scheme + HostAndPort(host, port) + (path.empty() ? "" : '/' + path);
}

CorrectionSource ParseCorrections(const std::string& text) {
  if (IsAddress(text)) {
    CorrectionSource source = ParseAddress(text);
    if (source.kind == CorrectionSource::Kind::caster && source.path.empty())
      RefuseSource("which mount point? \"gpsengine ntrip " + HostAndPort(source.host, source.port) +
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
  CorrectionSource source = ParseAddress(IsAddress(text) ? text : "ntrip://" + text);
  if (source.kind != CorrectionSource::Kind::caster) RefuseSource("a caster is like ntrip://caster:2101");
  source.path.clear();
  return source;
}

std::string CorrectionsPassword(const std::string& file) {
  return ReadPassword(file, kPasswordVariable);
}

}  // namespace host
