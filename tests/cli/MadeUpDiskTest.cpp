// The commands on drives without any rights: a made-up system whose disks are files.
#include "platform/SystemFiles.h"
#include "tests/cli/CliFixture.h"
#include "tests/support/LoopDevice.h"
#include "tests/support/MadeUpSystem.h"
#include "tests/support/RunCommand.h"

namespace {

constexpr std::uint64_t MiB = 1 << 20;

class MadeUpDiskTest : public CardFixture
{
protected:
    void SetUp() override
    {
        CardFixture::SetUp();
        if (const std::string missing = MissingTool({"sfdisk"}); !missing.empty()) {
            GTEST_SKIP() << missing;
        }
    }

    // A mount table that says of the tests' folder what a case needs.
    void MountHereAs(const std::string& type)
    {
        FileIdentity here;
        ASSERT_EQ(IdentifyPath(m_folder.Path(), here), ResultSuccess);
        m_system.AddMount(std::to_string(here.mountId) + " 1 0:77 / / rw - " + type + " none rw");
    }

    MadeUpSystem m_system;
};

TEST_F(MadeUpDiskTest, ATargetIsTakenByNumberByNodeAndThroughItsImage)
{
    MountHereAs("tmpfs");
    m_system.AddDisk("sda", "8:0", 100 * MiB, {{"removable", "1"}});
    const ImageFile disk(m_system.Node("sda"));
    MakeTable(disk.Path(), "label: dos\nstart=40000, size=131072, type=c\n");
    disk.PutAt(40000 * 512, ReadFileBytes(m_card->ImagePath()));
    m_system.AddPartition("sda", 1, "8:1", 40000, 131072);
    WriteFileBytes(m_system.Node("sda1"), Bytes("00"));
    const ByteVector before = ReadFileBytes(disk.Path());

    const Json::Value document = Parse(RunAsGiven({"targets", "--json"}).out);
    ASSERT_EQ(document["targets"].size(), 4u);
    for (Json::ArrayIndex i = 0; i < 4; ++i) {
        EXPECT_EQ(document["targets"][i]["number"].asUInt(), i + 1);
        EXPECT_EQ(document["targets"][i].size(), 14u);
    }
    const std::string image = (m_folder / "copy.img").string();
    EXPECT_EQ(RunAsGiven({"image", "#2", image}).status, 0);
    EXPECT_EQ(ReadFileBytes(image), ReadFileBytes(m_card->ImagePath()));
    for (const std::string& source : {std::string("#2"), m_system.Node("sda1").string(), image}) {
        std::filesystem::remove_all(m_folder / "out");
        const Outcome outcome = RunFast({"recover", source, (m_folder / "out").string()});
        EXPECT_EQ(outcome.status, 0) << outcome.err;
        EXPECT_EQ(FilesBelow(m_folder / "out").at("photo/second picture.png"),
                  m_originals.at("Lake/second picture.png"))
            << source;
    }
    EXPECT_EQ(RunAsGiven({"image", "#1", (m_folder / "gap.img").string()}).status, 0);
    EXPECT_EQ(std::filesystem::file_size(m_folder / "gap.img"), (40000u - 63) * 512);
    EXPECT_EQ(ReadFileBytes(disk.Path()), before);
}

TEST_F(MadeUpDiskTest, ARefusalNamesWhatIsWrong)
{
    MountHereAs("tmpfs");
    m_system.AddDisk("sda", "8:0", 3072, {{"queue/logical_block_size", "4096"}});
    const Outcome tiny =
        RunAsGiven({"image", m_system.Node("sda"), (m_folder / "new.img").string(), "--force"});
    EXPECT_EQ(tiny.status, 3);
    EXPECT_NE(tiny.err.find("less than one sector"), std::string::npos) << tiny.err;
    EXPECT_FALSE(std::filesystem::exists(m_folder / "new.img"));

    m_system.AddDisk("sdb", "8:16", MiB);
    const std::string longName(300, 'x');
    const Outcome named =
        RunAsGiven({"image", m_system.Node("sdb"), (m_folder / longName).string()});
    EXPECT_EQ(named.status, 3);
    EXPECT_NE(named.err.find(longName + ": The name or path is too long."), std::string::npos)
        << named.err;
    EXPECT_EQ(named.err.find(m_system.Node("sdb").string()), std::string::npos) << named.err;
}

TEST_F(MadeUpDiskTest, WhatTheSystemDoesNotTellIsAsked)
{
    m_system.AddDisk("sda", "8:0", 64 * MiB);
    ImageFile(m_system.Node("sda")).PutAt(0, ReadFileBytes(m_card->ImagePath()));
    const auto recover = [this](const char* answer) {
        std::istringstream answers(answer);
        return RunAsGiven({"recover", m_system.Node("sda"), (m_folder / "out").string(), "--fast"},
                          false, *answer != '\0' ? &answers : nullptr);
    };
    EXPECT_EQ(recover("").status, 2);
    EXPECT_EQ(recover("n\n").status, 2);
    EXPECT_FALSE(std::filesystem::exists(m_folder / "out"));
    EXPECT_EQ(recover("y\n").status, 0);
    const std::string image = (m_folder / "copy.img").string();
    for (const auto& [command, place] :
         {std::pair("recover", (m_folder / "forced").string()), std::pair("image", image)}) {
        const std::vector<std::string> arguments = {command, m_system.Node("sda"), place};
        EXPECT_NE(RunAsGiven(arguments).err.find("does not tell whether"), std::string::npos);
        EXPECT_FALSE(std::filesystem::exists(place));
        EXPECT_EQ(RunAsGiven({command, m_system.Node("sda"), place, "--force"}).status, 0);
    }
    EXPECT_TRUE(std::filesystem::exists(m_folder / "out/photo/second picture.png"));
}

TEST_F(MadeUpDiskTest, RecordsOnTheSourceAreAskedAboutBeforeAnythingIsWritten)
{
    FileIdentity here;
    ASSERT_EQ(IdentifyPath(m_folder.Path(), here), ResultSuccess);
    m_system.AddMount(std::to_string(here.mountId) + " 1 0:77 / / rw - fuseblk " + Card() + " rw");
    const Outcome refused = RunAsGiven({"scan", Card(), "--fast"});
    EXPECT_EQ(refused.status, 2);
    EXPECT_NE(refused.err.find("with --data-dir DIR."), std::string::npos) << refused.err;
    EXPECT_FALSE(std::filesystem::exists(m_folder / "data"));
    for (const auto& [answer, status] : {std::pair("n\n", 2), std::pair("y\n", 0)}) {
        std::istringstream answers(answer);
        EXPECT_EQ(RunAsGiven({"scan", Card(), "--fast"}, true, &answers).status, status);
    }
}

TEST_F(MadeUpDiskTest, AListThatIsEmptyOrCannotBeHadIsSaid)
{
    const Outcome none = RunAsGiven({"targets"});
    EXPECT_EQ(none.status, 0);
    EXPECT_NE(none.err.find("No disks were found"), std::string::npos);
    std::filesystem::remove_all(m_system.Folder() / "sys");
    const Outcome broken = RunAsGiven({"targets", "--json"});
    EXPECT_EQ(broken.status, 3);
    EXPECT_EQ(broken.out, "");
    m_system.AddDisk("sda", "8:0", 64 * MiB);
    m_system.Lock("sda");
    const Outcome locked = RunAsGiven({"targets"});
    EXPECT_NE(locked.out.find("not readable by you"), std::string::npos) << locked.out;
}

}  // namespace
