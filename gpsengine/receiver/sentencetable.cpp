#include "gpsengine/receiver/sentencetable.h"

#include <cstdint>

namespace {

constexpr std::size_t kRowCount = std::size(SentenceTable::kRows);
constexpr std::size_t kKeyLength = 4;  // no tag is shorter

// The first four characters as one number.
constexpr std::uint64_t KeyOf(std::u16string_view text) {
  std::uint64_t key = 0;
  for (std::size_t i = 0; i < kKeyLength; ++i) key = key << 16 | text[i];
  return key;
}

struct Entry {
  std::uint64_t key;
  std::size_t row;
};

// The rows in the order of their keys, so that a message finds its few candidates by halving.
constexpr auto kByKey = [] {
  std::array<Entry, kRowCount> entries{};
  for (std::size_t i = 0; i < kRowCount; ++i) entries[i] = {KeyOf(SentenceTable::kRows[i].tag), i};
  std::sort(entries.begin(), entries.end(),
            [](const Entry& a, const Entry& b) { return a.key != b.key ? a.key < b.key : a.row < b.row; });
  return entries;
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
  const auto* entry =
      std::lower_bound(kByKey.begin(), kByKey.end(), key,
                       [](const Entry& candidate, std::uint64_t wanted) { return candidate.key < wanted; });
  for (; entry != kByKey.end() && entry->key == key; ++entry) {
    const Row& row = kRows[entry->row];
    if (message.starts_with(row.tag)) return &row;
  }
  return nullptr;
}

SentenceTable::Decoder SentenceTable::DecoderOf(GPSStringType type) {
  const auto* row =
      std::find_if(std::begin(kRows), std::end(kRows), [&](const Row& each) { return each.type == type; });
  return row == std::end(kRows) ? nullptr : row->decoder;
}
