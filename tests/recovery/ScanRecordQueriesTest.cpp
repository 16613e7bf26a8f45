#include "tests/recovery/StoreFixture.h"

namespace {

using ScanRecordQueriesTest = StoreFixture;
using NameList = std::vector<std::string>;

TEST_F(ScanRecordQueriesTest, FilesStandBeforeFoldersInNameOrderWithoutCase)
{
    AddFolder("alpha", 10);
    for (const char* name :
         {"b.txt", "A.txt", "_.txt", "B2.txt", "\xC3\xA9.txt", "[.txt", "Z.txt"}) {
        AddFile(name);
    }
    AddFolder("Beta", 11);
    FileRecordList records;
    ASSERT_EQ(m_store->FlushStore(), ResultSuccess);
    ASSERT_EQ(ListChildren(2, records), ResultSuccess);
    // "[" and "_" come before letters, as those are compared in lower case; bytes above 0x7F come last.
    EXPECT_EQ(Names(records), (NameList{"[.txt", "_.txt", "A.txt", "b.txt", "B2.txt", "Z.txt",
                                        "\xC3\xA9.txt", "alpha", "Beta"}));
}

TEST_F(ScanRecordQueriesTest, PicturesWithoutAHeadAreHiddenButCounted)
{
    AddFile("good.jpg");
    AddFile("lost.jpg", 2, 0, false);
    AddFile("lost.jpe", 2, 0, false);  // a photo through "jpeg"
    AddFile("lost.", 2, 0, false);     // the empty extension is in every family
    AddFile("lost.wav", 2, 0, false);
    AddFile("lost", 2, 0, false);
    ASSERT_EQ(m_store->FlushStore(), ResultSuccess);
    FileRecordList records;
    std::uint32_t count = 0;
    ASSERT_EQ(ListChildren(2, records), ResultSuccess);
    EXPECT_EQ(Names(records), (NameList{"good.jpg", "lost", "lost.wav"}));
    ASSERT_EQ(CountChildren(2, count), ResultSuccess);
    EXPECT_EQ(count, 6u);
    EXPECT_EQ(Search("*.jpg|*.wav|"), (NameList{"good.jpg", "lost.wav"}));
    EXPECT_EQ(Search(AllFilesPattern).size(), 6u);
}

TEST_F(ScanRecordQueriesTest, TheSearchIsBySubstringOfThePattern)
{
    for (const char* name :
         {"a.jpg", "b.JPG", "c.jp", "d.p", "e.png", "f.", "plain", "g.jpg.txt"}) {
        AddFile(name);
    }
    AddFolder("folder.jpg", 10);
    EXPECT_EQ(Search("*.jpg|*.jpeg|"), (NameList{"a.jpg", "b.JPG", "c.jp", "d.p", "f."}));
    EXPECT_EQ(Search("\\.png|"), (NameList{"d.p", "e.png", "f."}));
    EXPECT_EQ(Search(""), (NameList{"f."}));
    // What comes after byte 4095 of the pattern is not looked at.
    const std::string filler(4090, '|');
    EXPECT_EQ(Search(filler + "*.txt"), (NameList{"f.", "g.jpg.txt"}));
    EXPECT_EQ(Search(filler + "|*.txt"), (NameList{"f."}));
}

struct SearchCalls
{
    std::vector<std::int32_t> percents;
    std::size_t stopAt = 99;
};

ResultCode OnSearch(SearchCalls& calls, std::int32_t percent)
{
    calls.percents.push_back(percent);
    return calls.percents.size() >= calls.stopAt ? ResultCancelled : ResultSuccess;
}

TEST_F(ScanRecordQueriesTest, TheSearchReportsEachBlockAndStopsWithWhatItHas)
{
    for (int i = 0; i < 500; ++i) {
        AddFile("a.txt");
    }
    SearchCalls calls;
    m_progress = [&](std::int32_t percent) { return OnSearch(calls, percent); };
    EXPECT_EQ(Search("*.txt|").size(), 500u);
    EXPECT_EQ(calls.percents, (std::vector<std::int32_t>{40, 80, 100}));
    calls = {{}, 2};
    EXPECT_EQ(Search("*.txt|").size(), 400u);
    EXPECT_EQ(calls.percents.size(), 2u);
}

TEST_F(ScanRecordQueriesTest, PathsGoFromTheOutermostFolderInwards)
{
    AddFile("root.txt");                                    // 1
    AddFolder("Outer", 10);                                 // 2
    AddFolder("Inner", 11, 10, 1);                          // 3
    const std::uint32_t file = AddFile("deep.txt", 11, 2);  // 4
    const std::uint32_t orphan = AddFile("orphan.txt", 500, 1);
    AddFolder("Found again", 11, 10, 1);  // the first name of a folder stands
    ASSERT_EQ(m_store->FlushStore(), ResultSuccess);
    EXPECT_EQ(PathOf(1), "");
    EXPECT_EQ(PathOf(2), "");
    EXPECT_EQ(PathOf(3), "Outer\\");
    EXPECT_EQ(PathOf(file), "Outer\\Inner\\");
    EXPECT_EQ(PathOf(orphan), "") << "its folder is known by number alone";
    EXPECT_EQ(PathOf(4000), "");
    std::string path;
    EXPECT_EQ(m_reader->GetRecordPath(nullptr, path), ResultInvalidParameter);
    FileRecord found;
    EXPECT_EQ(m_reader->FindRecordByNode(11, found), ResultSuccess);
    EXPECT_EQ(found.NameText(), "Inner");
    EXPECT_EQ(m_reader->FindRecordByNode(500, found), ResultInvalidParameter);
}

TEST_F(ScanRecordQueriesTest, FoldersThatContainEachOtherEndTheirPath)
{
    AddFile("root.txt");           // the lowest key
    AddFolder("Egg", 20, 21, 1);   // 2: in Hen
    AddFolder("Hen", 21, 20, 1);   // 3: in Egg
    AddFolder("Self", 22, 22, 1);  // 4
    const std::uint32_t file = AddFile("a.txt", 20, 2);
    const std::uint32_t own = AddFile("b.txt", 22, 2);
    ASSERT_EQ(m_store->FlushStore(), ResultSuccess);
    EXPECT_EQ(PathOf(file), "Hen\\Egg\\");
    EXPECT_EQ(PathOf(own), "Self\\");
    EXPECT_EQ(PathOf(4), "");
    std::uint32_t count = 0;
    EXPECT_EQ(CountChildren(MakeStoreKey(1, 20), count), ResultSuccess);
    EXPECT_EQ(count, 0u) << "the depth is a part of the key, so the walk ends";
}

TEST_F(ScanRecordQueriesTest, CountingWalksDownByDepth)
{
    AddFile("1.txt");
    AddFolder("A", 10);
    AddFile("2.txt", 10, 1);
    AddFolder("B", 11, 10, 1);
    AddFile("3.txt", 11, 2);
    AddFile("4.txt", 11, 2);
    AddFile("elsewhere.txt", 11, 5);  // the same folder number at another depth is another folder
    ASSERT_EQ(m_store->FlushStore(), ResultSuccess);
    const std::pair<std::uint64_t, std::uint32_t> cases[] = {
        {0, 4}, {2, 4}, {MakeStoreKey(1, 10), 3}, {MakeStoreKey(2, 11), 2}};
    for (const auto& [key, expected] : cases) {
        std::uint32_t count = 0;
        EXPECT_EQ(CountChildren(key, count), ResultSuccess);
        EXPECT_EQ(count, expected) << key;
    }
}

TEST_F(ScanRecordQueriesTest, SharedFoldersAreCountedOftenButWalkedOnce)
{
    // Two records of one folder in each of 31 levels: two to the power of 31 ways down.
    AddFile("root.txt", 1, 0);
    for (std::uint32_t depth = 0; depth < 31; ++depth) {
        AddFolder("A", 100 + depth, 99 + depth, depth);
        AddFolder("B", 100 + depth, 99 + depth, depth);
    }
    AddFile("a.txt", 130, 31);
    ASSERT_EQ(m_store->FlushStore(), ResultSuccess);
    std::uint32_t count = 0;
    EXPECT_EQ(CountChildren(99, count), ResultSuccess);
    EXPECT_EQ(count, 1u << 31);
}

TEST_F(ScanRecordQueriesTest, KeyZeroIsTheLowestKeyEvenWhenThatIsNoRoot)
{
    AddFolder("Folder", 50, 40, 3);
    const std::uint32_t file = AddFile("a.txt", 40, 3);
    AddFile("b.txt", 50, 4);
    ASSERT_EQ(m_store->FlushStore(), ResultSuccess);
    FileRecordList records;
    ASSERT_EQ(ListChildren(0, records), ResultSuccess);
    EXPECT_EQ(Names(records), (NameList{"a.txt", "Folder"}));
    EXPECT_EQ(PathOf(file), "");
}

TEST_F(ScanRecordQueriesTest, ANumberBehindTheFileIsAFaultAndWhatCameBeforeStays)
{
    AddFile("a.txt");
    m_store->LinkRecord(2, 0, 4000);
    AddFile("b.txt");
    ASSERT_EQ(m_store->FlushStore(), ResultSuccess);
    FileRecordList records;
    EXPECT_NE(ListChildren(2, records), ResultSuccess);
    EXPECT_EQ(Names(records), (NameList{"a.txt"}));
    std::uint32_t count = 0;
    EXPECT_NE(CountChildren(2, count), ResultSuccess);
    EXPECT_EQ(count, 1u);
}

}  // namespace
