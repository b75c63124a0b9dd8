#pragma once

#include <array>
#include <charconv>
#include <cmath>
#include <concepts>
#include <cstring>
#include <string>
#include <string_view>
#include <type_traits>

namespace host {

/// The whole numbers of up to three digits, which most are, as text.
struct ShortNumber {
  char digits[3];
  unsigned char length;
};
inline constexpr auto kShortNumbers = [] {
  std::array<ShortNumber, 1000> numbers{};
  for (int i = 0; i < static_cast<int>(numbers.size()); ++i) {
    ShortNumber& number = numbers[static_cast<std::size_t>(i)];
    for (const int place : {100, 10, 1})
      if (i >= place || place == 1) number.digits[number.length++] = static_cast<char>('0' + i / place % 10);
  }
  return numbers;
}();

/// More characters than any number has with its sign, and any that is escaped.
inline constexpr std::size_t kLongestNumber = 32;

/// Writes a whole number where there is room for so many. Gives its end.
template <std::integral T>
char* WriteWhole(char* to, T value) {
  if (const auto index = static_cast<std::size_t>(value); index < kShortNumbers.size()) {
    std::memcpy(to, &kShortNumbers[index], sizeof(ShortNumber));  // more than it has digits, at once
    return to + kShortNumbers[index].length;
  }
  return std::to_chars(to, to + kLongestNumber, value).ptr;
}

/// Appends JSON to a text, with no blanks. It is for lines that are written thousands of times a second:
/// nothing is built up first, and its caller sees to it that the nesting is right and that keys need no
/// escaping. What is written gathers here and is in the text as soon as all that was opened is closed.
class JsonWriter {
 public:
  explicit JsonWriter(std::string& out) : out_(out) {}
  JsonWriter(const JsonWriter&) = delete;
  JsonWriter& operator=(const JsonWriter&) = delete;

  void BeginObject() { Open('{'); }
  void EndObject() { Close('}'); }
  void BeginArray() { Open('['); }
  void EndArray() { Close(']'); }
  /// At most 100 characters. Always in place: keys are constants, whose copying is then a move or two.
  [[gnu::always_inline]] void Key(std::string_view key) {
    PutUpTo(WriteKey(key));
    fresh_ = true;
  }

  template <std::integral T>
  void Value(T value) {
    Separate();
    PutUpTo(Write(Room(kLongestNumber), value));
    Pass();
  }
  /// The fewest digits that read back as the same number; null for what is no number.
  void Value(double value) {
    if (!std::isfinite(value)) return Simple("null");
    Separate();
    PutUpTo(Write(Room(kLongestNumber), value));
    Pass();
  }
  void Value(std::string_view ascii) { Text(ascii); }
  void Value(const char* ascii) { Text(ascii); }
  /// A text that has nothing to escape.
  [[gnu::always_inline]] void Plain(std::string_view text) {
    Separate();
    Put('"');
    Put(text);
    Put('"');
    Pass();
  }
  /// With that many decimals, at most 9; null for what is no number.
  void Fixed(double value, int decimals);
  /// 8-bit text, byte for byte one character: bytes from 0x80 up are those of Latin-1.
  void Text(std::string_view bytes);
  /// UTF-8; what is none becomes U+FFFD.
  void Utf8(std::string_view text);
  /// A value that is JSON already.
  void Verbatim(std::string_view json) { Simple(json); }

  template <class T>
  [[gnu::always_inline]] void Member(std::string_view key, const T& value) {
    if constexpr (std::is_integral_v<T>) {
      PutUpTo(Write(WriteKey(key), value));
    } else {
      Key(key);
      Value(value);
    }
  }
  /// A member of UTF-8; none, if the text is empty.
  void Known(std::string_view key, std::string_view text) {
    if (text.empty()) return;
    Key(key);
    Utf8(text);
  }
  template <class Number>
  [[gnu::always_inline]] void MemberFixed(std::string_view key, Number value, int decimals) {
    if constexpr (std::is_integral_v<Number>) {
      PutUpTo(WriteFixed(WriteKey(key), value, decimals));
    } else {
      Key(key);
      Fixed(value, decimals);
    }
  }

 private:
  static constexpr std::size_t kRoom = 512;

  void Separate() {
    if (!fresh_) Put(',');
    fresh_ = false;
  }
  void Open(char bracket) {
    char* to = Room(2);
    if (!fresh_) *to++ = ',';
    *to++ = bracket;
    end_ = to;
    fresh_ = true;
    ++depth_;
  }
  void Close(char bracket) {
    Put(bracket);
    fresh_ = false;
    --depth_;
    Pass();
  }
  void Simple(std::string_view json) {
    Separate();
    Put(json);
    Pass();
  }
  /// Room for that many characters, at most kRoom.
  char* Room(std::size_t count) {
    if (count > static_cast<std::size_t>(gathered_.data() + kRoom - end_)) [[unlikely]] {
      Flush();
    }
    return end_;
  }
  [[gnu::always_inline]] void Put(char c) {
    char* const to = Room(1);
    end_ = to + 1;
    *to = c;
  }
  [[gnu::always_inline]] void Put(std::string_view text) {
    if (text.size() > kRoom) return PutLong(text);
    std::memcpy(Room(text.size()), text.data(), text.size());
    end_ += text.size();
  }
  /// Writes what stands before a member's value. Gives where that has room.
  [[gnu::always_inline]] char* WriteKey(std::string_view key) {
    char* to = Room(key.size() + 4 + 2 * kLongestNumber);
    if (!fresh_) *to++ = ',';
    *to++ = '"';
    std::memcpy(to, key.data(), key.size());
    to += key.size();
    *to++ = '"';
    *to++ = ':';
    return to;
  }
  /// Takes what was written in Room, up to its end.
  void PutUpTo(char* end) {
    end_ = end;
    fresh_ = false;
  }
  /// Write a value and give its end.
  ///@{
  template <class T>
  static char* Write(char* to, T value) {
    if constexpr (std::is_integral_v<T>) return WriteWhole(to, value);
    return std::to_chars(to, to + kLongestNumber, value).ptr;
  }
  static char* Write(char* to, bool value) {
    std::memcpy(to, value ? "true " : "false", 5);
    return to + (value ? 4 : 5);
  }
  static char* WriteFixed(char* to, int value, int decimals) {
    to = Write(to, value);
    if (decimals > 0) *to++ = '.';
    for (int i = 0; i < decimals; ++i) *to++ = '0';
    return to;
  }
  ///@}
  void PutLong(std::string_view text) {
    Flush();
    out_ += text;
  }
  void PutEscaped(unsigned char byte);
  void Flush() {
    out_.append(gathered_.data(), end_);
    end_ = gathered_.data();
  }
  /// Hands on what is complete.
  void Pass() {
    if (depth_ == 0) Flush();
  }

  std::string& out_;
  std::array<char, kRoom> gathered_;
  char* end_ = gathered_.data();  // of what has gathered
  int depth_ = 0;                 // brackets that are open
  bool fresh_ = true;             // nothing stands ahead that a comma has to part from what comes
};

/// Appends a finite number with that many decimals, 0 to 9, rounded half away from zero.
void AppendFixed(std::string& out, double value, int decimals);

}  // namespace host
