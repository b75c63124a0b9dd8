#pragma once

#include <cstdint>

#pragma GCC visibility push(default)

// Basic types and constants of the platform calls, with fixed widths.

using BYTE = std::uint8_t;      ///< Unsigned, 8 bits.
using WORD = std::uint16_t;     ///< Unsigned, 16 bits.
using DWORD = std::uint32_t;    ///< Unsigned, 32 bits.
using UINT = std::uint32_t;     ///< Unsigned, 32 bits.
using WCHAR = char16_t;         ///< A 16-bit character on every platform.
using WPARAM = std::uintptr_t;  ///< Message parameter: a number or a pointer.
using LPARAM = std::intptr_t;   ///< Message parameter: a number or a pointer.
using LRESULT = std::intptr_t;  ///< Result of a window procedure.

/// Identifies an event or an open serial port. Handles are never reused, so a late call on a closed handle
/// fails instead of reaching another object.
using HANDLE = void*;

/// Identifies a window. Like a HANDLE it is never reused.
using HWND = struct WindowName*;

inline const HANDLE INVALID_HANDLE_VALUE =
    reinterpret_cast<HANDLE>(~std::uintptr_t{0});  ///< Returned by calls that fail to open an object.

constexpr DWORD MAXDWORD = 0xFFFFFFFF;  ///< Maximum value.
constexpr DWORD INFINITE = 0xFFFFFFFF;  ///< No timeout.

#pragma GCC visibility pop
