// Compiles the library's decoder with an upper bound on each piece of memory: the packed pixels of a picture can be made to
// grow far beyond what its head says.
#include <cstddef>
#include <cstdlib>

namespace {

// The largest picture allowed, at four channels of 16 bits, and some more for its filter bytes.
constexpr std::size_t MaxPieceBytes = std::size_t{72} << 20;

void* TakeMemory(std::size_t size)
{
    return size <= MaxPieceBytes ? std::malloc(size) : nullptr;
}

void* ResizeMemory(void* memory, std::size_t size)
{
    return size <= MaxPieceBytes ? std::realloc(memory, size) : nullptr;
}

}  // namespace

#define STBI_MALLOC(size) TakeMemory(size)
#define STBI_REALLOC(memory, size) ResizeMemory(memory, size)
#define STBI_FREE(memory) std::free(memory)
#define STB_IMAGE_IMPLEMENTATION
#include "ui/package/StbImage.h"
