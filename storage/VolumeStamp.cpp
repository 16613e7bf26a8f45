#include "storage/VolumeStamp.h"

#include "platform/FileHandle.h"

std::uint64_t VolumeStamp(std::uint32_t /*diskNumber*/, std::uint64_t /*startLba*/)
{
    return 0;  // as long as free space is not counted, every volume is taken for unchanged
}

ResultCode ImageTime(const std::filesystem::path& imagePath, std::uint64_t* outFileTime)
{
    FileHandle handle;
    if (const ResultCode result = handle.OpenForReading(imagePath)) {
        return result;
    }
    return handle.WriteTime(outFileTime);
}
