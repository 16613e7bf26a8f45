#include "recovery/fat/FastFatRecovery.h"

#include "recovery/fat/ClusterReader.h"

#include <array>
#include <utility>

namespace {

constexpr std::size_t BootBytes = 4096;

}  // namespace

ResultCode CFastFatRecovery::Open(std::shared_ptr<ScanSource> source, char16_t driveLetter)
{
    if (m_isOpen) {
        return ResultSuccess;
    }
    m_startLba = source->StartLba();
    m_sectorCount = source->SectorCount();
    m_driveLetter = driveLetter;
    std::array<std::uint8_t, BootBytes> bootSector = {};
    if (const ResultCode result = source->ReadStart(bootSector.data(), BootBytes)) {
        return result;
    }
    if (const ResultCode result = ReadFatGeometry(ByteView(bootSector), m_geometry)) {
        return result;
    }
    m_scanSource = std::move(source);
    m_source.Open(m_scanSource);
    m_table.Open(m_source, m_geometry, m_startLba + m_geometry.reservedSectors);
    m_folderDepth.Open(m_source, m_geometry, m_startLba);
    m_isOpen = true;
    return ResultSuccess;
}

ResultCode CFastFatRecovery::KeyOf(const FileRecord* parentRecord,
                                   std::uint32_t depth,
                                   KeyUse /*use*/,
                                   std::optional<std::uint64_t>* outKey) const
{
    if (parentRecord == nullptr && depth != 0) {
        return ResultInvalidParameter;
    }
    const std::uint32_t node = parentRecord != nullptr ? parentRecord->NodeId : 0;
    *outKey = MakeStoreKey(depth, node != 0 ? node : m_geometry.rootCluster);
    return ResultSuccess;
}

std::unique_ptr<IRecordReader> CFastFatRecovery::MakeReader(const FileRecord& record)
{
    return std::make_unique<ClusterReader>(
        m_source, m_geometry.sectorSize, record,
        [this](std::uint32_t cluster) { return m_table.NextCluster(cluster); });
}

std::int32_t CFastFatRecovery::NextFreeRange(std::uint64_t& inOutSector, std::uint64_t& outLength)
{
    m_usedClusters.NextFreeRange(inOutSector, outLength);
    return 1;
}

ResultCode CFastFatRecovery::BuildUsedClusterMap()
{
    if (!m_isOpen) {
        return ResultInvalidHandle;
    }
    Heartbeat heartbeat;
    return m_usedClusters.Build(m_table, m_geometry, m_sectorCount,
                                [&] { return ReportIfDue(heartbeat); });
}

ResultCode CFastFatRecovery::SetSearchCallback(SearchProgressCallback callback, void* context)
{
    (void)CStoreEngine::SetSearchCallback(callback, context);  // kept for the store to come
    return ResultSuccess;
}
