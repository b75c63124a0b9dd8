#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "host/run/event.h"
#include "host/run/interrupt.h"

namespace host {

/// Where corrections come from, as the user names it.
struct CorrectionSource {
  enum class Kind { caster, tcp, device, file };

  Kind kind = Kind::file;
  bool tls = false;
  std::string user, host;
  int port = 0;
  std::string path;  ///< The mount point, empty for the caster itself; or the device's or file's name.

  /// For people: without the user.
  std::string Name() const;
};

/// "ntrip://user@caster:2101/MOUNT", "ntrips://…", "tcp://host:port", or the path of a device or a file.
/// Throws a Failure that says what is wrong, and repeats no password.
CorrectionSource ParseCorrections(const std::string& text);
/// "caster", "caster:2101" or "ntrip://user@caster".
CorrectionSource ParseCaster(const std::string& text);
/// The first line of a file, or with none what GPSENGINE_CORRECTIONS_PASSWORD holds, which may be nothing.
/// Throws a Failure if the file cannot be read.
std::string CorrectionsPassword(const std::string& file);

/// What a source gives its bytes to, and asks. All calls are on its own thread.
struct SourcePeer {
  std::function<void(std::string_view)> take;  ///< May wait, until the stop.
  std::function<std::string()> gga;            ///< Where the receiver is, as a line; empty while not known.
  const Event& stop;                           ///< Set once it is over.
  double gga_interval = 10.0;                  ///< Seconds between GGAs to a caster; 0 for none.
  double patience = 60.0;  ///< Seconds without a byte after which a connection is given up.
};

/// Why a source gives no more.
struct SourceEnd {
  enum class Kind {
    stopped,
    lost,     ///< It may be there again at once.
    absent,   ///< It may be there again some day.
    refused,  ///< There is no use in asking again.
  };

  Kind kind = Kind::stopped;
  std::string reason;
};

/// Reads a caster or a TCP port until that ends. Throws nothing but a Failure of a build without libcurl,
/// which CheckNetwork throws before it.
SourceEnd ReadNetwork(const CorrectionSource& source, const std::string& password, const SourcePeer& peer);
void CheckNetwork(const CorrectionSource& source);
/// "libcurl 7.88.1", or that it is not there.
std::string NetworkVersion();
/// The caster's list of its mount points, as it sends it. Throws a Failure.
std::string FetchSourceTable(const CorrectionSource& caster, const std::string& password,
                             const Interrupt& interrupt);

/// Reads a serial device at that rate, or a file or named pipe, likewise.
SourceEnd ReadPath(const CorrectionSource& source, int baud, const SourcePeer& peer);

}  // namespace host
