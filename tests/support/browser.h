#pragma once

#include <optional>

#include "tests/support/basics.h"

/// What a command of the shell prints; nothing if there is no such command.
inline std::optional<std::string> RunTool(const std::string& command, const std::string& arguments) {
  if (!HasTool(command)) return std::nullopt;
  const TemporaryFolder folder;
  const std::string output = folder / "output";
  if (std::system(("timeout 30 " + command + " " + arguments + " >" + output + " 2>/dev/null").c_str()) < 0)
    return std::nullopt;
  return ReadFile(output);
}

/// What a browser makes of a page; nothing if there is none.
inline std::optional<std::string> LookAtPage(const std::string& address) {
  const TemporaryFolder folder;
  return RunTool("chromium",
                 "--headless --no-sandbox --disable-gpu --no-first-run --disable-background-networking "
                 "--disable-component-update --disable-sync --dump-dom --user-data-dir=" +
                     (folder / "profile") + " '" + address + "'");
}
