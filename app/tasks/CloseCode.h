// What a window is closed with.
#pragma once

inline constexpr int CloseDone = 1;  // a task has run to its end, or the answer is yes
inline constexpr int CloseCancelled = 2;
inline constexpr int CloseFailed = 3;
