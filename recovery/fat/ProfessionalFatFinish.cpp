// The end of a pass for CProfessionalFatRecovery: files get their volume, and the folders that they need their records.
#include "recovery/fat/ProfessionalFatRecovery.h"

void CProfessionalFatRecovery::StoreFile(const FileRecord& file, const FatVolume& volume)
{
    const std::uint32_t parent = file.RecordNumber;
    FileRecord& record = m_store->ReserveRecord();
    record = file;
    record.RecordNumber = m_store->GetRecordCount();
    record.ClusterBytes = volume.SectorsPerCluster * static_cast<std::uint32_t>(m_bytesPerSector);
    record.DataStart = volume.DataStart;
    record.PartitionStart = volume.Base;
    m_store->LinkRecord(parent, m_probe.CountDepth(volume, parent), record.RecordNumber);
    // Unlike elsewhere in this volume, cluster 1 lies out of reach.
    const FatDataArea area = {volume.Base, volume.DataStart, volume.SectorsPerCluster};
    const std::uint64_t lba = SectorOfFatCluster(area, record.NodeId);
    record.HeadIntact = HeadFitsName(FirstSectors(), record.NameText(), lba) ? 1 : 0;
}

void CProfessionalFatRecovery::PlacePendingFiles()
{
    m_pendingFiles.PlaceExact(m_volumes, [this](const FileRecord& file, const FatVolume& volume) {
        StoreFile(file, volume);
    });
}

// A folder whose entry was seen. Without a place in any volume its record stands, but no listing reaches it.
void CProfessionalFatRecovery::RecordKnownFolder(const FolderNode& node)
{
    const std::uint32_t parent = node.Record.RecordNumber;
    FileRecord& record = m_store->ReserveRecord();
    record = node.Record;
    record.RecordNumber = m_store->GetRecordCount();
    const FatVolume* volume = node.Volume.IsKnown()
                                  ? &node.Volume
                                  : m_volumes.FindHolding(node.Record.EntrySector, parent);
    if (volume != nullptr) {
        m_store->LinkFolder(parent, m_probe.CountDepth(*volume, parent), record.RecordNumber,
                            record.NodeId, record.NameText());
    }
}

// A folder known from its files' point of view only.
void CProfessionalFatRecovery::RecordLostFolder(std::uint32_t cluster, const FolderRef& reference)
{
    const FatVolume* volume = reference.Volume.IsKnown()
                                  ? &reference.Volume
                                  : m_volumes.FindHolding(reference.Lba, cluster);
    if (volume == nullptr) {
        return;
    }
    std::uint32_t parent = m_rootCluster;
    (void)m_probe.FindParentCluster(*volume, cluster, &parent);  // the root where it cannot be told
    FileRecord& record = m_store->ReserveRecord();
    record.HeadIntact = 1;
    record.IsFolder = 1;
    record.EngineKind = EngineKindProfessionalFat;
    record.DriveLetter = m_driveLetter;
    record.NodeId = cluster;
    record.ClusterBytes = NoClusterBytes;
    record.RecordNumber = m_store->GetRecordCount();
    record.SetName("LostFolder" + std::to_string(static_cast<std::int32_t>(cluster)));
    m_store->LinkFolder(parent, m_probe.CountDepth(*volume, parent), record.RecordNumber, cluster,
                        record.NameText());
}

ResultCode CProfessionalFatRecovery::RecordFolders(const WorkReport& report)
{
    for (const auto& [cluster, reference] : m_referencedFolders) {
        if (const ResultCode answer = report()) {
            return answer;
        }
        const auto known = m_folders.find(cluster);
        if (known != m_folders.end()) {
            RecordKnownFolder(known->second);
        } else {
            RecordLostFolder(cluster, reference);
        }
    }
    m_referencedFolders.clear();
    m_folders.clear();
    m_settled.clear();
    return ResultSuccess;
}

// A list that is being placed cannot be left: after an answer that ends the work, its files are passed over.
ResultCode CProfessionalFatRecovery::PlaceLastFiles(const WorkReport& report)
{
    ResultCode answer = ResultSuccess;
    const auto place = [&](const FileRecord& file, const FatVolume& volume) {
        answer = answer != ResultSuccess ? answer : report();
        if (answer == ResultSuccess) {
            StoreFile(file, volume);
        }
    };
    m_pendingFiles.PlaceExact(m_volumes, place);
    m_pendingFiles.PlaceRest([this](std::uint64_t lba) { return m_volumes.FindNearest(lba); },
                             place);
    m_pendingFiles.Clear();
    m_nameCarries.Clear();
    return answer;
}

ResultCode CProfessionalFatRecovery::FinishAnalysis(const WorkReport& report)
{
    ResultCode result = ResolveStoredSectors(report);
    if (result == ResultSuccess) {
        result = RecordFolders(report);
    }
    return result == ResultSuccess ? PlaceLastFiles(report) : result;
}
