#include "simulator/text.h"

#include <cstdarg>
#include <cstdio>

namespace simulator {

std::string Format(const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  const int length = std::vsnprintf(nullptr, 0, format, arguments);
  va_end(arguments);
  std::string text(length > 0 ? static_cast<std::size_t>(length) : 0, '\0');
  va_start(arguments, format);
  std::vsnprintf(text.data(), text.size() + 1, format, arguments);
  va_end(arguments);
  return text;
}

}  // namespace simulator
