#include "storage/VolumeStamp.h"

#include "storage/ByteReader.h"

#include <vector>

namespace {

constexpr std::size_t StampedBytes = 1024 * 1024;
// FNV-1a, 64 bits wide.
constexpr std::uint64_t HashStart = 0xCBF29CE484222325;
constexpr std::uint64_t HashPrime = 0x100000001B3;

}  // namespace

std::uint64_t VolumeStamp(std::uint32_t diskNumber, std::uint64_t startLba)
{
    OpenedSource drive;
    if (OpenDriveSource(diskNumber, drive) != ResultSuccess) {
        return 0;
    }
    std::vector<std::uint8_t> bytes(StampedBytes);
    std::size_t got = 0;
    // A bad sector ends it; what is in front of it is stamped.
    (void)drive.reader->ReadAt(startLba * drive.sectorSize, bytes.data(), bytes.size(), &got);
    std::uint64_t stamp = got != 0 ? HashStart : 0;
    for (std::size_t i = 0; i < got; ++i) {
        stamp = (stamp ^ bytes[i]) * HashPrime;
    }
    return stamp;
}

ResultCode ImageTime(const std::filesystem::path& imagePath, std::uint64_t* outFileTime)
{
    FileHandle handle;
    if (const ResultCode result = handle.OpenForReading(imagePath)) {
        return result;
    }
    return handle.WriteTime(outFileTime);
}
