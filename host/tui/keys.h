#pragma once

namespace host {

/// A key as a number: a character, or one of these.
namespace key {
constexpr int kRedraw = 12, kEnter = 13, kClear = 21, kEscape = 27, kBackspace = 127;
constexpr int kUp = 0x1000, kDown = 0x1001, kPageUp = 0x1002, kPageDown = 0x1003, kHome = 0x1004,
              kEnd = 0x1005, kHelp = 0x1006;
}  // namespace key

}  // namespace host
