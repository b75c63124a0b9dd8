#pragma once

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>
#include <string_view>

/// Whether the text has that part. What it is instead stands in the message.
inline testing::AssertionResult Has(std::string_view text, std::string_view part) {
  const bool has = text.find(part) != text.npos;
  return (has ? testing::AssertionSuccess() : testing::AssertionFailure())
         << '"' << part << (has ? "\" is in " : "\" is not in ") << text;
}

inline int Count(std::string_view text, std::string_view part) {
  int count = 0;
  for (std::size_t at = 0; (at = text.find(part, at)) != text.npos; at += part.size()) ++count;
  return count;
}

inline std::string ReadFile(const std::string& path) {
  std::ostringstream text;
  text << std::ifstream(path, std::ios::binary).rdbuf();
  return text.str();
}

inline void WriteFile(const std::string& path, std::string_view bytes) {
  std::ofstream(path, std::ios::binary) << bytes;
}
