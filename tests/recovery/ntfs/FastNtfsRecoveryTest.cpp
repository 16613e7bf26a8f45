#include "recovery/ntfs/FastNtfsRecovery.h"

#include "storage/DriveRegistry.h"
#include "tests/recovery/ntfs/NtfsImage.h"
#include "tests/support/Bytes.h"
#include "tests/support/FailingReader.h"
#include "tests/support/TempFolder.h"

#include <gtest/gtest.h>

#include <map>
#include <string>

namespace {

constexpr std::uint32_t Deleted = 0;
constexpr std::uint32_t LiveFolder = 3;
constexpr std::uint32_t Sectors = 512;
constexpr std::uint32_t Records = 64;

class FastNtfsRecoveryTest : public testing::Test
{
protected:
    ResultCode Scan()
    {
        WriteFileBytes(m_folder / "volume.img", m_image.Bytes());
        const ResultCode opened = m_engine.OpenImageFile(m_folder / "volume.img", u'X');
        return opened != ResultSuccess ? opened : m_engine.Scan(nullptr);
    }

    // Every record below a folder, by its path; the tree that a user would see.
    std::map<std::string, FileRecord> Tree()
    {
        std::map<std::string, FileRecord> found;
        struct Item
        {
            FileRecord record;
            std::uint32_t depth;
            std::string path;
        };
        std::vector<Item> waiting = {{FileRecord(), 0, ""}};
        while (!waiting.empty()) {
            const Item item = waiting.back();
            waiting.pop_back();
            FileRecordList children;
            EXPECT_EQ(m_engine.ListChildren(&item.record, item.depth, children), ResultSuccess);
            for (const FileRecord& child : children) {
                const std::string path = item.path + std::string(child.NameText());
                found[path] = child;
                if (child.IsFolder != 0 && item.depth < 20) {
                    waiting.push_back({child, item.depth + 1, path + "/"});
                }
            }
        }
        return found;
    }

    std::string Paths()
    {
        std::string text;
        for (const auto& [path, record] : Tree()) {
            text += (text.empty() ? "" : " ") + path;
        }
        return text;
    }

    ByteVector Restored(const FileRecord& record, ResultCode expected = ResultSuccess)
    {
        const std::filesystem::path path = m_folder / "out";
        std::filesystem::remove(path);
        EXPECT_EQ(m_engine.RestoreRecord(&record, path, 0), expected);
        return ReadFileBytes(path);
    }

    TempFolder m_folder;
    DataFolder m_data;
    NtfsImage m_image{Sectors, Records};
    CFastNtfsRecovery m_engine{OpenLog()};
};

TEST_F(FastNtfsRecoveryTest, OnlyDeletedFilesAndTheFoldersAboveThemAreFound)
{
    const ByteVector value = Bytes("'hello'");
    m_image.Put(11, Deleted, {FileNameAttribute(5, u"system.txt")});
    m_image.Put(20, LiveFolder, {FileNameAttribute(5, u"top")});
    m_image.Put(21, LiveFolder, {FileNameAttribute(20, u"sub")});
    m_image.Put(22, 1, {FileNameAttribute(21, u"live.txt")});
    m_image.Put(23, 2, {FileNameAttribute(21, u"deleted folder")});
    m_image.Put(24, Deleted, {FileNameAttribute(21, u"gone.txt"), ResidentAttribute(0x80, value)});
    m_image.Put(25, Deleted, {FileNameAttribute(23, u"deep.txt")});
    m_image.Put(26, Deleted, {FileNameAttribute(27, u"reused.txt")});
    m_image.Put(27, 1, {FileNameAttribute(5, u"now a file")});
    m_image.Put(28, Deleted, {FileNameAttribute(60, u"wiped.txt")});
    m_image.Put(29, Deleted, {FileNameAttribute(0xFFFFFFFF, u"nowhere.txt")});
    m_image.Put(30, Deleted, {FileNameAttribute(6, u"under system.txt")});
    ASSERT_EQ(Scan(), ResultSuccess);
    EXPECT_EQ(Paths(),
              "LostFolder-1 LostFolder-1/nowhere.txt LostFolder27 LostFolder27/reused.txt "
              "LostFolder6 LostFolder6/under system.txt LostFolder60 LostFolder60/wiped.txt "
              "top top/sub top/sub/deleted folder top/sub/deleted folder/deep.txt "
              "top/sub/gone.txt");
    const FileRecord file = Tree()["top/sub/gone.txt"];
    EXPECT_EQ(std::uint32_t{file.NodeId}, 24U);
    EXPECT_EQ(std::uint64_t{file.EntrySector}, 16U + 48);
    EXPECT_EQ(std::uint64_t{file.FileSize}, 5U);
    EXPECT_EQ(std::uint32_t{file.ClusterBytes}, 512U);
    EXPECT_EQ(Restored(file), value);
    std::string path;
    EXPECT_EQ(m_engine.GetRecordPath(&file, path), ResultSuccess);
    EXPECT_EQ(path, "top\\sub\\");
}

TEST_F(FastNtfsRecoveryTest, ALaterNameCountsOnlyWhenItIsALongOne)
{
    const auto name = [](const char16_t* text, std::uint8_t space) {
        return FileNameAttribute(5, text, space);
    };
    m_image.Put(20, Deleted, {name(u"A~1.TXT", 2), name(u"long a.txt", 1)});
    m_image.Put(21, Deleted, {name(u"long b.txt", 1), name(u"B~1.TXT", 2), name(u"posix", 0)});
    m_image.Put(22, Deleted, {name(u"C.TXT", 2), name(u"both.txt", 3)});
    ASSERT_EQ(Scan(), ResultSuccess);
    EXPECT_EQ(Paths(), "C.TXT long a.txt long b.txt");
}

TEST_F(FastNtfsRecoveryTest, FoldersInRingsAreCountedOnceEach)
{
    m_image.Put(20, LiveFolder, {FileNameAttribute(21, u"a")});
    m_image.Put(21, LiveFolder, {FileNameAttribute(20, u"b")});
    m_image.Put(22, LiveFolder, {FileNameAttribute(20, u"tail")});
    m_image.Put(23, LiveFolder, {FileNameAttribute(23, u"self")});
    m_image.Put(30, Deleted, {FileNameAttribute(20, u"x.txt")});
    m_image.Put(31, Deleted, {FileNameAttribute(22, u"y.txt")});
    m_image.Put(32, Deleted, {FileNameAttribute(23, u"z.txt")});
    ASSERT_EQ(Scan(), ResultSuccess);
    const auto filesAt = [&](std::uint32_t node, std::uint32_t depth) {
        FileRecord parent;
        parent.NodeId = node;
        FileRecordList children;
        EXPECT_EQ(m_engine.ListChildren(&parent, depth, children), ResultSuccess);
        std::string names;
        for (const FileRecord& child : children) {
            names += std::string(child.NameText()) + " ";
        }
        return names;
    };
    EXPECT_EQ(filesAt(20, 2), "x.txt b tail ");
    EXPECT_EQ(filesAt(22, 3), "y.txt ");
    EXPECT_EQ(filesAt(23, 1), "z.txt self ");
    EXPECT_EQ(m_engine.GetRecordCount(), 7U);
}

TEST_F(FastNtfsRecoveryTest, BrokenRecordsCostNoOther)
{
    const std::vector<ByteVector> attributes = {FileNameAttribute(5, u"first.txt"),
                                                FileNameAttribute(5, u"second.txt")};
    const std::size_t second = 56 + attributes[0].size();
    for (const std::uint32_t number : {20U, 21U, 22U, 23U, 24U}) {
        m_image.Put(number, Deleted, attributes);
    }
    m_image.Poke(
        20, second + 4,
        static_cast<std::uint16_t>(-attributes[0].size()));  // a loop; the 4096th attribute ends it
    m_image.Poke(21, second + 4, 0x8000);                    // to before the record
    m_image.Poke(22, 56 + 4, 0);                             // ends at once: no name, no file
    m_image.Poke(23, 20, 0xFFF0);                            // past the bytes in use
    m_image.Poke(24, 24, 0xFFFF);                            // bytes in use far too many
    m_image.Put(Records - 1, Deleted, attributes);
    m_image.Poke(Records - 1, 24, 0xFFFF);
    // A name that is said to be longer than what is left of the chunk.
    m_image.Poke(Records - 1, second + 4, 0x7000);
    ASSERT_EQ(Scan(), ResultSuccess);
    FileRecordList found;
    EXPECT_EQ(m_engine.SearchRecords(AllFilesPattern, found), 1);
    std::multimap<std::uint32_t, std::string> names;
    for (const FileRecord& record : found) {
        names.emplace(std::uint32_t{record.NodeId}, record.NameText());
    }
    EXPECT_EQ(names,
              (std::multimap<std::uint32_t, std::string>{
                  {20, "first.txt"}, {21, "second.txt"}, {24, "second.txt"}, {63, "second.txt"}}));
}

TEST_F(FastNtfsRecoveryTest, RunsAreCopiedToTheirEnd)
{
    const ByteVector noise = RandomBytes(Sectors * 512, 3);
    m_image.PutBytes(200, {noise.data(), 100 * 512});
    const auto sectors = [&](std::size_t first, std::size_t count) {
        return ByteVector(noise.begin() + static_cast<long>(first * 512),
                          noise.begin() + static_cast<long>((first + count) * 512));
    };
    m_image.Put(20, Deleted,
                {FileNameAttribute(5, u"two"), RunsAttribute(0x80, {{2, 200}, {1, 10}}, 1500)});
    m_image.Put(21, Deleted,
                {FileNameAttribute(5, u"short"), RunsAttribute(0x80, {{1, 200}}, 5000)});
    m_image.Put(22, Deleted,
                {FileNameAttribute(5, u"sparse"), RunsAttribute(0x80, {{1, 205}, {2, 0}}, 1536)});
    m_image.Put(23, Deleted,
                {FileNameAttribute(5, u"tail"), RunsAttribute(0x80, {{1, 200}, {1, 1000}}, 300)});
    m_image.Put(24, Deleted, {FileNameAttribute(5, u"empty"), RunsAttribute(0x80, {{1, 5000}}, 0)});
    m_image.Put(25, Deleted,
                {FileNameAttribute(5, u"huge"),
                 RunsAttribute(0x80, {{0xFFFFFFFF, 200}}, std::uint64_t{1} << 50)});
    ASSERT_EQ(Scan(), ResultSuccess);
    std::map<std::string, FileRecord> tree = Tree();
    ByteVector two = sectors(0, 2);
    const ByteVector rest = sectors(10, 1);
    two.insert(two.end(), rest.begin(), rest.end());
    two.resize(1500);
    EXPECT_EQ(Restored(tree["two"]), two);
    EXPECT_EQ(Restored(tree["short"]), sectors(0, 1));
    ByteVector twice = sectors(5, 1);
    const ByteVector again = sectors(5, 2);
    twice.insert(twice.end(), again.begin(), again.end());
    EXPECT_EQ(Restored(tree["sparse"]), twice);
    // The bytes were all there, but a run after them cannot be read.
    ByteVector tail = sectors(0, 1);
    tail.resize(300);
    EXPECT_EQ(Restored(tree["tail"], ResultReadFault), tail);
    EXPECT_TRUE(Restored(tree["empty"]).empty());
    // Whole pieces of 64 KiB arrive until one crosses the end of the source.
    EXPECT_EQ(Restored(tree["huge"], ResultReadFault).size(), 2U * 65536);

    std::uint32_t size = 700;
    ByteVector buffer(1024, 0xEE);
    std::filesystem::path temp;
    EXPECT_EQ(m_engine.ReadRecordData(&tree["two"], temp, buffer.data(), size, nullptr, nullptr),
              0);
    EXPECT_TRUE(temp.empty());
    ASSERT_EQ(size, 700U);
    EXPECT_TRUE(std::equal(buffer.begin(), buffer.begin() + 700, two.begin()));
    EXPECT_EQ(buffer[700], 0xEE);
}

TEST_F(FastNtfsRecoveryTest, AttributeListsLeadToTheFirstExtentOnly)
{
    const ByteVector noise = RandomBytes(2048, 4);
    m_image.PutBytes(300, noise);
    ByteVector entries = ListEntry(0x30, 20);
    for (const std::uint64_t number : {40U, 41U}) {
        const ByteVector entry = ListEntry(0x80, number);
        entries.insert(entries.end(), entry.begin(), entry.end());
    }
    m_image.Put(20, Deleted, {ResidentAttribute(0x20, entries), FileNameAttribute(5, u"list")});
    m_image.Put(40, Deleted, {RunsAttribute(0x80, {{2, 300}}, 2048)});
    m_image.Put(41, Deleted, {RunsAttribute(0x80, {{2, 302}}, 0)});
    m_image.PutBytes(320, entries);
    m_image.Put(21, Deleted,
                {RunsAttribute(0x20, {{1, 320}}, 96), FileNameAttribute(5, u"far list")});
    ASSERT_EQ(Scan(), ResultSuccess);
    std::map<std::string, FileRecord> tree = Tree();
    EXPECT_EQ(tree.size(), 2U);
    // Neither has a data attribute that would tell the size.
    tree["list"].FileSize = 2048;
    tree["far list"].FileSize = 2048;
    EXPECT_EQ(Restored(tree["list"]), ByteVector(noise.begin(), noise.begin() + 1024));
    EXPECT_TRUE(Restored(tree["far list"]).empty());
}

struct HostileTable
{
    const char* name;
    std::vector<ByteVector> attributes;  // of record 0
    ResultCode scan;
    std::uint64_t found;

    friend std::ostream& operator<<(std::ostream& out, const HostileTable& value)
    {
        return out << value.name;
    }
};

class HostileTableTest : public FastNtfsRecoveryTest,
                         public testing::WithParamInterface<HostileTable>
{};

TEST_P(HostileTableTest, EndsInBoundedTime)
{
    m_image.Put(0, 1, GetParam().attributes);
    m_image.Put(20, Deleted,
                {FileNameAttribute(21, u"a.txt"), ResidentAttribute(0x80, Bytes("'x'"))});
    m_image.PutBytes(400, ListEntry(0x80, 0));
    EXPECT_EQ(Scan(), GetParam().scan);
    EXPECT_EQ(m_engine.GetRecordCount(), GetParam().found);
}

const RunList ManyTimesTheTable = [] {
    RunList runs(30, {Records * 2, 0});
    runs.front().Offset = NtfsImage::MftCluster;
    return runs;
}();

const HostileTable HostileTables[] = {
    {"NoData", {}, ResultSuccess, 0},
    {"ListOfItself", {ResidentAttribute(0x20, ListEntry(0x80, 0))}, ResultSuccess, 0},
    {"FarListOfItself", {RunsAttribute(0x20, {{1, 400}}, 32)}, ResultSuccess, 0},
    {"HugeFarList", {RunsAttribute(0x20, {{0xFFFFFFFF, 400}}, 32)}, ResultSuccess, 0},
    {"HugeRun", {RunsAttribute(0x80, {{0xFFFFFFFF, 16}}, 0)}, ResultInvalidParameter, 0},
    {"RunBehindTheEnd", {RunsAttribute(0x80, {{4, Sectors}}, 0)}, ResultInvalidParameter, 0},
    {"SameTableThirtyTimes", {RunsAttribute(0x80, ManyTimesTheTable, 0)}, ResultSuccess, 31},
};

INSTANTIATE_TEST_SUITE_P(Tables,
                         HostileTableTest,
                         testing::ValuesIn(HostileTables),
                         testing::PrintToStringParamName());

TEST_F(FastNtfsRecoveryTest, UnreadableSectorsCostTheirOwnFolder)
{
    m_image.Put(20, LiveFolder, {FileNameAttribute(5, u"folder")});
    m_image.Put(21, Deleted,
                {FileNameAttribute(20, u"a.txt"), RunsAttribute(0x80, {{3, 300}}, 1536)});
    ASSERT_EQ(Scan(), ResultSuccess);
    EXPECT_EQ(Paths(), "folder folder/a.txt");
    FailingReader fault;
    CFastNtfsRecovery second(OpenLog());
    ASSERT_EQ(second.OpenImageFile(m_folder / "volume.img", u'X'), ResultSuccess);
    ASSERT_EQ(second.Scan(nullptr), ResultSuccess);
    FileRecordList found;
    ASSERT_EQ(second.SearchRecords(AllFilesPattern, found), 1);
    fault.FailSector(301);
    EXPECT_EQ(second.RestoreRecord(&found.at(0), m_folder / "bad", 0), ResultReadFault);
    EXPECT_EQ(std::filesystem::file_size(m_folder / "bad"), 0U);
    fault.Heal();
    // The chunk that holds the table cannot be read: nothing more is found, and the scan says so.
    fault.FailSector(NtfsImage::MftCluster + 40);
    EXPECT_EQ(second.Scan(nullptr), ResultReadFault);
    EXPECT_EQ(second.GetRecordCount(), 0U);
}

TEST_F(FastNtfsRecoveryTest, BehindTheStartOfADriveListsGoAstray)
{
    constexpr std::uint64_t Start = 64;
    const ByteVector noise = RandomBytes(1024, 5);
    m_image.PutBytes(300, noise);
    m_image.Put(20, Deleted,
                {FileNameAttribute(5, u"plain"), RunsAttribute(0x80, {{2, 300}}, 1024)});
    m_image.Put(21, Deleted,
                {ResidentAttribute(0x20, ListEntry(0x80, 40)), FileNameAttribute(5, u"list")});
    m_image.Put(40, Deleted, {RunsAttribute(0x80, {{2, 300}}, 1024)});
    ByteVector disk(Start * 512);
    disk.insert(disk.end(), m_image.Bytes().begin(), m_image.Bytes().end());
    WriteFileBytes(m_folder / "disk", disk);
    const std::uint32_t number = DriveRegistry::Instance().NumberOf(m_folder / "disk");
    ASSERT_EQ(m_engine.OpenPartition(number, Start, Sectors, u'X'), ResultSuccess);
    ASSERT_EQ(m_engine.Scan(nullptr), ResultSuccess);
    std::map<std::string, FileRecord> tree = Tree();
    EXPECT_EQ(std::uint64_t{tree["plain"].EntrySector}, Start + 16 + 40);
    EXPECT_EQ(std::uint64_t{tree["plain"].PartitionStart}, Start);
    EXPECT_EQ(Restored(tree["plain"]), noise);
    tree["list"].FileSize = 1024;
    EXPECT_TRUE(Restored(tree["list"]).empty());
    DriveRegistry::Instance().Forget(number);
}

TEST_F(FastNtfsRecoveryTest, APreviewOfAPictureGoesToAFileThatAnErrorRemoves)
{
    m_image.Put(20, Deleted,
                {FileNameAttribute(5, u"good.jpg"), RunsAttribute(0x80, {{2, 300}}, 700)});
    m_image.Put(21, Deleted,
                {FileNameAttribute(5, u"bad.r"), RunsAttribute(0x80, {{2, Sectors}}, 700)});
    ASSERT_EQ(Scan(), ResultSuccess);
    std::map<std::string, FileRecord> tree = Tree();
    std::filesystem::path path;
    std::uint32_t size = 10;
    const auto preview = [&](const char* name) {
        return m_engine.ReadRecordData(&tree[name], path, nullptr, size, nullptr, nullptr);
    };
    // A picture whose head is gone is listed nowhere, but a record of it can still be asked for.
    FileRecordList all;
    EXPECT_EQ(m_engine.SearchRecords(AllFilesPattern, all), 1);
    for (const FileRecord& record : all) {
        tree[std::string(record.NameText())] = record;
    }
    EXPECT_EQ(preview("good.jpg"), ResultSuccess);
    EXPECT_EQ(path.filename(), "tmp.jpg");
    EXPECT_EQ(ReadFileBytes(path).size(), 700U);
    EXPECT_EQ(size, 0U);
    const std::filesystem::path clip = path.parent_path() / "tmp.avi";
    EXPECT_EQ(preview("bad.r"), ResultReadFault);
    EXPECT_TRUE(path.empty());
    EXPECT_FALSE(std::filesystem::exists(clip));
}

TEST_F(FastNtfsRecoveryTest, FreeRangesFollowTheBitmap)
{
    m_image.PutBytes(300, Bytes("FF 0F 00 F0 FF*59 7F"));
    m_image.Put(6, 1, {FileNameAttribute(5, u"$Bitmap"), RunsAttribute(0x80, {{1, 300}}, 64)});
    std::uint64_t sector = 7;
    std::uint64_t length = 9;
    EXPECT_EQ(m_engine.NextFreeRange(sector, length), 1);
    EXPECT_EQ(length, 0U);
    ASSERT_EQ(Scan(), ResultSuccess);
    sector = 7;
    EXPECT_EQ(m_engine.NextFreeRange(sector, length), 1);
    EXPECT_EQ(sector, 7U);
    EXPECT_EQ(length, Sectors * 0U);
    ASSERT_EQ(m_engine.BuildUsedClusterMap(), ResultSuccess);
    const std::uint64_t expected[][3] = {{0, 12, 16},   {14, 14, 14},  {28, 511, 1},
                                         {511, 511, 1}, {512, 512, 0}, {900, 512, 0}};
    for (const auto& [from, begin, count] : expected) {
        sector = from;
        EXPECT_EQ(m_engine.NextFreeRange(sector, length), 1);
        EXPECT_EQ(sector, begin) << from;
        EXPECT_EQ(length, count) << from;
    }
}

TEST_F(FastNtfsRecoveryTest, ABitmapLargerThanTheSourceIsRefused)
{
    m_image.Put(6, 1, {RunsAttribute(0x80, {{0xFFFFFFFF, 300}}, 64)});
    ASSERT_EQ(Scan(), ResultSuccess);
    EXPECT_EQ(m_engine.BuildUsedClusterMap(), ResultOutOfMemory);
    m_image.Put(6, 1, {});
}

TEST_F(FastNtfsRecoveryTest, ACallbackEndsTheScanWithItsAnswer)
{
    m_image.Put(20, Deleted, {FileNameAttribute(21, u"a.txt")});
    (void)m_engine.SetCallbacks([](void*, std::int32_t, std::int32_t, std::int32_t, std::uint64_t,
                                   std::uint64_t, std::uint64_t,
                                   std::uint32_t) -> ResultCode { return ResultCancelled; },
                                nullptr, nullptr, 100);
    EXPECT_EQ(Scan(), ResultCancelled);
    EXPECT_EQ(m_engine.GetRecordCount(), 1U);  // the folder pass was not reached
}

}  // namespace
