#include "host/line/source.h"

#include <fcntl.h>

#include <cerrno>
#include <chrono>
#include <cstring>

#include "gpsengine/platform/serial.h"
#include "host/line/config.h"
#include "host/line/ports.h"
#include "host/run/descriptor.h"
#include "host/run/recording.h"

namespace host {

namespace {

std::unique_ptr<simulator::PtyRunner> Simulate(CGPSReceiver& receiver) {
  simulator::Options options;
  options.model = receiver.GetName().ToUtf8();
  options.start_utc = std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now());
  simulator::PtyRunner::Settings settings;
  // A rate that the user has saved for a real receiver of this model is not the simulated one's.
  settings.garble_at_wrong_rate = false;
  return std::make_unique<simulator::PtyRunner>(simulator::MakeReceiver(options), settings);
}

}  // namespace

Source::Source(const std::string& device, CGPSReceiver& receiver)
    : runner_(device.empty() ? Simulate(receiver) : nullptr),
      device_(runner_ ? runner_->PortName() : device) {
  MapComPort(kPort, CString::FromUtf8(device_));
}

void Source::Tell(const std::string& model) const {
  if (!IsSimulated()) return;
  Complain("a simulated receiver \"" + model + "\" on " + device_ +
           "; --port DEVICE reads a real one, Ctrl-C ends");
}

void Source::Start() {
  if (runner_) runner_->Start();
}

void SelectReceiver(CGPSEngine& engine, CGPSReceiver& receiver, int baud, Geoid geoid, double antenna_height,
                    bool host_moves_bytes) {
  engine.InitReceivers();
  if (baud > 0) receiver.UseBaudrate(baud);
  receiver.SetupReceiver(kPort, static_cast<int>(geoid), antenna_height, "", host_moves_bytes);
  engine.SetReceiver(&receiver);
}

void StartEngine(CGPSEngine& engine, const Source& source, PortWatch& watch) {
  if (engine.Start()) return;
  watch.Release();  // or it would be one more program that has the port open
  if (engine.GetLastError() != GPS_ENGINE_INIT_FAILED) {
    throw Failure(ExitCode::failed, engine.GetLastErrorString().ToUtf8());
  }
  const std::string reason = WhyNotOpen(source.Device());
  throw Failure(ExitCode::port_closed, reason.empty() ? "cannot open " + source.Device() : reason);
}

void StartPlayback(CGPSEngine& engine, const std::string& file) {
  // The engine would look for another recording in its place.
  errno = 0;
  const UniqueDescriptor recording(open(file.c_str(), O_RDONLY | O_CLOEXEC));
  char first = 0;
  if (!recording || read(recording.Get(), &first, 1) != 1) {
    throw Failure(ExitCode::failed,
                  "cannot play " + file + ": " + (errno != 0 ? std::strerror(errno) : "the file is empty"));
  }
  engine.m_bEmulation = true;
  engine.m_strEmulationFile = CString::FromUtf8(NameOfUnpacked(file));
  engine.GetReceiver()->LoadAlternatGPSStatusStrings();
  if (!engine.Start()) throw Failure(ExitCode::failed, engine.GetLastErrorString().ToUtf8());
}

Failure NothingUnderstood(const std::string& device, double seconds, bool heard, CGPSReceiver& receiver) {
  const std::string time = Seconds(seconds);
  const std::string kept = IsKeptRate(receiver)
                               ? ", the rate that is remembered for this model (\"gpsengine config forget\" "
                                 "forgets it)"
                               : "";
  return Failure(ExitCode::nothing_understood,
                 heard ? "bytes came from " + device + " in " + time + ", but no message was understood at " +
                             std::to_string(receiver.GetCurrentBaudrate()) + " baud" + kept +
                             ": set the receiver's baud rate with --baud, let --baud auto "
                             "find it, or let the receiver send NMEA"
                       : "no data came from " + device + " in " + time +
                             ": check that the receiver is on, and its cable");
}

std::string Seconds(double seconds) {
  CString text;
  text.Format("%g s", seconds);
  return text.ToUtf8();
}

Failure PortLost(const std::string& device, bool could_reconnect) {
  return Failure(ExitCode::port_lost,
                 "the port " + device +
                     " was lost: it was unplugged, or the other side hung up. Plug it in again "
                     "and start once more" +
                     (could_reconnect ? ", or let --reconnect wait for it" : ""));
}

}  // namespace host
