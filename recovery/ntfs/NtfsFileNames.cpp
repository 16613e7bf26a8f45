#include "recovery/ntfs/NtfsFileNames.h"

#include "recovery/metadata/NtfsAttributes.h"

FileRecord& MakeRecordFromFileName(ScanRecordStore& store,
                                   const NtfsRecordOrigin& origin,
                                   ByteView attribute,
                                   bool isFolder)
{
    FileRecord& record = store.ReserveRecord();
    record.RecordNumber = store.GetRecordCount();
    record.IsFolder = isFolder ? 1 : 0;
    record.HeadIntact = 1;
    record.EngineKind = origin.EngineKind;
    record.DriveLetter = origin.DriveLetter;
    record.ClusterBytes = NoClusterBytes;
    const NtfsFileNameFields fields = ReadFileNameFields(attribute);
    record.CreationTime = fields.creationTime;
    record.WriteTime = fields.writeTime;
    record.AccessTime = fields.accessTime;
    record.FileSize = fields.realSize;
    record.SetName(NameOfFileName(attribute));
    return record;
}

void MakeLostFolder(ScanRecordStore& store,
                    const NtfsRecordOrigin& origin,
                    std::uint32_t recordNumber,
                    std::uint32_t clusterBytes)
{
    FileRecord& record = store.ReserveRecord();
    record.RecordNumber = store.GetRecordCount();
    record.IsFolder = 1;
    record.HeadIntact = 1;
    record.EngineKind = origin.EngineKind;
    record.DriveLetter = origin.DriveLetter;
    record.ClusterBytes = clusterBytes;
    record.NodeId = recordNumber;
    // Numbers from 2^31 on show as negative ones.
    record.SetName("LostFolder" + std::to_string(static_cast<std::int32_t>(recordNumber)));
    store.LinkFolder(RootRecordNumber, 0, record.RecordNumber, record.NodeId, record.NameText());
}

bool UpdateFileSize(ByteView attribute, std::int64_t length, FileRecord& record)
{
    if (attribute.U8(AttributeNonResident) == 0) {
        if (!attribute.Covers(AttributeValueLength, sizeof(std::uint32_t))) {
            return false;
        }
        record.FileSize = attribute.U32(AttributeValueLength);
        return true;
    }
    if (length <= static_cast<std::int64_t>(AttributeRealSize)) {
        return true;
    }
    if (!attribute.Covers(AttributeRealSize, sizeof(std::uint64_t))) {
        return false;
    }
    record.FileSize = attribute.U64(AttributeRealSize);
    return true;
}
