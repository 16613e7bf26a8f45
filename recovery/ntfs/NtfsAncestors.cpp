#include "recovery/ntfs/NtfsAncestors.h"

NtfsAncestors::NtfsAncestors(NtfsReaders& ntfsReaders) : m_readers(ntfsReaders) {}

void NtfsAncestors::Clear()
{
    FolderList.clear();
    m_depths.clear();
}

std::uint32_t NtfsAncestors::Resolve(std::uint32_t recordNumber)
{
    return CountLevels(recordNumber, m_depths, [this](std::uint32_t number) {
        FolderStep step;
        if (number != RootRecordNumber) {
            FolderList.push_back(number);
            const Parent parent = ReadParent(number);
            step = {true, parent.known, parent.number};
        }
        return step;
    });
}

NtfsAncestors::Parent NtfsAncestors::ReadParent(std::uint32_t recordNumber)
{
    RecordBuffer buffer;
    (void)m_readers.ReadFileRecord(recordNumber, buffer);  // what did not arrive breaks the chain
    const ByteView record = buffer.View();
    if (!HasFileMagic(record)) {
        return {};
    }
    (void)m_readers.Codec.ApplyFixups(buffer.bytes);  // cannot fail after the magic
    if ((FlagsOf(record) & RecordIsFolder) == 0) {
        return {};
    }
    AttributeWalk walk(record, BytesInUseOf(record), AncestorRules);
    while (walk.Next()) {
        if (walk.Type() == AttributeFileName) {
            const ByteView attribute = walk.Attribute();
            return {attribute.Covers(24, sizeof(std::uint32_t)), ParentOfFileName(attribute)};
        }
    }
    return {};
}
