#include "recovery/fat/ProfessionalFatRecovery.h"

#include "recovery/fat/ClusterReader.h"
#include "storage/DiskGeometry.h"

#include <utility>

ResultCode CProfessionalFatRecovery::Open(std::shared_ptr<ScanSource> source, char16_t driveLetter)
{
    if (m_isOpen) {
        return ResultSuccess;
    }
    m_startLba = source->StartLba();
    m_driveLetter = driveLetter;
    m_bytesPerSector = static_cast<std::int32_t>(source->SectorSize());
    // Of a drive the whole disk's size by its geometry, not the target's, is what clusters are checked against.
    m_sectorCount =
        source->IsImage() ? source->TotalSectors() : GeometrySectors(source->TotalSectors());
    m_isOpen = true;
    m_lastResolved = {};
    m_lastPlaced = {};
    m_scanSource = std::move(source);
    m_source.Open(m_scanSource);
    return ResultSuccess;
}

void CProfessionalFatRecovery::ForgetPass()
{
    m_volumes.Clear(m_startLba);
    m_samples.Clear();
    m_pendingFiles.Clear();
    m_nameCarries.Clear();
    m_storedSectors.Clear();
    m_folders.clear();
    m_referencedFolders.clear();
    m_settled.clear();
    m_highWords.Clear();
    m_rootCluster = 2;
    m_probe.Open(m_source, m_bytesPerSector, m_startLba + m_sectorCount);
    m_probe.Clear(m_rootCluster);
}

ResultCode CProfessionalFatRecovery::OpenEmptiedStore(std::string_view logName)
{
    ForgetPass();
    return MakeStoreCut(logName, 0);
}

ResultCode CProfessionalFatRecovery::OpenRecordStore(std::string_view logName)
{
    ForgetPass();
    UseLogFolder();
    return MakeStore(!logName.empty() ? std::string(logName)
                                      : ScanRecordStore::MakeName("Pro_Fat_", m_startLba));
}

ResultCode CProfessionalFatRecovery::KeyOf(const FileRecord* parentRecord,
                                           std::uint32_t depth,
                                           KeyUse /*use*/,
                                           std::optional<std::uint64_t>* outKey) const
{
    if (!HasStore()) {
        return ResultSuccess;
    }
    if (parentRecord == nullptr && depth != 0) {
        return ResultInvalidParameter;
    }
    *outKey = MakeStoreKey(depth, parentRecord != nullptr ? parentRecord->NodeId : 0);
    return ResultSuccess;
}

std::unique_ptr<IRecordReader> CProfessionalFatRecovery::MakeReader(const FileRecord& record)
{
    return std::make_unique<ClusterReader>(m_source, m_bytesPerSector, record,
                                           [](std::uint32_t cluster) { return cluster + 1; });
}
