// Which processes there are.
#pragma once

#include <cstdint>

// Of this one.
std::int32_t ProcessNumber();
// As many files as the system allows it may be open at once: a table of partitions can have hundreds of rows.
void RaiseOpenFileLimit();
// Also one of another user.
bool ProcessIsAlive(std::int32_t number);
