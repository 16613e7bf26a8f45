// avi and wav: "RIFF", the length of what follows, the kind at 8 and the first chunk's name at 12.
#include "platform/ByteView.h"
#include "recovery/carving/CarveContext.h"
#include "recovery/carving/formats/Formats.h"

namespace {

constexpr std::int32_t SmallestSize = 16;
constexpr std::uint32_t ChunkHeadBytes = 8;

bool IsRiff(ByteView sector, std::string_view kindAndChunk)
{
    const bool kind = sector.Matches(8, kindAndChunk.substr(0, 4));
    return sector.Matches(0, "RIFF") && kind && sector.Matches(12, kindAndChunk.substr(4));
}

// In 32 bits on purpose: a claim of 0xFFFFFFF8 bytes makes a file of 0.
std::int64_t ClaimedLength(ByteView sector)
{
    return sector.U32(4) + ChunkHeadBytes;
}

}  // namespace

FileTypeId DetectAvi(const std::uint8_t* buffer, std::int32_t size)
{
    return IsRiff(ByteView(buffer, size), "AVI LIST") ? FileTypeId::Avi : FileTypeId::None;
}

std::int64_t LengthAvi(const std::uint8_t* buffer, std::int32_t size)
{
    if (buffer == nullptr || size < SmallestSize) {
        return CarveContext::Instance().sectorSize;
    }
    return ClaimedLength(ByteView(buffer, size));
}

FileTypeId DetectWav(const std::uint8_t* buffer, std::int32_t size)
{
    return IsRiff(ByteView(buffer, size), "WAVEfmt ") ? FileTypeId::Wav : FileTypeId::None;
}

std::int64_t LengthWav(const std::uint8_t* buffer, std::int32_t size)
{
    return ClaimedLength(ByteView(buffer, size));
}
