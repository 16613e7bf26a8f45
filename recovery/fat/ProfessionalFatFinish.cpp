// The end of a pass for CProfessionalFatRecovery: files get their volume, and the folders that they need their records.
#include "recovery/fat/ProfessionalFatRecovery.h"

void CProfessionalFatRecovery::StoreFile(const FileRecord& file, const FatVolume& volume)
{
    const std::uint32_t parent = file.RecordNumber;
    FileRecord& record = Store->ReserveRecord();
    record = file;
    record.RecordNumber = Store->GetRecordCount();
    record.ClusterBytes = volume.SectorsPerCluster * static_cast<std::uint32_t>(BytesPerSector);
    record.DataStart = volume.DataStart;
    record.PartitionStart = volume.Base;
    Store->LinkRecord(parent, probe.CountDepth(volume, parent), record.RecordNumber);
    // Unlike a cluster's place, the sum here has 64 bits: cluster 1 lies out of reach.
    const std::uint64_t dataSector = volume.Base + volume.DataStart;
    const std::uint32_t offset = (record.NodeId - 2) * volume.SectorsPerCluster;
    const std::uint64_t lba = record.NodeId != 0 ? dataSector + offset : ClusterSector(volume, 0);
    record.HeadIntact = HeadFitsName(FirstSectors(), record.NameText(), lba) ? 1 : 0;
}

void CProfessionalFatRecovery::PlacePendingFiles()
{
    PendingFiles.PlaceExact(Volumes, [this](const FileRecord& file, const FatVolume& volume) {
        StoreFile(file, volume);
    });
}

// A folder whose entry was seen. Without a place in any volume its record stands, but no listing reaches it.
void CProfessionalFatRecovery::RecordKnownFolder(const FolderNode& node)
{
    const std::uint32_t parent = node.Record.RecordNumber;
    FileRecord& record = Store->ReserveRecord();
    record = node.Record;
    record.RecordNumber = Store->GetRecordCount();
    const FatVolume* volume =
        node.Volume.IsKnown() ? &node.Volume : Volumes.FindHolding(node.Record.EntrySector, parent);
    if (volume != nullptr) {
        Store->LinkFolder(parent, probe.CountDepth(*volume, parent), record.RecordNumber,
                          record.NodeId, record.NameText());
    }
}

// A folder known from its files' point of view only.
void CProfessionalFatRecovery::RecordLostFolder(std::uint32_t cluster, const FolderRef& reference)
{
    const FatVolume* volume = reference.Volume.IsKnown()
                                  ? &reference.Volume
                                  : Volumes.FindHolding(reference.Lba, cluster);
    if (volume == nullptr) {
        return;
    }
    std::uint32_t parent = RootCluster;
    (void)probe.FindParentCluster(*volume, cluster, &parent);  // the root where it cannot be told
    FileRecord& record = Store->ReserveRecord();
    record.HeadIntact = 1;
    record.IsFolder = 1;
    record.EngineKind = EngineKindProfessionalFat;
    record.DriveLetter = DriveLetter;
    record.NodeId = cluster;
    record.ClusterBytes = NoClusterBytes;
    record.RecordNumber = Store->GetRecordCount();
    record.SetName("LostFolder" + std::to_string(static_cast<std::int32_t>(cluster)));
    Store->LinkFolder(parent, probe.CountDepth(*volume, parent), record.RecordNumber, cluster,
                      record.NameText());
}

void CProfessionalFatRecovery::FinishAnalysis()
{
    ResolveStoredSectors();
    for (const auto& [cluster, reference] : ReferencedFolders) {
        const auto known = Folders.find(cluster);
        if (known != Folders.end()) {
            RecordKnownFolder(known->second);
        } else {
            RecordLostFolder(cluster, reference);
        }
    }
    ReferencedFolders.clear();
    Folders.clear();
    settled.clear();
    settledClusters.clear();
    PlacePendingFiles();
    PendingFiles.PlaceRest(
        [this](std::uint64_t lba) { return Volumes.FindNearest(lba); },
        [this](const FileRecord& file, const FatVolume& volume) { StoreFile(file, volume); });
    PendingFiles.Clear();
    NameCarries.Clear();
}
