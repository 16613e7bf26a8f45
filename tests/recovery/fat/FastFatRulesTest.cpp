// Rules and limits of the quick FAT engine that real volumes do not show, and volumes that are made to mislead.
#include "recovery/fat/FastFatRecovery.h"
#include "tests/recovery/fat/SmallFat.h"
#include "tests/support/FailingReader.h"
#include "tests/support/Pictures.h"

#include <gtest/gtest.h>

namespace {

constexpr std::uint8_t File = 0x20;
constexpr std::uint8_t Folder = 0x10;
constexpr std::uint8_t Label = 0x08;

class FastFatRulesTest : public testing::Test
{
protected:
    // Name and folder of each found file, sorted: "folder/name folder/name".
    std::string Found()
    {
        WriteFileBytes(m_folder / "small.img", m_fat.bytes);
        // The FAT is read where a window of 16 MiB fits before the source's end.
        std::filesystem::resize_file(m_folder / "small.img", 17 * 1024 * 1024);
        EXPECT_EQ(m_engine.OpenImageFile(m_folder / "small.img", 1001), ResultSuccess);
        EXPECT_EQ(m_engine.Scan(nullptr), ResultSuccess);
        EXPECT_EQ(m_engine.SearchRecords(AllFilesPattern, m_records), 1);
        std::string text;
        for (const FileRecord& record : m_records) {
            std::string path;
            EXPECT_EQ(m_engine.GetRecordPath(&record, path), ResultSuccess);
            text += (text.empty() ? "" : " ") + path + std::string(record.NameText());
        }
        return text;
    }

    DataFolder m_data;
    TempFolder m_folder;
    SmallFat m_fat;
    CFastFatRecovery m_engine{OpenLog()};
    FileRecordList m_records;
};

TEST_F(FastFatRulesTest, ARootChainInARingIsReadOnce)
{
    m_fat.SetFat(2, 5);
    m_fat.SetFat(5, 2);
    for (std::size_t i = 0; i < 16; ++i) {
        m_fat.Entry(2, i, "A       TXT", File, 9, 4, true);
        m_fat.Entry(5, i, "B       TXT", File, 9, 4, true);
    }
    Found();
    EXPECT_EQ(m_records.size(), 32u);
}

TEST_F(FastFatRulesTest, FoldersThatContainEachOtherEndTheClimbAndThePath)
{
    m_fat.Entry(2, 0, "ONE        ", Folder, 3, 0);
    m_fat.DotEntries(3, 0);
    m_fat.Entry(3, 2, "TWO        ", Folder, 4, 0);
    m_fat.DotEntries(4, 3);
    m_fat.Entry(4, 2, "ONEAGAIN   ", Folder, 3,
                0);  // replaces the entry of folder 3: its parent is now its child
    m_fat.Entry(4, 3, "X       TXT", File, 9, 4, true);
    EXPECT_NE(Found().find("!.txt"), std::string::npos);
}

TEST_F(FastFatRulesTest, ASubFolderIsWalkedNoFurtherThanItsFirstCluster)
{
    m_fat.Entry(2, 0, "SUB        ", Folder, 3, 0);
    m_fat.DotEntries(3, 0);
    for (std::size_t i = 2; i < 16; ++i) {
        m_fat.Entry(3, i, "A       TXT", File, 9, 4, true);
    }
    m_fat.SetFat(3, 4);
    m_fat.SetFat(4, 0x0FFFFFFF);
    m_fat.Entry(4, 0, "B       TXT", File, 9, 4, true);
    Found();
    EXPECT_EQ(m_records.size(), 14u);
}

TEST_F(FastFatRulesTest, ALabelBetweenPiecesLeavesThemToTheNextName)
{
    m_fat.Piece(2, 0, 0x41, 'a');
    m_fat.Entry(2, 1, "LABEL      ", Label, 0, 0);
    m_fat.Piece(2, 2, 0x41, 'b');
    m_fat.Entry(2, 3, "B       TXT", File, 9, 4, true);
    EXPECT_EQ(Found(), std::string(13, 'b') + std::string(13, 'a'));
}

TEST_F(FastFatRulesTest, TheTwentiethPieceEndsTheFolder)
{
    // Deleted pieces escape the limit of eighteen that live ones have.
    for (std::size_t i = 0; i < 16; ++i) {
        m_fat.Piece(2, i, SmallFat::Deleted, 'a');
        m_fat.Piece(3, i, SmallFat::Deleted, 'b');
    }
    m_fat.SetFat(2, 3);
    m_fat.SetFat(3, 4);
    m_fat.Entry(4, 0, "LATER   TXT", File, 9, 4, true);
    EXPECT_EQ(Found(), "");
}

TEST_F(FastFatRulesTest, AWipedHighWordIsFoundByTheHead)
{
    // Cluster 0x10003 lies far outside, so the low word alone is left.
    m_fat.Entry(2, 0, "P       PNG", File, 3, 300, true);
    m_fat.PutCluster(3, MakePng(8, 8, 1));
    EXPECT_EQ(Found(), "!.png");
    EXPECT_EQ(std::uint32_t{m_records.at(0).NodeId}, 3u);
    EXPECT_EQ(std::uint32_t{m_records.at(0).HeadIntact}, 1u);
}

TEST_F(FastFatRulesTest, AReusedHeadHidesAPictureFromTheSearchButNotFromTheStore)
{
    m_fat.Entry(2, 0, "P       PNG", File, 3, 300, true);
    m_fat.Entry(2, 1, "D       XYZ", File, 3, 300, true);
    m_fat.PutCluster(3, Bytes("'no picture'"));
    EXPECT_EQ(Found(), "!.png !.xyz");
    FileRecordList shown;
    EXPECT_EQ(m_engine.SearchRecords("*.png|*.xyz|", shown), 1);
    ASSERT_EQ(shown.size(), 1u);
    EXPECT_EQ(shown[0].NameText(), "!.xyz");
}

TEST_F(FastFatRulesTest, AnUnreadableFolderIsDroppedAndTheScanGoesOn)
{
    m_fat.Entry(2, 0, "BAD        ", Folder, 3, 0);
    m_fat.Entry(2, 1, "GOOD       ", Folder, 4, 0);
    m_fat.DotEntries(3, 0);
    m_fat.Entry(3, 2, "A       TXT", File, 9, 4, true);
    m_fat.DotEntries(4, 0);
    m_fat.Entry(4, 2, "B       TXT", File, 9, 4, true);
    FailingReader failing;
    failing.FailSector(SmallFat::DataSector + 1);
    EXPECT_EQ(Found(), "good\\!.txt");
}

TEST_F(FastFatRulesTest, ACancelEndsTheScanAndWhatWasFoundStands)
{
    m_fat.Entry(2, 0, "D       TXT", File, 10, 5, true);
    struct Answer
    {
        std::int32_t stopAt = 0;
        std::vector<std::int32_t> seen;
    };
    const auto onScan = [](void* context, std::int32_t progress, auto, auto, auto, auto, auto,
                           auto) -> ResultCode {
        auto& answer = *static_cast<Answer*>(context);
        answer.seen.push_back(progress);
        return progress == answer.stopAt ? ResultCancelled : ResultSuccess;
    };
    (void)Found();
    const std::pair<std::int32_t, std::size_t> cases[] = {{1, 0}, {80, 1}, {100, 1}};
    for (const auto& [stopAt, found] : cases) {
        const DataFolder own;
        CFastFatRecovery engine(OpenLog());
        ASSERT_EQ(engine.OpenImageFile(m_folder / "small.img", 1001), ResultSuccess);
        Answer answer{stopAt, {}};
        engine.SetCallbacks(onScan, nullptr, &answer, 100);
        EXPECT_EQ(engine.Scan(nullptr), ResultCancelled) << stopAt;
        EXPECT_EQ(answer.seen.back(), stopAt) << "nothing is said behind the cancel";
        FileRecordList records;
        EXPECT_EQ(engine.SearchRecords(AllFilesPattern, records), 1);
        EXPECT_EQ(records.size(), found) << stopAt;
    }
}

struct Calls
{
    int count = 0;
    int stopAt = 0;
    ResultCode lastError = 0;
    std::int32_t lastPercent = 0;

    static ResultCode OnFile(void* context,
                             std::int32_t percent,
                             std::int32_t,
                             ResultCode error,
                             const std::filesystem::path&)
    {
        auto& calls = *static_cast<Calls*>(context);
        calls.lastError = error;
        calls.lastPercent = percent;
        return ++calls.count == calls.stopAt ? ResultCancelled : error;
    }
};

class FastFatRestoreTest : public FastFatRulesTest
{
protected:
    // A deleted file of three clusters and a bit.
    void SetUp() override
    {
        m_content = RandomBytes(3 * 512 + 100, 9);
        m_fat.Entry(2, 0, "D       XYZ", File, 10, static_cast<std::uint32_t>(m_content.size()),
                    true);
        m_fat.Put(SmallFat::Offset(10), m_content);
    }
    ResultCode Restore(Calls& calls)
    {
        m_engine.SetCallbacks(nullptr, &Calls::OnFile, &calls, 100);
        return m_engine.RestoreRecord(&m_records.at(0), m_folder / "out/file", 0);
    }
    ByteVector m_content;
};

TEST_F(FastFatRestoreTest, ReportsEachClusterAndKeepsWhatACancelLeaves)
{
    Found();
    Calls calls;
    EXPECT_EQ(Restore(calls), ResultSuccess);
    EXPECT_EQ(calls.count, 4);
    EXPECT_EQ(calls.lastPercent, 100);
    EXPECT_EQ(ReadFileBytes(m_folder / "out/file"), m_content);
    std::filesystem::remove(m_folder / "out/file");
    Calls cancelled{.stopAt = 2};
    EXPECT_EQ(Restore(cancelled), ResultCancelled);
    EXPECT_EQ(cancelled.count, 2) << "a cancel is not reported again";
    EXPECT_EQ(ReadFileBytes(m_folder / "out/file").size(), 1024u);
}

TEST_F(FastFatRestoreTest, AnUnreadableClusterEndsTheFileAndIsReported)
{
    Found();
    FailingReader failing;
    CFastFatRecovery fresh(OpenLog());
    ASSERT_EQ(fresh.OpenImageFile(m_folder / "small.img", 1001), ResultSuccess);
    failing.FailSector(SmallFat::DataSector + 10);  // the third cluster
    Calls calls;
    fresh.SetCallbacks(nullptr, &Calls::OnFile, &calls, 100);
    EXPECT_EQ(fresh.RestoreRecord(&m_records.at(0), m_folder / "out/file", 0), ResultReadFault);
    EXPECT_EQ(calls.lastError, ResultReadFault);
    EXPECT_EQ(ReadFileBytes(m_folder / "out/file").size(), 1024u);
}

TEST_F(FastFatRestoreTest, APreviewFillsTheBufferOrATemporaryFile)
{
    m_fat.Entry(2, 1, "P       PNG", File, 20, 300, true);
    const ByteVector png = MakePng(16, 16, 1);
    m_fat.PutCluster(20, png);
    Found();
    std::filesystem::path temporary;
    ByteVector buffer(700);
    std::uint32_t size = 700;
    ASSERT_EQ(
        m_engine.ReadRecordData(&m_records.at(1), temporary, buffer.data(), size, nullptr, nullptr),
        ResultSuccess);
    EXPECT_TRUE(temporary.empty());
    EXPECT_EQ(buffer, ByteVector(m_content.begin(), m_content.begin() + 700));
    ASSERT_EQ(
        m_engine.ReadRecordData(&m_records.at(0), temporary, buffer.data(), size, nullptr, nullptr),
        ResultSuccess);
    EXPECT_EQ(temporary.filename(), "tmp.jpg");
    EXPECT_EQ(size, 0u);
    EXPECT_EQ(ReadFileBytes(temporary).size(), 300u);
    EXPECT_EQ(m_engine.ReadRecordData(nullptr, temporary, nullptr, size, nullptr, nullptr),
              ResultInvalidParameter);
}

}  // namespace
