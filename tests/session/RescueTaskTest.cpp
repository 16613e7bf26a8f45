// Rescues of made-up disks, begun and resumed, also by and with GNU ddrescue.
#include "session/RescueTask.h"

#include "platform/SystemFiles.h"
#include "session/Session.h"
#include "tests/support/Bytes.h"
#include "tests/support/FailingReader.h"
#include "tests/support/FakeEngines.h"
#include "tests/support/MadeUpSystem.h"
#include "tests/support/RunCommand.h"

#include <gtest/gtest.h>

namespace {

// No whole number of cylinders, nor of pieces.
constexpr std::uint64_t DiskBytes = 40 * 1024 * 1024;

class RescueTaskTest : public testing::Test
{
protected:
    void SetUp() override
    {
        m_system.AddDisk("sda", "8:0", DiskBytes);
        FileIdentity here;
        ASSERT_EQ(IdentifyPath(m_folder.Path(), here), ResultSuccess);
        m_system.AddMount(std::to_string(here.mountId) + " 1 0:77 / / rw - tmpfs none rw");
        WriteFileBytes(Node(), m_content);
    }
    std::filesystem::path Node() const { return m_system.Node("sda"); }
    std::filesystem::path Image() const { return m_folder / "card.img"; }
    std::filesystem::path MapFile() const { return m_folder / "card.img.map"; }
    ScanTarget Target(const std::string& name)
    {
        return std::get<ScanTarget>(m_session.Resolve(name));
    }
    RescueOutcome Rescue(const RescueFunction& progress = {}, std::uint32_t retries = 0)
    {
        RescueTask task(Target(Node()), Image());
        EXPECT_FALSE(task.NextProblem().has_value());
        return task.Run(retries, progress);
    }
    // Until so many bytes are there.
    RescueOutcome RescueUntil(std::uint64_t bytes)
    {
        return Rescue([bytes](const RescueProgress& progress) {
            return progress.rescuedBytes >= bytes ? Answer::Stop : Answer::GoOn;
        });
    }

    const ByteVector m_content = RandomBytes(DiskBytes, 21);
    DataFolder m_data;
    TempFolder m_folder;
    MadeUpSystem m_system;
    FakeScript m_script;
    Session m_session{std::make_shared<FakeEngines>(m_script)};
};

TEST_F(RescueTaskTest, AWholeDiskIsCopiedToItsLastSectorInBothWays)
{
    for (const std::string& name : {std::string("#1"), Node().string()}) {
        std::filesystem::remove(Image());
        std::filesystem::remove(MapFile());
        ImageTask image(Target(name), Image());
        ASSERT_FALSE(image.NextProblem().has_value());
        EXPECT_EQ(image.Run({}).end, ImageEnd::Complete);
        EXPECT_EQ(ReadFileBytes(Image()), m_content) << name;
        std::filesystem::remove(Image());
        RescueTask rescue(Target(name), Image());
        ASSERT_FALSE(rescue.NextProblem().has_value());
        EXPECT_EQ(rescue.Run(0, {}).end, RescueEnd::Complete);
        EXPECT_EQ(ReadFileBytes(Image()), m_content) << name;
    }
}

TEST_F(RescueTaskTest, WhatSpeaksAgainstAMapIsSaid)
{
    const auto problem = [this] { return RescueTask(Target(Node()), Image()).NextProblem(); };
    WriteFileBytes(Image(), Bytes("'older'"));
    ASSERT_TRUE(problem().has_value());
    EXPECT_EQ(problem()->image.fault, ImageFault::Exists);
    const auto putMap = [this](const std::string& text) {
        WriteFileBytes(MapFile(), ByteVector(text.begin(), text.end()));
    };
    putMap("no map");
    EXPECT_EQ(problem()->fault, RescueFault::BrokenMap);
    putMap("0 ? 1\n0 50000000 ?\n");
    EXPECT_EQ(problem()->fault, RescueFault::OtherMap);
    putMap("0 ? 1\n0 8 +\n");
    EXPECT_EQ(problem()->fault, RescueFault::MapWithoutImage) << "the image has 7 bytes";
    putMap("0 ? 1\n0 512 ?\n");
    EXPECT_FALSE(problem().has_value()) << "it is gone on with";
    std::filesystem::remove(Image());
    EXPECT_FALSE(problem().has_value()) << "nothing was rescued yet";
    putMap("0 ? 1\n0 512 +\n");
    EXPECT_EQ(problem()->fault, RescueFault::MapWithoutImage);
    EXPECT_EQ(RescueTask(Target(Node()), Image()).Run(0, {}).end, RescueEnd::NotChecked);
    EXPECT_FALSE(std::filesystem::exists(Image()));
}

TEST_F(RescueTaskTest, AnotherProcessKeepsItsImage)
{
    FileHandle other;
    ASSERT_EQ(other.OpenOrCreate(Image()), ResultSuccess);
    ASSERT_TRUE(other.TryLock());
    RescueTask task(Target(Node()), Image());
    ASSERT_EQ(task.NextProblem()->image.fault, ImageFault::Exists);
    ASSERT_FALSE(task.NextProblem().has_value());
    EXPECT_EQ(task.Run(0, {}).end, RescueEnd::InUse);
    EXPECT_EQ(std::filesystem::file_size(Image()), 0u);
}

TEST_F(RescueTaskTest, ADiskThatIsPulledOutIsGoneOnWith)
{
    const std::filesystem::path away = m_folder / "away";
    {
        FailingReader faults;
        faults.OnReadAt(10 * 1024 * 1024, 1, [&] {
            std::filesystem::rename(Node(), away);
            faults.FailFrom(0);
        });
        const RescueOutcome gone = Rescue();
        EXPECT_EQ(gone.end, RescueEnd::SourceGone);
        EXPECT_EQ(gone.badBytes, 0u);
        EXPECT_EQ(gone.rescuedBytes, 10u * 1024 * 1024);
    }
    std::filesystem::rename(away, Node());
    EXPECT_EQ(Rescue().end, RescueEnd::Complete);
    EXPECT_EQ(ReadFileBytes(Image()), m_content);
}

TEST_F(RescueTaskTest, GnuDdrescueGoesOnWithOurMapAndWeWithIts)
{
    if (const std::string missing = MissingTool({"ddrescue"}); !missing.empty()) {
        GTEST_SKIP() << missing;
    }
    const auto ddrescue = [this](const std::string& option) {
        MustRun({"ddrescue", "--quiet", option, Node(), Image(), MapFile()});
    };
    const auto begin = [this] {
        std::filesystem::remove(Image());
        std::filesystem::remove(MapFile());
    };
    {
        FailingReader faults;
        faults.FailBytes(3 << 20, (3 << 20) + 5000);
        faults.FailSector(30000);
        EXPECT_EQ(RescueUntil(20 << 20).end, RescueEnd::Stopped);
        ddrescue("--retry-passes=1");
        EXPECT_EQ(ReadFileBytes(Image()), m_content) << "stopped while it copied";

        begin();
        const RescueOutcome whole = Rescue();
        EXPECT_EQ(whole.end, RescueEnd::Complete);
        EXPECT_EQ(whole.badBytes, 10u * 512 + 512);
        EXPECT_EQ(whole.badPlaces, 2u);
        ddrescue("--retry-passes=1");
        EXPECT_EQ(ReadFileBytes(Image()), m_content) << "with bad sectors";

        begin();
        ddrescue("--size=9000000");
        const RescueOutcome theirs = Rescue();
        EXPECT_EQ(theirs.end, RescueEnd::Complete);
        EXPECT_EQ(theirs.MissingBytes(), 512u) << "it had read over what fails here";
    }
    EXPECT_EQ(Rescue({}, 1).MissingBytes(), 0u);
    EXPECT_EQ(ReadFileBytes(Image()), m_content);
    ddrescue("--retry-passes=1");
    const ByteVector map = ReadFileBytes(MapFile());
    const std::string text(map.begin(), map.end());
    EXPECT_NE(text.find("Created by GNU ddrescue"), std::string::npos);
    EXPECT_NE(text.find("0x02800000  +"), std::string::npos) << text;
}

}  // namespace
