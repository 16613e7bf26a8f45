// Windows programs: "MZ", at 60 the offset of "PE" 00 00, and flags 22 bytes after that.
#include "platform/ByteView.h"
#include "recovery/carving/formats/Formats.h"

namespace {

constexpr std::int32_t SmallestSize = 512;
constexpr std::uint32_t LastPeOffset = 488;
constexpr std::uint32_t PeMark = 0x00004550;
constexpr std::uint16_t FlagExecutable = 0x0002;
constexpr std::uint16_t FlagSystem = 0x1000;
constexpr std::uint16_t FlagLibrary = 0x2000;

}  // namespace

FileTypeId DetectPe(const std::uint8_t* buffer, std::int32_t size)
{
    const ByteView sector(buffer, size);
    if (size < SmallestSize || !sector.Matches(0, "MZ")) {
        return FileTypeId::None;
    }
    const std::uint32_t peOffset = sector.U32(60);
    if (peOffset > LastPeOffset || sector.U32(peOffset) != PeMark) {
        return FileTypeId::None;
    }
    const std::uint16_t flags = sector.U16(peOffset + 22);
    if ((flags & FlagExecutable) == 0) {
        return FileTypeId::None;
    }
    if ((flags & FlagSystem) != 0) {
        return FileTypeId::Sys;
    }
    return (flags & FlagLibrary) != 0 ? FileTypeId::Dll : FileTypeId::Exe;
}
