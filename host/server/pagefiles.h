#pragma once

#include <span>
#include <string_view>

namespace host {

/// A file of the live page, which is part of the program.
struct PageFile {
  const char* path;  ///< Under which a browser asks for it.
  const char* type;  ///< Its media type.
  std::string_view content;
};

/// All of them.
std::span<const PageFile> PageFiles();

}  // namespace host
