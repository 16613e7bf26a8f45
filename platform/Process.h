// Which processes there are.
#pragma once

#include <cstdint>

// Of this one.
std::int32_t ProcessNumber();
// Also one of another user.
bool ProcessIsAlive(std::int32_t number);
