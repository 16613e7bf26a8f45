// A store from an earlier run, all three files hostile: opened, asked everything, flushed. The input is the length of
// the _Relation file, that of the _DirInfo file, both 16 bits, then the files, the main one last.
#include "platform/ByteView.h"
#include "recovery/ScanLogDirectory.h"
#include "recovery/ScanRecordReader.h"
#include "recovery/ScanRecordStore.h"
#include "tests/support/TempFolder.h"

#include <algorithm>
#include <cstdint>

namespace {

void AskEverything(ScanRecordStore& store)
{
    ScanRecordReader reader(store);
    FileRecordList found;
    for (const std::string_view pattern : {AllFilesPattern, std::string_view("*.jpg|*.png|")}) {
        (void)reader.SearchRecords(
            pattern, {}, [&](const FileRecord& record, std::uint32_t) { found.push_back(record); });
    }
    SortRecords(found);
    std::string path;
    for (std::size_t i = 0; i < std::min<std::size_t>(found.size(), 50); ++i) {
        (void)reader.GetRecordPath(&found[i], path);
    }
    for (const std::uint64_t key : {std::uint64_t{0}, std::uint64_t{2}, MakeStoreKey(1, 3)}) {
        FileRecordList children;
        std::uint32_t count = 0;
        std::vector<std::uint64_t> missing;
        (void)reader.ListChildren(key, children, missing);
        (void)reader.CountChildren(key, count, missing);
        store.EnterEmptyKeys(missing);
    }
    FileRecord folder;
    (void)reader.FindRecordByNode(3, folder);
    (void)store.FlushStore();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const DataFolder dataFolder;
    const std::filesystem::path folder = ScanLogDirectory().BeginNewLog();
    std::filesystem::create_directories(folder);
    const ByteView input(data, size);
    const ByteView relation = input.Sub(4, input.U16(0));
    const ByteView dirInfo = input.Sub(4 + relation.Size(), input.U16(2));
    WriteFileBytes(folder / "Fast_", input.Sub(4 + relation.Size() + dirInfo.Size()).Span());
    WriteFileBytes(folder / "Fast__Relation", relation.Span());
    WriteFileBytes(folder / "Fast__DirInfo", dirInfo.Span());
    ScanRecordStore store;
    (void)store.OpenStore(folder, "Fast_");
    AskEverything(store);
    return 0;
}
