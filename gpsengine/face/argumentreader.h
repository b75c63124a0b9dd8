#pragma once

#include <cmath>
#include <string>
#include <vector>

#include "gpsengine/face/error.h"
#include "gpsengine/face/operations.h"
#include "gpsengine/face/words.h"

namespace gps {

/// Throws the Error that a word is none of what is wanted.
[[noreturn]] inline void Refuse(const std::string& word, const std::string& wanted) {
  throw Error(ErrorCode::usage, "\"" + word + "\" is not " + wanted);
}

/// Reads an operation's arguments one by one. A word that is none of what is asked for ends the command.
class ArgumentReader {
 public:
  explicit ArgumentReader(const Arguments& arguments) : words_(arguments.words), wait_(arguments.wait) {}
  bool Wait() const { return wait_; }
  bool AtEnd() const { return next_ == words_.size(); }
  /// Whether that is the next word, which is then read.
  bool Takes(const std::string& word) {
    const bool takes = !AtEnd() && words_[next_] == word;
    next_ += takes ? 1 : 0;
    return takes;
  }
  const std::string& Word(const char* what) {
    if (AtEnd()) throw Error(ErrorCode::usage, std::string("an argument is missing: ") + what);
    return words_[next_++];
  }
  int Whole(const char* what) {
    const std::string& word = Word(what);
    if (const auto value = ReadNumber<int>(word)) return *value;
    Refuse(word, std::string("a whole number of ") + what);
  }
  double Number(const char* what) {
    const std::string& word = Word(what);
    if (const auto value = ReadNumber<double>(word); value && std::isfinite(*value)) return *value;
    Refuse(word, std::string("a number of ") + what);
  }
  bool OnOff() {
    const bool on = Takes("on");
    if (!on && !Takes("off")) Refuse(Word("on or off"), "on or off");
    return on;
  }
  /// A number that fits, in the digits in which it is given.
  CString Digits(const char* what, bool (*fits)(double)) {
    const std::string& word = Word(what);
    const auto value = ReadNumber<double>(word);
    if (!value || word.find_first_not_of("0123456789.") != std::string::npos || !fits(*value))
      Refuse(word, what);
    return word.c_str();
  }
  void End() const {
    if (!AtEnd()) throw Error(ErrorCode::usage, "\"" + words_[next_] + "\" is one argument too many");
  }

 private:
  const std::vector<std::string>& words_;
  const bool wait_;
  std::size_t next_ = 0;
};

}  // namespace gps
