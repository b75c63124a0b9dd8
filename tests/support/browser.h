#pragma once

#include <cstdio>
#include <optional>

#include "tests/support/basics.h"

/// What a command of the shell prints; nothing if there is no such command.
inline std::optional<std::string> RunTool(const std::string& command, const std::string& arguments) {
  if (std::system(("command -v " + command + " >/dev/null").c_str()) != 0) return std::nullopt;
  FILE* pipe = popen(("timeout 30 " + command + " " + arguments + " 2>/dev/null").c_str(), "r");
  std::string output;
  char piece[4096];
  for (std::size_t count; (count = fread(piece, 1, sizeof piece, pipe)) > 0;) output.append(piece, count);
  pclose(pipe);
  return output;
}

/// What a browser makes of a page; nothing if there is none.
inline std::optional<std::string> LookAtPage(const std::string& address) {
  const std::string scratch = testing::TempDir() + "gpsengine-chromium-" + std::to_string(getpid());
  auto page = RunTool("chromium",
                      "--headless --no-sandbox --disable-gpu --no-first-run --disable-background-networking "
                      "--disable-component-update --disable-sync --dump-dom --user-data-dir=" +
                          scratch + " '" + address + "'");
  std::filesystem::remove_all(scratch);
  return page;
}
