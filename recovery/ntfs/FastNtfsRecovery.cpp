#include "recovery/ntfs/FastNtfsRecovery.h"

#include "recovery/ntfs/RunReader.h"

#include <array>
#include <utility>

namespace {

constexpr std::size_t BootBytes = 4096;

}  // namespace

// The boot sector is looked for by the drive's sector size; the size that it states itself counts from then on. The
// sectors of an image have 512 bytes whatever the volume has.
ResultCode CFastNtfsRecovery::Open(std::shared_ptr<ScanSource> source, char16_t driveLetter)
{
    if (m_isOpen) {
        return ResultSuccess;
    }
    m_volume.SectorCount = source->SectorCount();
    m_origin.DriveLetter = driveLetter;
    std::array<std::uint8_t, BootBytes> boot = {};
    if (const ResultCode result = source->ReadStart(boot.data(), BootBytes)) {
        return result;
    }
    m_volume.PartitionStart = source->StartLba();
    if (const ResultCode result = ReadNtfsVolume(ByteView(boot), m_volume)) {
        return result;
    }
    m_scanSource = std::move(source);
    m_source.Open(m_scanSource);
    m_readers.Bind();
    m_isOpen = true;
    return ResultSuccess;
}

ResultCode CFastNtfsRecovery::KeyOf(const FileRecord* parentRecord,
                                    std::uint32_t depth,
                                    KeyUse /*use*/,
                                    std::optional<std::uint64_t>* outKey) const
{
    if (parentRecord == nullptr && depth != 0) {
        return ResultInvalidParameter;
    }
    const std::uint32_t node = parentRecord != nullptr ? parentRecord->NodeId : 0;
    *outKey = MakeStoreKey(depth, node != 0 ? node : RootRecordNumber);
    return ResultSuccess;
}

std::unique_ptr<IRecordReader> CFastNtfsRecovery::MakeReader(const FileRecord& record)
{
    const std::uint64_t sector = record.EntrySector;
    RunReader::Data data;
    data.readResident = [this, sector](std::span<std::uint8_t> buffer) {
        std::uint32_t size = 0;
        return m_readers.ReadResidentData(sector, buffer, size);
    };
    data.readRuns = [this, sector](RunList& outRuns) {
        return m_readers.ReadAttributeRuns(sector, AttributeData, outRuns);
    };
    data.clearsPreviewPath = true;
    return std::make_unique<RunReader>(m_source, m_volume.BytesPerSector, record, std::move(data));
}

std::int32_t CFastNtfsRecovery::NextFreeRange(std::uint64_t& inOutSector, std::uint64_t& outLength)
{
    m_usedClusters.NextFreeRange(m_volume, inOutSector, outLength);
    return 1;
}

ResultCode CFastNtfsRecovery::BuildUsedClusterMap()
{
    if (!m_isOpen) {
        return ResultInvalidHandle;
    }
    Heartbeat heartbeat;
    return m_usedClusters.Build(m_readers, m_volume, m_source,
                                [&] { return ReportIfDue(heartbeat); });
}

ResultCode CFastNtfsRecovery::SetSearchCallback(SearchProgressCallback callback, void* context)
{
    (void)CStoreEngine::SetSearchCallback(callback, context);  // kept for the store to come
    return ResultSuccess;
}

std::optional<std::uint64_t> CFastNtfsRecovery::FirstDataSector(const FileRecord& record,
                                                                std::uint32_t sectorBytes)
{
    RunList runs;
    if (m_readers.ReadAttributeRuns(record.EntrySector, AttributeData, runs) != ResultSuccess ||
        runs.empty()) {
        return std::nullopt;
    }
    const auto lcn = static_cast<std::uint64_t>(runs.front().Offset);
    return SectorOfCluster(lcn, record.ClusterBytes, sectorBytes) + record.PartitionStart;
}
