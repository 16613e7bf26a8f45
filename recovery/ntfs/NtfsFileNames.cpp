#include "recovery/ntfs/NtfsFileNames.h"

#include "platform/Text.h"
#include "recovery/metadata/NtfsAttributes.h"

namespace {

std::size_t NameUnits(ByteView attribute)
{
    return attribute.U8(88);
}

}  // namespace

bool HasWholeName(ByteView attribute)
{
    return attribute.Covers(FileNameHeadBytes, 2 * NameUnits(attribute));
}

std::string NameOfFileName(ByteView attribute)
{
    std::u16string units(NameUnits(attribute), u'\0');
    for (std::size_t i = 0; i < units.size(); ++i) {
        units[i] = attribute.U16(FileNameHeadBytes + 2 * i);
    }
    return Utf16ToUtf8(UntilZero(units));
}

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
    record.CreationTime = attribute.U64(32);
    record.WriteTime = attribute.U64(40);
    record.AccessTime = attribute.U64(56);
    record.FileSize = attribute.U64(72);
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
