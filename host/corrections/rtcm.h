#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace host {

/// The checksum of RTCM 3 messages, CRC-24Q.
unsigned Crc24Q(std::string_view bytes);

/// Cuts a stream of corrections into whole messages of RTCM 3, and what is none. Every byte comes out again,
/// in its order, but for those of a message that is still to be completed, which are 1,028 at most.
class RtcmFramer {
 public:
  /// `type` is a message's number, 0 for an empty one; none for bytes that are no message of a good checksum.
  using Take = std::function<void(std::string_view piece, std::optional<int> type)>;

  static constexpr std::size_t kLongestPiece = 1029;

  /// The next bytes, in pieces of any size.
  void Feed(std::string_view bytes, const Take& take);
  /// What looked like a message but for its checksum.
  long long BadChecksums() const { return bad_; }
  /// Forgets what was begun.
  void Clear() { held_.clear(); }

 private:
  std::string held_;
  long long bad_ = 0;
};

}  // namespace host
