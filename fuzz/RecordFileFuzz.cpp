// A store from an earlier run, all three files hostile: opened, asked everything, flushed. The input is the length of
// the _Relation file, that of the _DirInfo file, both 16 bits, then the files, the main one last.
#include "platform/ByteView.h"
#include "recovery/ScanLogDirectory.h"
#include "recovery/ScanRecordStore.h"
#include "tests/support/TempFolder.h"

#include <algorithm>
#include <cstdint>

namespace {

void AskEverything(ScanRecordStore& store)
{
    FileRecordList found;
    (void)store.SearchRecords(AllFilesPattern, found);
    (void)store.SearchRecords("*.jpg|*.png|", found);
    std::string path;
    for (std::size_t i = 0; i < std::min<std::size_t>(found.size(), 50); ++i) {
        (void)store.GetRecordPath(&found[i], path);
    }
    for (const std::uint64_t key :
         {std::uint64_t{0}, std::uint64_t{2}, ScanRecordStore::MakeKey(1, 3)}) {
        FileRecordList children;
        std::uint32_t count = 0;
        (void)store.ListChildren(key, children);
        (void)store.CountChildren(key, count);
    }
    FileRecord folder;
    (void)store.FindRecordByNode(3, folder);
    (void)store.FlushStore();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const DataFolder dataFolder;
    ScanLogDirectory::Instance().Reload();
    ScanLogDirectory::Instance().BeginNewLog();
    const std::filesystem::path folder = ScanLogDirectory::Instance().CurrentLogPath();
    std::filesystem::create_directories(folder);
    const ByteView input(data, size);
    const ByteView relation = input.Sub(4, input.U16(0));
    const ByteView dirInfo = input.Sub(4 + relation.Size(), input.U16(2));
    WriteFileBytes(folder / "Fast_", input.Sub(4 + relation.Size() + dirInfo.Size()).Span());
    WriteFileBytes(folder / "Fast__Relation", relation.Span());
    WriteFileBytes(folder / "Fast__DirInfo", dirInfo.Span());
    ScanRecordStore store;
    (void)store.OpenStore("Fast_");
    AskEverything(store);
    return 0;
}
