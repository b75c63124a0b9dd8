#pragma once

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <istream>
#include <memory>
#include <optional>
#include <span>
#include <string>

#include "gpsengine/face/source.h"

#pragma GCC visibility push(default)

namespace gps {

/// How a recording is read.
struct DecodeOptions {
  std::string model =
      "Other";  ///< The model that made it. All read what any make sends; raw data may need it.
  double antenna_height = 0.0;  ///< Metres that the antenna stood above the point, taken off every height.
  /// The day on which it was made; without it, as its sentences say, or else today.
  std::optional<std::chrono::sys_days> date = {};
  double speed = 0.0;  ///< A multiple of its own pace; 0: as fast as it goes.
};

/// A receiver's bytes that were recorded. Decoding goes on as its records are asked for, on the thread that
/// asks, and starts no thread. The bytes are gone through once: take one range at a time, or records() for
/// several kinds. Kinds that nobody has asked for yet are passed over.
///
/// One recording or receiver at a time is in use in a process, until its last range is gone
/// (ErrorCode::busy).
class Recording : public Source {
 public:
  /// Messages that were understood so far; binary ones count where raw data are asked for.
  long long understood() const;

 private:
  class Play;
  explicit Recording(std::shared_ptr<Play> play);
  friend Recording decode(const std::filesystem::path&, DecodeOptions);
  friend Recording decode(std::istream&, DecodeOptions);
  friend Recording decode(std::span<const std::byte>, DecodeOptions);

  std::shared_ptr<Play> play_;
};

/// Decodes a file, a stream or bytes: `for (const gps::Fix& fix : gps::decode("drive.log").fixes())`. The
/// stream or the bytes stay yours, and stay there for as long. A text log whose carriage returns were dropped
/// is read all the same. Throws an Error for a file that cannot be read or is packed, a model that does not
/// exist, and while another receiver or recording is in use.
///@{
Recording decode(const std::filesystem::path& file, DecodeOptions options = {});
Recording decode(std::istream& stream, DecodeOptions options = {});
Recording decode(std::span<const std::byte> bytes, DecodeOptions options = {});
///@}

}  // namespace gps

#pragma GCC visibility pop
