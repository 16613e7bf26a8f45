#include "recovery/ntfs/NtfsAncestors.h"

NtfsAncestors::NtfsAncestors(NtfsReaders& ntfsReaders) : readers(ntfsReaders) {}

void NtfsAncestors::Clear()
{
    FolderList.clear();
    depths.clear();
}

std::uint32_t NtfsAncestors::Resolve(std::uint32_t recordNumber)
{
    // The chain up to the root, its break, a folder whose depth is known, or one of its own folders.
    const std::size_t first = FolderList.size();
    std::uint32_t base = 0;
    std::size_t ringBegin = SIZE_MAX;
    std::unordered_map<std::uint32_t, std::size_t> places;
    Parent next = {true, recordNumber};
    while (next.known && next.number != RootRecordNumber) {
        if (const auto known = depths.find(next.number); known != depths.end()) {
            base = known->second;
            break;
        }
        const auto [place, isNew] = places.try_emplace(next.number, FolderList.size());
        if (!isNew) {
            ringBegin = place->second;
            break;
        }
        FolderList.push_back(next.number);
        next = ReadParent(next.number);
    }
    for (std::size_t i = FolderList.size(); i > first; --i) {
        if (i > ringBegin) {
            depths[FolderList[i - 1]] = static_cast<std::uint32_t>(FolderList.size() - ringBegin);
            base = static_cast<std::uint32_t>(FolderList.size() - ringBegin);
        } else {
            depths[FolderList[i - 1]] = ++base;
        }
    }
    return base;
}

NtfsAncestors::Parent NtfsAncestors::ReadParent(std::uint32_t recordNumber)
{
    RecordBuffer buffer;
    (void)readers.ReadFileRecord(recordNumber, buffer);  // what did not arrive breaks the chain
    const ByteView record = buffer.View();
    if (!HasFileMagic(record)) {
        return {};
    }
    (void)readers.Codec.ApplyFixups(buffer.bytes);  // cannot fail behind the magic
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
