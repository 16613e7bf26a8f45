// The numbers of what windows tell each other.
#pragma once

#include <cstdint>

inline constexpr std::uint32_t WM_SCAN_DONE = 0x401;
inline constexpr std::uint32_t WM_SEARCH_DONE = 0x402;
inline constexpr std::uint32_t WM_SHOW_PREVIEW = 0x403;  // lParam: a CPreviewWnd
inline constexpr std::uint32_t WM_LANGUAGE_CHANGED = 0x406;
