#include "recovery/CopyScope.h"

#include <algorithm>
#include <cstring>

namespace {

thread_local CopyScope* currentScope = nullptr;

}  // namespace

CopyScope::CopyScope(bool fillsUnreadable)
    : m_outer(currentScope), m_fillsUnreadable(fillsUnreadable)
{
    currentScope = this;
}

CopyScope::~CopyScope()
{
    currentScope = m_outer;
}

CopyScope* CopyScope::Current()
{
    return currentScope;
}

void CopyScope::TakePiece(std::size_t count)
{
    for (const auto& [start, length] : m_holes) {
        m_filledBytes += start < count ? std::min(length, count - start) : 0;
    }
    m_holes.clear();
}

ResultCode ReadForCopy(SectorSource& source,
                       std::uint8_t* buffer,
                       std::int32_t sectorCount,
                       std::uint64_t lba,
                       std::int32_t sectorSize,
                       std::int32_t* outSectorsRead)
{
    CopyScope* const scope = CopyScope::Current();
    if (scope != nullptr) {
        scope->BeginPiece();
    }
    const ResultCode result =
        source.ReadSectors(buffer, sectorCount, lba, sectorSize, outSectorsRead);
    if (result != ResultReadFault || scope == nullptr || !scope->FillsUnreadable()) {
        return result;
    }
    const auto unit = static_cast<std::size_t>(sectorSize);
    for (std::int32_t sector = *outSectorsRead; sector < sectorCount; ++sector) {
        const std::size_t start = static_cast<std::size_t>(sector) * unit;
        std::int32_t got = 0;
        if (source.ReadSectors(buffer + start, 1, lba + static_cast<std::uint64_t>(sector),
                               sectorSize, &got) != ResultSuccess) {
            std::memset(buffer + start, 0, unit);
            scope->AddHole(start, unit);
        }
    }
    *outSectorsRead = sectorCount;
    return ResultSuccess;
}
