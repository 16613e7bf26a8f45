#include "recovery/RelationText.h"
#include "recovery/ScanLogDirectory.h"
#include "tests/recovery/StoreFixture.h"

#include <atomic>
#include <thread>

namespace {

using ScanRecordStoreTest = StoreFixture;
using NameList = std::vector<std::string>;
using Relation = std::map<std::uint64_t, std::vector<std::uint32_t>>;

TEST_F(ScanRecordStoreTest, ARecordIsLaidOutAsTheFormatSays)
{
    AddFile("a name that was here before.jpg");
    ASSERT_EQ(m_store->FlushStore(), ResultSuccess);
    FileRecord& record = m_store->ReserveRecord();
    record.DriveLetter = 0x3E9;
    record.EngineKind = EngineKindCarved;
    record.HeadIntact = 1;
    record.RecordNumber = 2;
    record.NodeId = 0x01020304;
    record.ClusterBytes = NoClusterBytes;
    record.CreationTime = 0x1111111111111111;
    record.AccessTime = 0x2222222222222222;
    record.WriteTime = 0x3333333333333333;
    record.FileSize = 0x0102030405060708;
    record.DataStart = 5;
    record.EntrySector = 6;
    record.PartitionStart = 7;
    record.SetName("x.png");
    ASSERT_EQ(m_store->FlushStore(), ResultSuccess);
    const ByteVector file = ReadFileBytes(FilePath());
    ASSERT_EQ(file.size(), 2u * 346);
    EXPECT_EQ(
        ByteVector(file.begin() + 346, file.end()),
        Bytes("E9 03 04 00 00 00 00*8 01 00 00 00 02 00 00 00 04 03 02 01 FF FF FF FF "
              "11*8 22*8 33*8 08 07 06 05 04 03 02 01 05 00*7 06 00*7 07 00*7 'x.png' 00*255"));
}

TEST_F(ScanRecordStoreTest, The201stRecordWritesTheFirst200)
{
    for (int i = 0; i < 200; ++i) {
        AddFile("a.txt");
    }
    EXPECT_EQ(std::filesystem::file_size(FilePath()), 0u);
    AddFile("b.txt");
    EXPECT_EQ(std::filesystem::file_size(FilePath()), 69200u);
    EXPECT_EQ(Search("*.txt|").size(), 201u) << "a search sees what was in the buffer";
}

TEST_F(ScanRecordStoreTest, ReopenedItKeepsEveryFileByteForByteAndCountsAnew)
{
    AddFolder("Folder", 9);
    AddFile("in.txt", 9, 1);
    AddFile("root.txt");
    ASSERT_EQ(Reopen(), ResultSuccess);
    const std::string relation = TextOf("_Relation");
    const ByteVector records = ReadFileBytes(FilePath());
    EXPECT_EQ(relation, " | 2 - [1,3] | 4294967305 - [2]");
    EXPECT_EQ(m_store->GetRecordCount(), 0u);
    EXPECT_EQ(PathOf(2), "Folder\\");
    ASSERT_EQ(Reopen(), ResultSuccess);
    EXPECT_EQ(TextOf("_Relation"), relation);
    EXPECT_EQ(ReadFileBytes(FilePath()), records);
    // Numbers begin again while the file goes on; the search finds all, a number names the older record.
    EXPECT_EQ(AddFile("later.txt"), 1u);
    EXPECT_EQ(Search("*.txt|"), (NameList{"in.txt", "later.txt", "root.txt"}));
    FileRecordList children;
    EXPECT_EQ(ListChildren(2, children), ResultSuccess);
    EXPECT_EQ(Names(children), (NameList{"root.txt", "Folder", "Folder"}));
}

TEST_F(ScanRecordStoreTest, ATornLastRecordIsDropped)
{
    AddFile("first.txt");
    AddFile("second.txt");
    m_store.reset();
    const ByteVector whole = ReadFileBytes(FilePath());
    for (const std::size_t size : {std::size_t{346} + 1, std::size_t{346} * 2 - 1}) {
        WriteFileBytes(FilePath(), std::span(whole).first(size));
        ASSERT_EQ(Reopen(), ResultSuccess);
        AddFile("third.txt");
        EXPECT_EQ(Search("*.txt|"), (NameList{"first.txt", "third.txt"})) << size;
    }
}

TEST_F(ScanRecordStoreTest, AnEmptyScanLeavesThreeEmptyFiles)
{
    ASSERT_EQ(Reopen(), ResultSuccess);
    for (const char* suffix : {"", "_Relation", "_DirInfo"}) {
        EXPECT_EQ(std::filesystem::file_size(FilePath(suffix)), 0u) << suffix;
    }
    FileRecordList records;
    std::uint32_t count = 9;
    EXPECT_EQ(ListChildren(0, records), ResultSuccess);
    EXPECT_EQ(CountChildren(0, count), ResultSuccess);
    EXPECT_EQ(count, 0u);
}

TEST_F(ScanRecordStoreTest, AskingForAMissingFolderIsWrittenAndReadBackAsNumberZero)
{
    AddFile("a.txt");
    FileRecordList records;
    EXPECT_EQ(ListChildren(77, records), ResultSuccess);
    ASSERT_EQ(Reopen(), ResultSuccess);
    EXPECT_EQ(TextOf("_Relation"), " | 2 - [1] | 77 - []");
    EXPECT_EQ(ListChildren(77, records), ResultNegativeSeek);
    EXPECT_TRUE(records.empty());
    ASSERT_EQ(m_store->FlushStore(), ResultSuccess);
}

TEST_F(ScanRecordStoreTest, AStoreThatCannotBeOpenedTakesRecordsAndFindsNone)
{
    m_store.reset();
    std::filesystem::remove(FilePath());
    std::filesystem::create_directories(FilePath());
    EXPECT_NE(Reopen(), ResultSuccess);
    for (int i = 0; i < 500; ++i) {
        AddFile("a.txt");
    }
    EXPECT_NE(m_store->FlushStore(), ResultSuccess);
    EXPECT_EQ(m_store->GetRecordCount(), 500u);
    ScanRecordStore neverOpened;
    (void)neverOpened.ReserveRecord();
    ScanRecordReader reader(neverOpened);
    EXPECT_EQ(reader.SearchRecords("*.txt|", {}, [](const FileRecord&, std::uint32_t) {}), 0);
    FileRecord found;
    EXPECT_EQ(reader.FindRecordByNode(1, found), ResultInvalidParameter);
}

TEST_F(ScanRecordStoreTest, WithoutTheFolderNamesFilesAreStillFound)
{
    AddFolder("Folder", 9);
    AddFile("in.txt", 9, 1);
    m_store.reset();
    std::filesystem::remove(FilePath("_DirInfo"));
    std::filesystem::create_directories(FilePath("_DirInfo"));
    ASSERT_EQ(Reopen(), ResultSuccess);
    EXPECT_EQ(Search("*.txt|"), (NameList{"in.txt"}));
    EXPECT_EQ(PathOf(2), "Folder\\") << "by the folder's own record";
}

TEST_F(ScanRecordStoreTest, AThreadSeesWholeRecordsInTheirOrderWhileAnotherWrites)
{
    constexpr std::uint32_t Files = 5000;
    std::atomic<bool> done = false;
    std::thread writer([&] {
        for (std::uint32_t i = 0; i < Files; ++i) {
            AddFile(std::to_string(i) + ".txt");
        }
        (void)m_store->FlushStore();
        done = true;
    });
    ScanRecordReader reader(*m_store);
    std::uint32_t seen = 0;
    for (bool last = false; !last;) {
        last = done;
        std::uint32_t count = 0;
        EXPECT_EQ(reader.SearchRecords(AllFilesPattern, {},
                                       [&](const FileRecord& record, std::uint32_t place) {
                                           EXPECT_EQ(record.NameText(),
                                                     std::to_string(place - 1) + ".txt");
                                           ++count;
                                       }),
                  1);
        EXPECT_GE(count, seen);
        seen = count;
        FileRecordList children;
        std::vector<std::uint64_t> missing;
        (void)reader.ListChildren(2, children, missing);  // up to a number that is not written yet
    }
    writer.join();
    EXPECT_EQ(seen, Files);
}

TEST(RelationText, HostileTextIsReadAsFarAsItGoes)
{
    const std::pair<std::string, Relation> cases[] = {
        {"", {}},
        {" | 5 - [1,2,3] | 4294967305 - [7]", {{5, {1, 2, 3}}, {4294967305, {7}}}},
        {" | 5 - []", {{5, {0}}}},
        {" | 5 - [1,,2]", {{5, {1, 0, 2}}}},
        {" | 5 - [1,2", {{5, {1}}}},  // the last number is not finished
        {" | 5 - [", {{5, {}}}},
        {" | 5 - ", {}},
        {" | 5", {}},
        {" | x - [1]", {{0, {1}}}},
        {"junk | 5 - [1]junk | 6 - [2]", {{5, {1}}, {6, {2}}}},
        {" | 5 - [1] | 5 - [2]", {{5, {2}}}},  // the later list stands
        {" | 5 | 6 - [1]", {{5, {1}}}},        // the list is the next one, wherever it is
        {" | 18446744073709551615 - [4294967295]", {{UINT64_MAX, {UINT32_MAX}}}},
    };
    for (const auto& [text, expected] : cases) {
        EXPECT_EQ(ParseRelationText(text), expected) << text;
    }
}

TEST(ScanLogDirectory, EachNewLogHasAnEmptyFolderOfItsOwn)
{
    const DataFolder data;
    ScanLogDirectory directory;
    EXPECT_EQ(directory.Root(), data.Path() / "OrvantaLumivault/ScanLog");
    std::filesystem::create_directories(directory.Root() / "2");
    WriteFileBytes(directory.Root() / "2/left over", {});
    const std::filesystem::path first = directory.BeginNewLog();
    EXPECT_EQ(first, directory.Root() / "1");
    directory.UndoLogNumber(first);
    EXPECT_EQ(directory.BeginNewLog(), first);
    EXPECT_EQ(directory.BeginNewLog(), directory.Root() / "2");
    directory.UndoLogNumber(first);
    EXPECT_EQ(directory.BeginNewLog(), directory.Root() / "3") << "only the last one is taken back";
    EXPECT_FALSE(std::filesystem::exists(directory.Root() / "2/left over"));
}

}  // namespace
