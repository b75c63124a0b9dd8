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
    Separate();
    char* const to = Room(key.size() + 3);
    *to = '"';
    std::memcpy(to + 1, key.data(), key.size());
    std::memcpy(to + 1 + key.size(), "\":", 2);
    used_ += key.size() + 3;
    fresh_ = true;
  }

  void Value(bool value) { Simple(value ? "true" : "false"); }
  template <std::integral T>
  void Value(T value) {
    Separate();
    PutNumber(value);
    Pass();
  }
  /// The fewest digits that read back as the same number; null for what is no number.
  void Value(double value) {
    if (!std::isfinite(value)) return Simple("null");
    Separate();
    PutNumber(value);
    Pass();
  }
  void Value(std::string_view ascii) { Text(ascii); }
  void Value(const char* ascii) { Text(ascii); }
  /// With so many decimals, at most 9; null for what is no number.
  ///@{
  void Fixed(double value, int decimals);
  void Fixed(int value, int decimals);
  ///@}
  /// 8-bit text, byte for byte one character: bytes from 0x80 up are those of Latin-1.
  void Text(std::string_view bytes);
  /// UTF-8; what is none becomes U+FFFD.
  void Utf8(std::string_view text);
  /// A value that is JSON already.
  void Verbatim(std::string_view json) { Simple(json); }

  template <class T>
  [[gnu::always_inline]] void Member(std::string_view key, const T& value) {
    Key(key);
    Value(value);
  }
  /// A member of UTF-8; none, if the text is empty.
  void Known(std::string_view key, std::string_view text) {
    if (text.empty()) return;
    Key(key);
    Utf8(text);
  }
  template <class Number>
  [[gnu::always_inline]] void MemberFixed(std::string_view key, Number value, int decimals) {
    Key(key);
    Fixed(value, decimals);
  }

 private:
  static constexpr std::size_t kRoom = 512;
  // More than any number takes with its sign, and any escaped character.
  static constexpr std::size_t kLongestNumber = 32;

  void Separate() {
    if (!fresh_) Put(',');
    fresh_ = false;
  }
  void Open(char bracket) {
    Separate();
    Put(bracket);
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
  /// Where so many characters have room, which are at most kRoom.
  char* Room(std::size_t count) {
    if (count > kRoom - used_) [[unlikely]] {
      Flush();
    }
    return gathered_.data() + used_;
  }
  [[gnu::always_inline]] void Put(char c) {
    *Room(1) = c;
    ++used_;
  }
  [[gnu::always_inline]] void Put(std::string_view text) {
    if (text.size() > kRoom) return PutLong(text);
    std::memcpy(Room(text.size()), text.data(), text.size());
    used_ += text.size();
  }
  /// The end of a number. Most are whole ones of a digit or two.
  template <class T>
  static char* Write(char* to, T value) {
    if constexpr (std::is_integral_v<T>) {
      if (value >= 0 && value < 100) {
        const int number = static_cast<int>(value);
        if (number > 9) *to++ = static_cast<char>('0' + number / 10);
        *to++ = static_cast<char>('0' + number % 10);
        return to;
      }
    }
    return std::to_chars(to, to + kLongestNumber, value).ptr;
  }
  template <class T>
  void PutNumber(T value) {
    char* const to = Room(kLongestNumber);
    used_ += static_cast<std::size_t>(Write(to, value) - to);
  }
  void PutLong(std::string_view text) {
    Flush();
    out_ += text;
  }
  void PutEscaped(unsigned char byte);
  void Flush() {
    out_.append(gathered_.data(), used_);
    used_ = 0;
  }
  /// Hands on what is complete.
  void Pass() {
    if (depth_ == 0) Flush();
  }

  std::string& out_;
  std::array<char, kRoom> gathered_;
  std::size_t used_ = 0;
  int depth_ = 0;      // brackets that are open
  bool fresh_ = true;  // nothing stands ahead that a comma has to part from what comes
};

/// Appends a finite number with so many decimals, 0 to 9, rounded half away from zero.
void AppendFixed(std::string& out, double value, int decimals);

}  // namespace host
