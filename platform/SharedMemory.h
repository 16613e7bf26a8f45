// Memory without a name that another program can be handed as a descriptor.
#pragma once

#include "platform/FileHandle.h"

#include <cstdint>
#include <span>

// Zeros; nobody can make it longer or shorter.
[[nodiscard]] ResultCode MakeSharedMemory(std::uint64_t sizeBytes, FileHandle& outMemory);
// A copy of the bytes that nobody can change.
[[nodiscard]] ResultCode ShareBytes(std::span<const std::uint8_t> bytes, FileHandle& outMemory);
