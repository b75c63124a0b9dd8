#pragma once

#include <array>
#include <charconv>
#include <cmath>
#include <concepts>
#include <string>
#include <string_view>

namespace host {

/// Appends JSON to a text, with no blanks. It is for lines that are written thousands of times a second:
/// nothing is built up first, and its caller sees to it that the nesting is right and that keys need no
/// escaping.
class JsonWriter {
 public:
  explicit JsonWriter(std::string& out) : out_(out) {}

  void BeginObject() { Open('{'); }
  void EndObject() { Close('}'); }
  void BeginArray() { Open('['); }
  void EndArray() { Close(']'); }
  void Key(std::string_view key) {
    Separate();
    out_ += '"';
    out_ += key;
    out_ += "\":";
    fresh_ = true;
  }

  void Value(bool value) {
    Separate();
    out_ += value ? "true" : "false";
  }
  template <std::integral T>
  void Value(T value) {
    Separate();
    AppendNumber(value);
  }
  /// The fewest digits that read back as the same number; null for what is no number.
  void Value(double value) {
    Separate();
    if (std::isfinite(value)) {
      AppendNumber(value);
    } else {
      out_ += "null";
    }
  }
  void Value(std::string_view ascii) { Text(ascii); }
  void Value(const char* ascii) { Text(ascii); }
  /// With so many decimals, at most 9; null for what is no number.
  void Fixed(double value, int decimals);
  /// 8-bit text, byte for byte one character: bytes from 0x80 up are those of Latin-1.
  void Text(std::string_view bytes);
  /// UTF-8; what is none becomes U+FFFD.
  void Utf8(std::string_view text);
  /// A value that is JSON already.
  void Verbatim(std::string_view json) {
    Separate();
    out_ += json;
  }

  template <class T>
  void Member(std::string_view key, const T& value) {
    Key(key);
    Value(value);
  }
  /// A member of UTF-8; none, if the text is empty.
  void Known(std::string_view key, std::string_view text) {
    if (text.empty()) return;
    Key(key);
    Utf8(text);
  }
  void MemberFixed(std::string_view key, double value, int decimals) {
    Key(key);
    Fixed(value, decimals);
  }

 private:
  void Separate() {
    if (!fresh_) out_ += ',';
    fresh_ = false;
  }
  void Open(char bracket) {
    Separate();
    out_ += bracket;
    fresh_ = true;
  }
  void Close(char bracket) {
    out_ += bracket;
    fresh_ = false;
  }
  template <class T>
  void AppendNumber(T value) {
    std::array<char, 32> digits;
    out_.append(digits.data(), std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr);
  }

  std::string& out_;
  bool fresh_ = true;  // nothing stands ahead that a comma has to part from what comes
};

/// Appends a finite number with so many decimals, 0 to 9, rounded half away from zero.
void AppendFixed(std::string& out, double value, int decimals);

}  // namespace host
