#include "recovery/carving/LengthScan.h"

#include "recovery/carving/CarveContext.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace {

// Where blocks are put together that do not fill 64 KiB, for sector sizes that do not divide it. One per process, like
// the context.
std::array<std::uint8_t, LengthScan::BlockBytes>& PartialBlock()
{
    static std::array<std::uint8_t, LengthScan::BlockBytes> bytes{};
    return bytes;
}

}  // namespace

LengthScan::LengthScan(std::int64_t budgetBytes, BoundaryFunction findBoundary)
    : boundary(findBoundary),
      sectorSize(CarveContext::Instance().sectorSize),
      length(sectorSize),
      scanned(sectorSize),
      budget(sectorSize > 0 ? budgetBytes / sectorSize : 0)
{
    if (sectorSize > 0 && BlockBytes % static_cast<std::size_t>(sectorSize) != 0) {
        PartialBlock().fill(0);
    }
}

LengthScan::~LengthScan()
{
    CarveContext::Instance().window.pinned = false;
}

bool LengthScan::ReadBlock(std::int64_t sectorCount)
{
    CarveContext& context = CarveContext::Instance();
    context.window.pinned = false;
    const std::uint64_t lba = context.startLba + 1 + static_cast<std::uint64_t>(sectorsRead);
    block = context.ReadSectors(lba, static_cast<std::int32_t>(sectorCount));
    context.window.pinned = true;
    if (block.Empty()) {
        return false;
    }
    searched.sectorSize = context.sectorSize;
    searched.startByte = lba * static_cast<std::uint64_t>(sectorSize);
    if (block.Size() == BlockBytes) {
        searched.bytes = block;
        searched.contents = context.source->OpenNumber();
        return true;
    }
    std::memcpy(PartialBlock().data(), block.Data(), block.Size());
    searched.bytes = ByteView(PartialBlock().data(), BlockBytes);
    searched.contents = 0;
    return true;
}

bool LengthScan::Report() const
{
    CarveContext& context = CarveContext::Instance();
    if (context.scanCallback == nullptr) {
        return true;
    }
    const std::uint64_t done = context.sectorsDone + static_cast<std::uint64_t>(sectorsRead);
    const std::uint64_t percent =
        context.sectorsTotal != 0 ? done * 100 / context.sectorsTotal + 10 : 10;
    context.lastCallbackResult = context.scanCallback(
        context.callbackContext, static_cast<std::int32_t>(percent), context.progressRange,
        context.secondsLeft, done, context.sectorsTotal, context.filesFound, 0);
    return context.lastCallbackResult == ResultSuccess;
}

bool LengthScan::NextBlock()
{
    if (stopped || sectorSize <= 0) {
        return false;
    }
    const auto before = static_cast<std::int64_t>(block.Size());
    length += before;
    scanned += before;
    const std::int64_t count = std::min(std::int64_t{BlockBytes} / sectorSize, budget);
    if (count <= 0 || !ReadBlock(count)) {
        return false;
    }
    sectorsRead += count;
    budget -= count;
    if (!Report()) {
        return false;
    }
    stopped = boundary(block, length);
    return true;
}
