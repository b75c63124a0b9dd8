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

// A row with its key, and with the last four characters of its tag, which end most tags that go on after the
// key.
struct Place {
  std::uint64_t key = 0;  // no tag has this one, which ends a row of places
  std::uint64_t tailKey = 0;
  std::size_t tail = 0;  // where these last four begin
  const SentenceTable::Row* row = nullptr;
};

// The rows in the order of their keys: those of one key, which differ further on, stand together. A last
// place has no row.
constexpr auto kPlaces = [] {
  std::array<Place, kRowCount + 1> places{};
  for (std::size_t i = 0; i < kRowCount; ++i) {
    const std::u16string_view tag = SentenceTable::kRows[i].tag;
    const std::size_t tail = tag.size() - kKeyLength;
    places[i] = {KeyOf(tag), KeyOf(tag.substr(tail)), tail, &SentenceTable::kRows[i]};
  }
  std::sort(places.begin(), places.end() - 1,
            [](const Place& a, const Place& b) { return a.key != b.key ? a.key < b.key : a.row < b.row; });
  return places;
}();

// Keys go to buckets by multiplication, with a factor for which no two keys share one.
constexpr int kBucketBits = 7;
constexpr std::size_t kBuckets = std::size_t{1} << kBucketBits;
constexpr std::uint8_t kNoPlace = kRowCount;

constexpr std::size_t BucketOf(std::uint64_t key, std::uint64_t factor) {
  return key * factor >> (64 - kBucketBits);
}

// Whether the message begins with the tag of a place, whose key it has.
bool HasTag(std::u16string_view message, const Place& place) {
  if (message.size() < place.tail + kKeyLength) return false;
  return KeyOf(message.substr(place.tail)) == place.tailKey &&
         (place.tail <= kKeyLength || message.starts_with(place.row->tag));
}

struct Buckets {
  std::uint64_t factor = 0;
  std::array<std::uint8_t, kBuckets> places{};  // where in kPlaces the rows of a key begin

  constexpr bool Fill(std::uint64_t candidate) {
    factor = candidate;
    places.fill(kNoPlace);
    for (std::uint8_t place = 0; place < kRowCount; ++place) {
      const std::uint64_t key = kPlaces[place].key;
      if (place > 0 && key == kPlaces[place - 1].key) continue;
      std::uint8_t& bucket = places[BucketOf(key, factor)];
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

constexpr auto kKinds = [] {
  std::array<const SentenceTable::Row*, GPS_STRING_AXIS4_BIN + 1> kinds{};
  for (const SentenceTable::Row& row : SentenceTable::kRows) kinds[row.type] = &row;
  return kinds;
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
  for (const Place* place = &kPlaces[kKeyBuckets.places[BucketOf(key, kKeyBuckets.factor)]];
       place->key == key && place->row != nullptr; ++place) {
    if (HasTag(message, *place)) return place->row;
  }
  return nullptr;
}

const SentenceTable::Row* SentenceTable::OfKind(GPSStringType type) {
  return type >= 0 && type < static_cast<int>(kKinds.size()) ? kKinds[type] : nullptr;
}
