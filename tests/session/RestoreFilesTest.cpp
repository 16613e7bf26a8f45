// What becomes of restored files when things go wrong around the engines, which do as they are told.
#include "session/RestoreFiles.h"

#include "platform/SystemFiles.h"
#include "session/Session.h"
#include "tests/support/Bytes.h"
#include "tests/support/FakeEngines.h"
#include "tests/support/MadeUpSystem.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

class RestoreFilesTest : public testing::Test
{
protected:
    RestoreFilesTest()
    {
        m_session.History().KeepRecordsIn(m_folder / "data");
        m_script.content = Bytes("'data'");
    }

    // A whole run of the program: the destination knows nothing of runs before.
    RestoreOutcome Restore(const RestoreOptions& options = {},
                           const std::function<void(const RestoreProgress&)>& onProgress = {})
    {
        ScanTarget target;
        target.imagePath = m_folder / "card.img";
        target.letter = ScanTarget::FirstImageId;
        const std::vector sources = {m_session.Open(target, ScanDepth::Deep).session};
        const std::vector<FoundRow> rows = sources[0]->Search(TypeFilter::All()).rows;
        Destination destination(m_folder / "out", Layout::ByCategory);
        EXPECT_EQ(destination.Make().fault, DestinationFault::None);
        m_files.clear();
        return RestoreFiles(sources, rows, destination,
                            {[&](const RestoreProgress& progress) {
                                 if (onProgress) {
                                     onProgress(progress);
                                 }
                                 return Answer::GoOn;
                             },
                             [this](ScanSession*, const FoundRow&, const FileOutcome& outcome) {
                                 m_files.push_back(outcome);
                             }},
                            options);
    }

    // Hidden ones too.
    std::vector<std::string> Names() const
    {
        std::vector<std::string> names;
        for (const auto& entry : fs::directory_iterator(m_folder / "out/photo")) {
            names.push_back(entry.path().filename());
        }
        std::sort(names.begin(), names.end());
        return names;
    }

    using Text = std::vector<std::string>;

    TempFolder m_folder;
    FakeScript m_script;
    Session m_session{std::make_shared<FakeEngines>(m_script)};
    std::vector<FileOutcome> m_files;
};

TEST_F(RestoreFilesTest, FewerBytesThanTheSizeAreNoSuccess)
{
    m_script.Add("short.jpg", 10);
    m_script.Add("whole.jpg", 4);
    m_script.Add("unread.jpg", 4);
    m_script.restores = [](const FileRecord& record) {
        return record.NameText() == "unread.jpg" ? ResultReadFault : ResultSuccess;
    };
    const RestoreOutcome outcome = Restore();
    EXPECT_EQ(outcome.restored, 1u);
    EXPECT_EQ(outcome.incomplete, 1u);
    EXPECT_EQ(outcome.failed, 1u);
    EXPECT_EQ(m_files[0].end, FileEnd::Incomplete);
    EXPECT_EQ(m_files[0].Missing(), 6u);
    EXPECT_TRUE(m_files[0].written);
    EXPECT_FALSE(m_files[1].IsDamaged());
    EXPECT_EQ(m_files[2].end, FileEnd::Failed);
    EXPECT_TRUE(m_files[2].IsDamaged());
    EXPECT_EQ(ReadFileBytes(m_folder / "out/photo/unread.jpg"), Bytes("'da'")) << "what came stays";

    // Of nothing there is no file, but for one that was empty.
    m_script.content.clear();
    m_script.records[1].FileSize = 0;
    fs::remove_all(m_folder / "out");
    EXPECT_EQ(Restore().incomplete, 1u);
    EXPECT_FALSE(m_files[0].written);
    EXPECT_EQ(Names(), Text{"whole.jpg"});
}

TEST_F(RestoreFilesTest, AFileHasItsNameOnlyWhenItIsDone)
{
    m_script.Add("a.jpg", 4);
    int halfWay = 0;
    Restore({}, [&](const RestoreProgress& progress) {
        if (progress.percent == 50) {
            ++halfWay;
            EXPECT_EQ(progress.path, m_folder / "out/photo/a.jpg");
            ASSERT_EQ(Names().size(), 1u);
            EXPECT_TRUE(Names()[0].starts_with(".lumivault-" + std::to_string(::getpid()) + "-"));
        }
    });
    EXPECT_EQ(halfWay, 1);
    EXPECT_EQ(Names(), Text{"a.jpg"});
}

TEST_F(RestoreFilesTest, WhatAnotherProgramPutsThereMeanwhileIsNotReplaced)
{
    m_script.Add("a.jpg", 4);
    Restore({}, [this](const RestoreProgress& progress) {
        if (progress.percent == 50) {
            WriteFileBytes(m_folder / "out/photo/a.jpg", Bytes("'theirs'"));
            WriteFileBytes(m_folder / "out/photo/a(1).jpg", Bytes("'theirs'"));
        }
    });
    EXPECT_EQ(m_files[0].path, m_folder / "out/photo/a(2).jpg");
    EXPECT_EQ(ReadFileBytes(m_files[0].path), m_script.content);
    EXPECT_EQ(ReadFileBytes(m_folder / "out/photo/a.jpg"), Bytes("'theirs'"));
}

TEST_F(RestoreFilesTest, WhatProcessesThatAreGoneLeftIsRemoved)
{
    const std::string gone = "4194305";  // above the highest number of any process
    const Text kept = {".lumivault-" + gone + "-.part", ".lumivault-" + gone + "-1.part.jpg",
                       ".lumivault-" + std::to_string(::getpid()) + "-77.part",
                       ".lumivault-x-1.part", "lumivault-" + gone + "-1.part"};
    fs::create_directories(m_folder / "out/photo");
    for (const std::string& name : kept) {
        WriteFileBytes(m_folder / "out/photo" / name, {});
    }
    WriteFileBytes(m_folder / "out/photo" / (".lumivault-" + gone + "-1.part"), {});
    m_script.Add("a.jpg", 4);
    Restore();
    Text expected = kept;
    expected.emplace_back("a.jpg");
    std::sort(expected.begin(), expected.end());
    EXPECT_EQ(Names(), expected);
}

TEST_F(RestoreFilesTest, AnEarlierRunsEqualFilesAreSkippedOneForEachRecord)
{
    RestoreOptions skips;
    skips.skipsEqual = true;
    for (int i = 0; i < 3; ++i) {
        m_script.Add("a.jpg", 4);  // three records of one name and content
    }
    EXPECT_EQ(Restore(skips).restored, 3u) << "files of one run stand for themselves";
    WriteFileBytes(m_folder / "out/photo/a(1).jpg", Bytes("'date'"));
    const RestoreOutcome second = Restore(skips);
    EXPECT_EQ(second.wereThere, 2u);
    EXPECT_EQ(second.restored, 1u);
    EXPECT_EQ(m_files[0].path, m_folder / "out/photo/a.jpg");
    EXPECT_EQ(m_files[1].path, m_folder / "out/photo/a(2).jpg");
    EXPECT_EQ(m_files[2].path, m_folder / "out/photo/a(3).jpg");
    EXPECT_EQ(Restore(skips).wereThere, 3u);
    EXPECT_EQ(Names().size(), 4u);
    EXPECT_EQ(Restore().restored, 3u) << "anew";
    EXPECT_EQ(Names().size(), 7u);
}

TEST_F(RestoreFilesTest, AFullDestinationEndsTheRunWhereThatIsWanted)
{
    for (const char* name : {"a.jpg", "b.jpg", "c.jpg"}) {
        m_script.Add(name, 4);
    }
    m_script.restores = [](const FileRecord& record) {
        return record.NameText() == "b.jpg" ? ResultDiskFull : ResultSuccess;
    };
    EXPECT_EQ(Restore().restored, 2u);
    RestoreOptions stops;
    stops.stopsWhenFull = true;
    const RestoreOutcome outcome = Restore(stops);
    EXPECT_TRUE(outcome.full);
    EXPECT_EQ(outcome.restored, 1u);
    EXPECT_EQ(outcome.failed, 1u);
    EXPECT_EQ(outcome.notTried, 1u);
    EXPECT_EQ(m_files[2].end, FileEnd::NotTried);
}

TEST_F(RestoreFilesTest, NamesGoByTheRulesOfTheFileSystem)
{
    m_script.Add("a:b?.jpg", 4);
    FileIdentity here;
    ASSERT_EQ(IdentifyPath(m_folder.Path(), here), ResultSuccess);
    for (const char* type : {"ext4", "vfat"}) {
        MadeUpSystem system;
        system.AddMount(std::to_string(here.mountId) + " 1 0:77 / / rw - " + type + " none rw");
        fs::remove_all(m_folder / "out");
        Restore();
        const bool isFat = type[0] == 'v';
        EXPECT_EQ(Names(), Text{isFat ? "a_b_.jpg" : "a:b?.jpg"}) << type;
    }
}

TEST_F(RestoreFilesTest, RoomIsCountedWithoutWhatStandsThere)
{
    for (const char* name : {"a.jpg", "b.jpg"}) {
        m_script.Add(name, UINT64_MAX / 2 + 1);
    }
    ScanTarget target;
    target.imagePath = m_folder / "card.img";
    const auto open = m_session.Open(target, ScanDepth::Deep).session;
    const std::vector<FoundRow> rows = open->Search(TypeFilter::All()).rows;
    const Destination destination(m_folder / "out", Layout::ByCategory);
    EXPECT_EQ(RoomFor(rows, *open, destination, {}).neededBytes, UINT64_MAX);
    EXPECT_FALSE(RoomFor(rows, *open, destination, {}).IsEnough());
    m_script.records[0].FileSize = 4;
    std::vector<FoundRow> fewer = open->Search(TypeFilter::All()).rows;
    fs::create_directories(m_folder / "out/photo");
    WriteFileBytes(m_folder / "out/photo/a.jpg", Bytes("'date'"));
    RestoreOptions skips;
    skips.skipsEqual = true;
    EXPECT_EQ(RoomFor(fewer, *open, destination, skips).neededBytes, UINT64_MAX / 2 + 1);
    fewer.resize(1);
    EXPECT_TRUE(RoomFor(fewer, *open, destination, {}).IsEnough());
}

}  // namespace
