#pragma once

#include <unistd.h>

#include <filesystem>
#include <string>

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
