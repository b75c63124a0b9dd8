#include "gpsengine/receiver/sentencetable.h"

#include <cstdint>

namespace {

constexpr std::size_t kRowCount = std::size(SentenceTable::kRows);
constexpr std::size_t kKeyLength = 4;  // no tag is shorter

// The first four characters as one number.
constexpr std::uint64_t KeyOf(std::u16string_view text) {
  std::uint64_t key = 0;
  for (std::size_t i = 0; i < kKeyLength; ++i) key |= static_cast<std::uint64_t>(text[i]) << (16 * i);
  return key;
}

// The rows in the order of their keys: those of one key, which differ further on, stand together.
constexpr auto kByKey = [] {
  std::array<std::size_t, kRowCount> rows{};
  for (std::size_t i = 0; i < kRowCount; ++i) rows[i] = i;
  std::sort(rows.begin(), rows.end(), [](std::size_t a, std::size_t b) {
    const std::uint64_t keyA = KeyOf(SentenceTable::kRows[a].tag);
    const std::uint64_t keyB = KeyOf(SentenceTable::kRows[b].tag);
    return keyA != keyB ? keyA < keyB : a < b;
  });
  return rows;
}();

constexpr std::uint64_t KeyAt(std::size_t place) {
  return KeyOf(SentenceTable::kRows[kByKey[place]].tag);
}

// Keys go to buckets by multiplication, with a factor for which no two keys share one.
constexpr int kBucketBits = 7;
constexpr std::size_t kBuckets = std::size_t{1} << kBucketBits;
constexpr std::size_t kNoPlace = kRowCount;

constexpr std::size_t BucketOf(std::uint64_t key, std::uint64_t factor) {
  return key * factor >> (64 - kBucketBits);
}

// Whether the message begins with the tag, whose key it has. Most tags end within another four characters.
bool HasTag(std::u16string_view message, std::u16string_view tag) {
  if (message.size() < tag.size()) return false;
  const std::size_t tail = tag.size() - kKeyLength;
  return KeyOf(message.substr(tail)) == KeyOf(tag.substr(tail)) &&
         (tail <= kKeyLength || message.starts_with(tag));
}

struct Buckets {
  std::uint64_t factor = 0;
  std::array<std::size_t, kBuckets> places{};  // where in kByKey the rows of a key begin

  constexpr bool Fill(std::uint64_t candidate) {
    factor = candidate;
    places.fill(kNoPlace);
    for (std::size_t place = 0; place < kRowCount; ++place) {
      if (place > 0 && KeyAt(place) == KeyAt(place - 1)) continue;
      std::size_t& bucket = places[BucketOf(KeyAt(place), factor)];
      if (bucket != kNoPlace) return false;
      bucket = place;
    }
    return true;
  }
};

constexpr auto kKeyBuckets = [] {
  Buckets buckets;
  std::uint64_t candidate = 0x9E3779B97F4A7C15;  // a good mixer; most odd numbers will do after some tries
  while (!buckets.Fill(candidate)) candidate = candidate * 6364136223846793005 + 1442695040888963407;
  return buckets;
}();

constexpr auto kDecoders = [] {
  std::array<SentenceTable::Decoder, GPS_STRING_AXIS4_BIN + 1> decoders{};
  for (const SentenceTable::Row& row : SentenceTable::kRows) decoders[row.type] = row.decoder;
  return decoders;
}();

constexpr bool NoTagHidesAnother() {
  for (const auto& a : SentenceTable::kRows) {
    for (const auto& b : SentenceTable::kRows) {
      if (&a != &b && b.tag.starts_with(a.tag)) return false;
    }
  }
  return true;
}
static_assert(kRowCount == 44);
static_assert(NoTagHidesAnother());

}  // namespace

const SentenceTable::Row* SentenceTable::Find(std::u16string_view message) {
  if (message.size() < kKeyLength) return nullptr;
  const std::uint64_t key = KeyOf(message);
  for (std::size_t place = kKeyBuckets.places[BucketOf(key, kKeyBuckets.factor)];
       place != kNoPlace && KeyAt(place) == key; place = place + 1 == kRowCount ? kNoPlace : place + 1) {
    const Row& row = kRows[kByKey[place]];
    if (HasTag(message, row.tag)) return &row;
  }
  return nullptr;
}

SentenceTable::Decoder SentenceTable::DecoderOf(GPSStringType type) {
  return type >= 0 && type < static_cast<int>(kDecoders.size()) ? kDecoders[type] : nullptr;
}
