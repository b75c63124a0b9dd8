#pragma once

#include <functional>
#include <memory>
#include <stop_token>
#include <string>
#include <vector>

#include "gpsengine/face/source.h"
#include "gpsengine/platform/serial.h"

#pragma GCC visibility push(default)

namespace gps {

/// Which receiver, and how it is read.
struct ReceiverOptions {
  std::string model = "Other";  ///< Its model as `gpsengine models` lists them, in any case of the letters.
  std::string port = {};        ///< Its device: "/dev/ttyUSB0".
  SerialLineFactory line = {};  ///< A line of your own in place of a device: a network connection, say.
  int baud = 0;  ///< Bits a second; 0: the rate that is kept for the model, or else its usual one.
  double antenna_height = 0.0;  ///< Metres that the antenna stands above the point, taken off every height.
  std::string record = {};      ///< A file into which every byte of the port goes as well; empty for none.
};

/// A receiver at the end of a line. It is read by threads of its own from the constructor on; what it tells
/// waits here, the last 4,096 records at most, until a range takes it.
///
/// One receiver or recording at a time is in use in a process: a second one is refused (ErrorCode::busy).
/// Its operations may be called from any thread, a command beside a range too. Where the process has a
/// CWinApp, the library's messages come here and not to its main window as long as the receiver lives.
class Receiver : public Source {
 public:
  /// Opens the port and sets the receiver up, which takes some models seconds; the token ends that early.
  /// Throws an Error if there is no such model, the port cannot be opened or another receiver is in use.
  explicit Receiver(ReceiverOptions options, std::stop_token stop = {});
  /// Ends the run within a second, switches raw data off and closes the port. Ranges end.
  ~Receiver();
  Receiver(const Receiver&) = delete;
  Receiver& operator=(const Receiver&) = delete;

  /// Commands the receiver: `receiver.command("set-elevation-mask", {"10"})`. The operations and their
  /// arguments are those of `gpsengine command`, and of face/operations.h. Blocks for as long as the make
  /// wants its pauses, up to 23 seconds; records go on coming. An operation that asks ("query-…") only sends
  /// the request: its answer is among the reports. With "--wait" as the last argument it waits for the answer
  /// besides: of one that asks up to 5 s for reports, until they pause; of another one up to 1.5 s until each
  /// line is acknowledged, if the language has acknowledgements. Throws an Error if the arguments are wrong,
  /// the model has no such operation, the receiver did not take it, the answer that was waited for did not
  /// come or was a refusal, or the token stopped it; the receiver is left usable.
  void command(const std::string& operation, const std::vector<std::string>& arguments = {},
               std::stop_token stop = {});

  /// For an event loop: a descriptor that is readable while records wait, or once the line is lost. It
  /// belongs to the receiver. Call drain then.
  int descriptor() const;
  /// Calls back with each record that has come, on this thread, without waiting. Throws an Error after the
  /// last record of a line that is lost.
  void drain(const std::function<void(const Record&)>& call);

  std::string model() const;        ///< The model by its own name.
  int baud() const;                 ///< Bits a second.
  unsigned long long lost() const;  ///< Records that were not read in time and made room for newer ones.
  /// Messages of the receiver that were understood.
  long long understood() const;

 private:
  class Live;
  explicit Receiver(std::unique_ptr<Live> live);

  const std::unique_ptr<Live> live_;
};

}  // namespace gps

#pragma GCC visibility pop
