#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <iterator>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>
#include <utility>

#include "gpsengine/face/error.h"
#include "gpsengine/face/values.h"

#pragma GCC visibility push(default)

namespace gps {

/// How long to wait for the next record: for ever, or until one of these ends it.
struct Wait {
  Wait() = default;
  /// So long at most: the silence of a receiver is then an Error, ErrorCode::silence.
  template <class Number, class Unit>
  Wait(std::chrono::duration<Number, Unit> longest)
      : timeout(std::chrono::ceil<std::chrono::milliseconds>(longest)) {}
  /// Until that is stopped, which ends a range as the end of a recording does.
  Wait(std::stop_token token) : stop(std::move(token)) {}
  /// Until either.
  template <class Number, class Unit>
  Wait(std::chrono::duration<Number, Unit> longest, std::stop_token token) : Wait(longest) {
    stop = std::move(token);
  }

  std::optional<std::chrono::milliseconds> timeout;  ///< None: no limit.
  std::stop_token stop;                              ///< One that nobody stops: no limit.
};

/// Where records come from, for those who implement a source.
class Stream {
 public:
  virtual ~Stream() = default;
  /// Waits for the next record of that alternative of Record, or of any (std::variant_npos), and puts it
  /// there. False at the end. Throws an Error that says why there is none.
  virtual bool Next(std::size_t alternative, Record& record, const Wait& wait) = 0;
  /// From now on records of that alternative are asked for.
  virtual void Want(std::size_t alternative) = 0;
};

/// The error of a receiver at that port which has told nothing of that alternative of Record, or of any
/// (std::variant_npos), for so long.
Error Silence(std::size_t alternative, const std::string& port, double seconds);

/// Records of one kind, to be gone through once: `for (const gps::Fix& fix : receiver.fixes())`. Waits where
/// nothing has come yet, and throws an Error where nothing more can come. A range holds what it reads from,
/// and may outlive the receiver; it then ends. For one thread at a time.
template <class T>
class Range {
 public:
  Range() = default;  ///< Of nothing.
  /// A range over a source's records.
  Range(std::shared_ptr<Stream> stream, Wait wait) : stream_(std::move(stream)), wait_(std::move(wait)) {
    stream_->Want(kAlternative);
  }

  /// The next one; none at the end.
  std::optional<T> next() { return Advance() ? std::optional<T>(Current()) : std::nullopt; }

  /// Goes through the records, for a range-based for.
  class Iterator {
   public:
    using value_type = T;                    ///< What it gives.
    using difference_type = std::ptrdiff_t;  ///< As iterators have to say.

    Iterator() = default;
    explicit Iterator(Range& range) : range_(&range) { ++*this; }           ///< At the next record.
    const T& operator*() const { return range_->Current(); }                ///< Good until it is moved on.
    const T* operator->() const { return &range_->Current(); }              ///< Likewise.
    Iterator& operator++() { return at_end_ = !range_->Advance(), *this; }  ///< Waits for the next record.
    void operator++(int) { ++*this; }                                       ///< Likewise.
    bool operator==(std::default_sentinel_t) const { return at_end_; }      ///< Whether it is at the end.

   private:
    Range* range_ = nullptr;
    bool at_end_ = true;
  };
  Iterator begin() { return Iterator(*this); }        ///< At the next record, which it waits for.
  std::default_sentinel_t end() const { return {}; }  ///< The end.

 private:
  static constexpr std::size_t kAlternative = AlternativeOf<T>();

  bool Advance() { return stream_ != nullptr && stream_->Next(kAlternative, record_, wait_); }
  const T& Current() const {
    if constexpr (std::is_same_v<T, Record>) {
      return record_;
    } else {
      return std::get<T>(record_);
    }
  }

  std::shared_ptr<Stream> stream_;
  Wait wait_;
  Record record_;
};

/// What a receiver and a recording have in common: the records that come of it. A record of a kind goes to
/// one range of its kind, and to one of all kinds beside it; two ranges of one kind share.
class Source {
 public:
  /// Positions, once for each moment; sentences that tell of no fix are left out, and come among all records.
  Range<Fix> fixes(Wait wait = {}) const { return {stream_, std::move(wait)}; }
  /// The satellites in view, an epoch at a time: all systems that the receiver tells of.
  Range<Sky> satellites(Wait wait = {}) const { return {stream_, std::move(wait)}; }
  /// What the receiver reports of its settings: the answers to requests, acknowledgements, sentences of its
  /// make, and messages of the library itself (key "message").
  Range<Report> reports(Wait wait = {}) const { return {stream_, std::move(wait)}; }
  /// Raw measurements and ephemerides.
  Range<Raw> raw(Wait wait = {}) const { return {stream_, std::move(wait)}; }
  /// All of these as they came.
  Range<Record> records(Wait wait = {}) const { return {stream_, std::move(wait)}; }
  /// Calls back with each record, on this thread, until the end of them. Throws as a range does.
  void run(const std::function<void(const Record&)>& call, Wait wait = {}) const {
    for (const Record& record : records(std::move(wait))) call(record);
  }

 protected:
  /// Of such records.
  explicit Source(std::shared_ptr<Stream> stream) : stream_(std::move(stream)) {}
  ~Source() = default;
  /// Moves with what it is a part of.
  ///@{
  Source(Source&&) = default;
  Source& operator=(Source&&) = default;
  ///@}

 private:
  std::shared_ptr<Stream> stream_;
};

}  // namespace gps

#pragma GCC visibility pop
