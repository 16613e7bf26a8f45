// Records as the scan meets them, with a source behind them: the input stands at record 16 and on in an otherwise sound
// volume.
#include "fuzz/NtfsScanAll.h"
#include "tests/recovery/ntfs/NtfsImage.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    constexpr std::uint32_t First = 16;
    constexpr std::uint32_t Records = 32;
    NtfsImage image(128, Records);
    const std::size_t room = std::size_t{Records - First} * NtfsImage::RecordSize;
    image.PutBytes(NtfsImage::MftCluster + 2 * First, {data, std::min(size, room)});
    ScanAll(image.Bytes());
    return 0;
}
