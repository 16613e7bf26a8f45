// The numbers of what windows tell each other.
#pragma once

#include <cstdint>

// NOLINTBEGIN(readability-identifier-naming): the names that window messages have everywhere
inline constexpr std::uint32_t WM_SCAN_DONE = 0x401;
inline constexpr std::uint32_t WM_SEARCH_DONE = 0x402;
inline constexpr std::uint32_t WM_SHOW_PREVIEW = 0x403;  // lParam: a CPreviewWnd
inline constexpr std::uint32_t WM_LANGUAGE_CHANGED = 0x406;
inline constexpr std::uint32_t WM_OPEN_IMAGES = 0x4F0;
// NOLINTEND(readability-identifier-naming)
