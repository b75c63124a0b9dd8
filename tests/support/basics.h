#pragma once

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <sstream>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include "gpsengine/face/error.h"
#include "gpsengine/platform/clock.h"

/// Whether the text has those parts, in any order. What it is instead stands in the message.
template <class... Parts>
testing::AssertionResult Has(std::string_view text, std::string_view part, const Parts&... more) {
  const bool has = text.find(part) != text.npos;
  if constexpr (sizeof...(more) > 0) {
    if (has) return Has(text, more...);
  }
  return (has ? testing::AssertionSuccess() : testing::AssertionFailure())
         << '"' << part << (has ? "\" is in " : "\" is not in ") << text;
}

inline int Count(std::string_view text, std::string_view part) {
  int count = 0;
  for (std::size_t at = 0; (at = text.find(part, at)) != text.npos; at += part.size()) ++count;
  return count;
}

/// The pieces between the delimiters.
inline std::vector<std::string> Split(const std::string& text, char delimiter) {
  std::vector<std::string> pieces;
  std::istringstream stream(text);
  for (std::string piece; std::getline(stream, piece, delimiter);) pieces.push_back(piece);
  return pieces;
}

/// How many milliseconds a call takes.
template <class Call>
std::uint64_t Took(Call call) {
  const auto start = CurrentClock().Milliseconds();
  call();
  return CurrentClock().Milliseconds() - start;
}

/// The text of the error that a call throws, behind its code if it has one.
template <class Call>
std::string ErrorOf(Call call) {
  try {
    call();
  } catch (const gps::Error& error) {
    return std::to_string(static_cast<int>(error.code())) + ' ' + error.what();
  } catch (const std::exception& error) {
    return error.what();
  }
  return "none";
}

/// Whether it comes to be so within some seconds.
template <class Condition>
bool Soon(Condition condition) {
  for (int i = 0; i < 2000 && !condition(); ++i) std::this_thread::sleep_for(std::chrono::milliseconds(5));
  return condition();
}

inline std::string ReadFile(const std::string& path) {
  std::ostringstream text;
  text << std::ifstream(path, std::ios::binary).rdbuf();
  return text.str();
}

inline void WriteFile(const std::string& path, std::string_view bytes) {
  std::ofstream(path, std::ios::binary) << bytes;
}

inline std::ptrdiff_t Entries(const char* folder) {
  return std::distance(std::filesystem::directory_iterator(folder), std::filesystem::directory_iterator());
}

/// A folder of the test's own, which goes with all that is in it.
class TemporaryFolder {
 public:
  TemporaryFolder() { std::filesystem::create_directories(path_); }
  ~TemporaryFolder() { std::filesystem::remove_all(path_); }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  std::string operator/(const std::string& name) const { return path_ / name; }
  const std::filesystem::path& Path() const { return path_; }

 private:
  static inline int s_folders = 0;
  const std::filesystem::path path_ =
      std::filesystem::temp_directory_path() /
      ("gpsengine-test-" + std::to_string(getpid()) + '-' + std::to_string(++s_folders));
};

/// A disk with room for that many bytes a file.
class SmallDisk {
 public:
  explicit SmallDisk(rlim_t nBytes) {
    std::signal(SIGXFSZ, SIG_IGN);
    getrlimit(RLIMIT_FSIZE, &m_Before);
    const rlimit limit{nBytes, m_Before.rlim_max};
    setrlimit(RLIMIT_FSIZE, &limit);
  }
  ~SmallDisk() { setrlimit(RLIMIT_FSIZE, &m_Before); }
  SmallDisk(const SmallDisk&) = delete;
  SmallDisk& operator=(const SmallDisk&) = delete;

 private:
  rlimit m_Before{};
};

/// Whether there is such a command of the shell.
inline bool HasTool(const std::string& command) {
  return std::system(("command -v " + command + " >/dev/null").c_str()) == 0;
}
