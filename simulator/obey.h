#pragma once

#include <cstddef>
#include <optional>
#include <string_view>
#include <vector>

namespace simulator {

/// What became of a line from the host.
enum class Verdict { kDone, kUnknown, kBadValue, kBadChecksum };

/// A line taken apart. Views into the line, which has to outlive it.
class Fields {
 public:
  enum class Checksum { kNone, kGood, kBad };

  /// Comma-separated fields, without a checksum that may stand after a "*".
  static Fields OfSentence(std::string_view line);
  /// Words between blanks.
  static Fields OfWords(std::string_view line);

  std::size_t size() const { return fields_.size(); }
  /// Empty where the line has no such field.
  std::string_view operator[](std::size_t i) const {
    return i < fields_.size() ? fields_[i] : std::string_view();
  }
  Checksum checksum() const { return checksum_; }

 private:
  std::vector<std::string_view> fields_;
  Checksum checksum_ = Checksum::kNone;
};

/// The whole text as a number; nothing if a character does not belong to it.
std::optional<double> Number(std::string_view text);
/// The same for a whole number within bounds.
std::optional<int> Whole(std::string_view text, int low, int high);
/// "ON" and "OFF".
std::optional<bool> OnOff(std::string_view text);
/// Equal but for the case of ASCII letters.
bool SameWord(std::string_view a, std::string_view b);

/// One row of a language: the leading fields of a line, and what it does. `run` gives false on a bad value.
template <class Language>
struct Command {
  std::string_view head[2];  ///< the second is empty where one field tells the command
  bool (Language::*run)(const Fields&);
};

template <class Language, std::size_t kCount>
Verdict Obey(Language& language, const Command<Language> (&table)[kCount], const Fields& fields) {
  if (fields.checksum() == Fields::Checksum::kBad) return Verdict::kBadChecksum;
  for (const auto& command : table) {
    if (!SameWord(fields[0], command.head[0])) continue;
    if (!command.head[1].empty() && !SameWord(fields[1], command.head[1])) continue;
    return (language.*command.run)(fields) ? Verdict::kDone : Verdict::kBadValue;
  }
  return Verdict::kUnknown;
}

}  // namespace simulator
