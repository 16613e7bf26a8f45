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
    : m_boundary(findBoundary),
      m_sectorSize(CarveContext::Instance().sectorSize),
      m_length(m_sectorSize),
      m_scanned(m_sectorSize),
      m_budget(m_sectorSize > 0 ? budgetBytes / m_sectorSize : 0)
{
    if (m_sectorSize > 0 && BlockBytes % static_cast<std::size_t>(m_sectorSize) != 0) {
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
    const std::uint64_t lba = context.startLba + 1 + static_cast<std::uint64_t>(m_sectorsRead);
    m_block = context.ReadSectors(lba, static_cast<std::int32_t>(sectorCount));
    context.window.pinned = true;
    if (m_block.Empty()) {
        return false;
    }
    m_searched.sectorSize = context.sectorSize;
    m_searched.startByte = lba * static_cast<std::uint64_t>(m_sectorSize);
    if (m_block.Size() == BlockBytes) {
        m_searched.bytes = m_block;
        m_searched.contents = context.source->OpenNumber();
        return true;
    }
    std::memcpy(PartialBlock().data(), m_block.Data(), m_block.Size());
    m_searched.bytes = ByteView(PartialBlock().data(), BlockBytes);
    m_searched.contents = 0;
    return true;
}

bool LengthScan::Report() const
{
    CarveContext& context = CarveContext::Instance();
    if (context.scanCallback == nullptr) {
        return true;
    }
    const std::uint64_t done = context.sectorsDone + static_cast<std::uint64_t>(m_sectorsRead);
    const std::uint64_t percent =
        context.sectorsTotal != 0 ? done * 100 / context.sectorsTotal + 10 : 10;
    context.lastCallbackResult = context.scanCallback(
        context.callbackContext, static_cast<std::int32_t>(percent), context.progressRange,
        context.secondsLeft, done, context.sectorsTotal, context.filesFound, 0);
    return context.lastCallbackResult == ResultSuccess;
}

bool LengthScan::NextBlock()
{
    if (m_stopped || m_sectorSize <= 0) {
        return false;
    }
    const auto before = static_cast<std::int64_t>(m_block.Size());
    m_length += before;
    m_scanned += before;
    const std::int64_t count = std::min(std::int64_t{BlockBytes} / m_sectorSize, m_budget);
    if (count <= 0 || !ReadBlock(count)) {
        return false;
    }
    m_sectorsRead += count;
    m_budget -= count;
    if (!Report()) {
        return false;
    }
    m_stopped = m_boundary(m_block, m_length);
    return true;
}
