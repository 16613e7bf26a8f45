// The first 16 KB of a target: recognition, and the geometry that the FAT engines take from what it lets through.
#include "recovery/metadata/FatGeometry.h"
#include "recovery/metadata/FileSystemRecognition.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const ByteView start(data, size);
    FatGeometry geometry;
    const ResultCode read = ReadFatGeometry(start, geometry);
    if (RecogniseFileSystem(start) == FileSystemKind::Fat && read != ResultSuccess) {
        std::abort();  // what is recognised can be opened
    }
    (void)geometry.SectorOfFolder(start.U32(44));
    return 0;
}
