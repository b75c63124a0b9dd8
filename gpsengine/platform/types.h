#pragma once

#include <cstdint>

#pragma GCC visibility push(default)

// The plain types and constants of the platform's calls, with the widths that their callers rely on.

using BYTE = std::uint8_t;      ///< 8 bits, no sign.
using WORD = std::uint16_t;     ///< 16 bits, no sign.
using DWORD = std::uint32_t;    ///< 32 bits, no sign.
using UINT = std::uint32_t;     ///< 32 bits, no sign.
using WCHAR = char16_t;         ///< One unit of text: 16 bits on every platform.
using WPARAM = std::uintptr_t;  ///< Of a message: a number or, for the library's own messages, a pointer.
using LPARAM = std::intptr_t;   ///< Of a message: a number or a pointer.
using LRESULT = std::intptr_t;  ///< What a window's procedure gives.

/// Names a kernel object of the platform layer: an event or an open serial line. A handle is a number that is
/// never given out twice, so that a late call on a closed handle fails instead of reaching another object.
using HANDLE = void*;

/// Names a window. Like a HANDLE it is never given out twice.
using HWND = struct WindowName*;

inline const HANDLE INVALID_HANDLE_VALUE = reinterpret_cast<HANDLE>(
    ~std::uintptr_t{0});  ///< No handle: what a call gives that could not open its object.

constexpr DWORD MAXDWORD = 0xFFFFFFFF;  ///< The largest one.
constexpr DWORD INFINITE = 0xFFFFFFFF;  ///< A wait without limit.

#pragma GCC visibility pop
