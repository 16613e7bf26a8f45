#include "recovery/metadata/FileSystemRecognition.h"

#include "recovery/metadata/BootSectors.h"

#include <bit>
#include <string_view>

namespace {

using namespace std::string_view_literals;

constexpr std::size_t ExtSuperblockOffset = 1024;

bool IsPowerOfTwoUpTo(std::uint32_t value, std::uint32_t largest)
{
    return value <= largest && std::has_single_bit(value);
}

// Volume encryption leaves a boot sector that looks like FAT.
bool IsEncryptedVolume(ByteView sector)
{
    constexpr std::string_view Trailer =
        "\x78\x78\x78\x78\x78\x78\x78\x78"
        "\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF"
        "\x00\x1F\x2C"sv;
    static_assert(Trailer.size() == 30);
    return sector.Matches(3, "-FVE-FS-") || sector.Matches(480, Trailer);
}

// What FAT12 and FAT16 fill in, or else what FAT32 does.
bool PassesFatTest(ByteView sector, const FatBootFields& boot)
{
    const bool plain = (boot.sectors16 != 0 || boot.sectors32 != 0) && boot.fatSectors16 != 0;
    const bool fat32 = HasFat32Mark(sector) && boot.sectors32 != 0 && boot.fatSectors32 != 0;
    return (plain || fat32) && boot.fatCount != 0 &&
           IsPowerOfTwoUpTo(boot.sectorsPerCluster, 128) && HasBootMark(sector);
}

}  // namespace

bool IsNtfsBootSector(ByteView sector)
{
    constexpr std::size_t ZeroBytes[] = {16, 17, 18, 19, 20, 22, 23, 32, 33, 34, 35};
    for (const std::size_t offset : ZeroBytes) {
        if (sector.U8(offset) != 0) {
            return false;
        }
    }
    // 128 is left out: the cluster size is read as a signed byte, which cannot hold it.
    const NtfsBootFields boot = ReadNtfsBootFields(sector);
    return HasNtfsName(sector) && boot.bytesPerSector % 512 == 0 && sector.U16(14) == 0 &&
           IsPowerOfTwoUpTo(boot.sectorsPerCluster, 64) && boot.sectors != 0 && HasBootMark(sector);
}

bool IsFatBootSector(ByteView sector)
{
    if (IsEncryptedVolume(sector)) {
        return false;
    }
    const FatBootFields boot = ReadFatBootFields(sector);
    const std::uint32_t totalSectors = boot.sectors32 != 0 ? boot.sectors32 : boot.sectors16;
    if (boot.bytesPerSector == 0 || boot.sectorsPerCluster == 0 || boot.bytesPerSector % 512 != 0) {
        return false;
    }
    // In 32 bits, wrap included: a total smaller than its areas passes or fails by what the wrap leaves.
    const std::uint32_t rootSectors = boot.rootEntries * 32 / boot.bytesPerSector;
    const std::uint32_t clusters =
        (totalSectors - boot.reservedSectors - boot.fatCount * boot.FatSectors() - rootSectors) /
        boot.sectorsPerCluster;
    constexpr std::uint32_t ClusterLimit = 0xFFFFFF0;
    return clusters < ClusterLimit && PassesFatTest(sector, boot);
}

bool IsExtSuperblock(ByteView superblock)
{
    const std::uint32_t inodes = superblock.U32(0);
    const std::uint32_t blocks = superblock.U32(4);
    const std::uint32_t firstBlock = superblock.U32(20);
    const std::uint32_t blocksPerGroup = superblock.U32(32);
    const std::uint32_t inodesPerGroup = superblock.U32(40);
    const std::uint32_t firstInode = superblock.U32(84);
    if (superblock.U16(56) != 0xEF53 || blocks == 0 || inodes == 0 || blocksPerGroup == 0 ||
        inodesPerGroup == 0 || firstInode <= 2 || inodes <= firstInode) {
        return false;
    }
    const std::uint32_t blockSize = std::uint32_t{1024} << (superblock.U32(24) % 32);
    const std::uint32_t groupsByBlocks = (blocks - firstBlock - 1) / blocksPerGroup + 1;
    const std::uint32_t groupsByInodes = (inodes - 1) / inodesPerGroup + 1;
    return groupsByBlocks == groupsByInodes && firstBlock == (blockSize == 1024 ? 1u : 0u);
}

FileSystemKind RecogniseFileSystem(ByteView start)
{
    const ByteView sector = start.Sub(0, 512);
    if (IsNtfsBootSector(sector)) {
        return FileSystemKind::Ntfs;
    }
    if (IsFatBootSector(sector)) {
        return FileSystemKind::Fat;
    }
    return IsExtSuperblock(start.Sub(ExtSuperblockOffset)) ? FileSystemKind::Ext
                                                           : FileSystemKind::Unknown;
}
