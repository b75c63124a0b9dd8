#pragma once

#include <optional>
#include <vector>

#include "gpsengine/sentences/fields.h"
#include "gpsengine/sentences/sky.h"

#pragma GCC visibility push(default)

namespace gps {

/// Reads the whole sky out of sentences: the groups of satellites in view (GSV) of every system and band, and
/// the satellites used (GSA). The library has room for the twelve of one group. There is one sky an epoch: it
/// is whole with the sentence that was the last one of the epoch before, or else when the time changes. A
/// group that breaks off changes nothing.
class SkyReader {
 public:
  /// Takes a sentence, which may be none. True if Latest is new with it.
  bool Read(const Fields& sentence);
  /// There are no more lines. True if Latest is new with what was left.
  bool Finish() { return EndEpoch(); }

  /// The last sky that was whole.
  const Sky& Latest() const { return sky_; }
  /// Whether a whole group of satellites came with the last lines that told a time, some dozens of them.
  bool HasGroups() const { return patience_ > 0; }

 private:
  /// Of one talker and one band, or of one talker and one system.
  struct Source {
    char talker[2];
    int id;  // as the sentence states it; 0 for none
    bool operator==(const Source&) const = default;
  };
  /// What a source said last.
  template <class T>
  struct Said {
    Source source;
    long long epoch = 0;  // in which it did
    long long run = 0;    // of sentences of one kind
    std::vector<T> items = {};
  };
  using Group = Said<Satellite>;
  /// Of a group that is coming in.
  struct Pages {
    Source source;
    Gnss said;  // by the talker
    int pages, next;
  };

  bool OnTime(std::optional<double> time);
  void OnPosition(const Fields& position);
  bool OnPage(const Fields& gsv);
  bool OnUsed(const Fields& gsa);
  bool OnGroup(const Source& source);
  bool OnPart(const Source& source);
  bool EndEpoch();
  void Tell();
  template <class T>
  Said<T>& Remember(std::vector<Said<T>>& all, const Source& source) const;
  template <class T>
  void ForgetOld(std::vector<Said<T>>& all) const;

  std::optional<Pages> pages_;
  std::vector<Satellite> coming_;  // on those pages
  std::vector<Group> groups_;
  std::vector<Said<SatelliteId>> used_;
  std::optional<double> time_;
  std::optional<int> used_count_;  // as a position sentence states it
  std::optional<double> hdop_, pdop_, vdop_;
  Sky sky_;
  long long epoch_ = 1, run_ = 0;
  bool in_run_ = false;   // the last sentence was a GSA
  bool is_new_ = false;   // some group has come that was not told of
  bool is_told_ = false;  // the sky of this epoch
  int parts_ = 0;         // groups and lists of used satellites in this epoch
  std::optional<Source> last_part_;
  int usual_parts_ = 0;  // in the last epoch that had groups
  std::optional<Source> usual_last_;
  int patience_ = 0;
};

}  // namespace gps

#pragma GCC visibility pop
