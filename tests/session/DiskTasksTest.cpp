// The list of targets, their names, and the checks before an image, on a made-up system whose disks are files.
#include "platform/SystemFiles.h"
#include "session/ImageTask.h"
#include "session/Session.h"
#include "tests/support/Bytes.h"
#include "tests/support/FakeEngines.h"
#include "tests/support/LoopDevice.h"
#include "tests/support/MadeUpSystem.h"
#include "tests/support/RunCommand.h"

#include <gtest/gtest.h>

#include <atomic>
#include <future>

namespace {

constexpr std::uint64_t MiB = 1 << 20;

class DiskTasksTest : public testing::Test
{
protected:
    ScanTarget Target(const std::string& name)
    {
        return std::get<ScanTarget>(m_session.Resolve(name));
    }

    DataFolder m_data;
    TempFolder m_folder;
    MadeUpSystem m_system;
    FakeScript m_script;
    Session m_session{std::make_shared<FakeEngines>(m_script)};
};

TEST_F(DiskTasksTest, ARowHasWhatTellsItFromOthersAndIsATarget)
{
    if (const std::string missing = MissingTool({"sfdisk"}); !missing.empty()) {
        GTEST_SKIP() << missing;
    }
    m_system.AddDisk("sda", "8:0", 100 * MiB, {{"removable", "1"}, {"device/model", "Fast Stick"}});
    MakeTable(m_system.Node("sda"), "label: dos\nstart=40000, size=131072, type=c\n");
    m_system.AddPartition("sda", 1, "8:1", 40000, 131072);
    const TargetList list = m_session.ListTargets();
    ASSERT_EQ(list.end, ListEnd::Complete);
    ASSERT_EQ(list.rows.size(), 3u);
    const TargetRow& row = list.rows[1];
    EXPECT_EQ(row.kind, TargetKind::Partition);
    EXPECT_EQ(row.disk.model, "Fast Stick");
    EXPECT_EQ(row.disk.node, m_system.Node("sda"));
    EXPECT_EQ(row.node, m_system.Node("sda1"));
    EXPECT_TRUE(row.disk.removable && row.disk.readable);
    WriteFileBytes(m_system.Node("sda1"), Bytes("00"));
    for (const ScanTarget& target : {TargetOf(row), Target("#2"), Target(row.node)}) {
        EXPECT_EQ(target.startSector, 40000u);
        EXPECT_EQ(target.sectorCount, 131072u);
        EXPECT_EQ(target.diskNumber, row.disk.number);
        EXPECT_EQ(target.StartByte(), 40000u * 512);
    }
}

TEST_F(DiskTasksTest, AListIsStoppedInsideATableAndBeginsAnewAfterwards)
{
    if (const std::string missing = MissingTool({"mkfs.fat"}); !missing.empty()) {
        GTEST_SKIP() << missing;
    }
    m_system.AddDisk("sda", "8:0", 600 * MiB);
    m_system.AddDisk("sdb", "8:16", 64 * MiB);
    MustRun({"mkfs.fat", "-F", "32", "-s", "1", m_system.Node("sda")});  // a FAT of 5 MB
    int asked = 0;
    const auto count = [&asked](const Progress& progress) {
        EXPECT_EQ(progress.total, 2u);
        ++asked;
        return Answer::GoOn;
    };
    EXPECT_EQ(m_session.ListTargets(count).end, ListEnd::Complete);
    EXPECT_GT(asked, 5) << "once a disk would be a long wait";
    for (const int stopAt : {1, 4}) {
        asked = 0;
        const TargetList list = m_session.ListTargets(
            [&](const Progress&) { return ++asked == stopAt ? Answer::Stop : Answer::GoOn; });
        EXPECT_EQ(list.end, ListEnd::Stopped);
        EXPECT_TRUE(list.rows.empty());
        EXPECT_EQ(asked, stopAt) << "nothing is read behind it";
    }
    const TargetList again = m_session.ListTargets();
    ASSERT_EQ(again.rows.size(), 2u);
    EXPECT_EQ(again.rows[0].number, 1);
    EXPECT_EQ(again.rows[1].number, 2);
}

TEST_F(DiskTasksTest, DisksAreListedWhileAScanRuns)
{
    Session session;  // with the program's engines, which open the disk
    m_system.AddDisk("sda", "8:0", 4 * MiB);
    m_system.AddDisk("sdb", "8:16", 4 * MiB);
    const ScanTarget target = Target(m_system.Node("sdb"));
    std::atomic<int> scans = 0;
    std::future<void> scanning = std::async(std::launch::async, [&] {
        for (; scans < 5; ++scans) {
            const OpenOutcome opened = session.Open(target, ScanDepth::Deep);
            ASSERT_EQ(opened.end, OpenEnd::Opened);
            EXPECT_EQ(opened.session->Scan(EarlierChoice::Drop, {}).end, ScanEnd::Complete);
        }
    });
    do {
        EXPECT_EQ(session.ListTargets().rows.size(), 2u);
        EXPECT_EQ(Target(m_system.Node("sdb")).diskNumber, target.diskNumber);
    } while (scans < 5 && scanning.wait_for(std::chrono::seconds(0)) != std::future_status::ready);
    scanning.get();
}

TEST_F(DiskTasksTest, AnImageNeedsRoom)
{
    // FAT32 is among those that hold 2 GB; what is above 4 GB is told so.
    m_system.AddDisk("sda", "8:0", 2048 * MiB);
    m_system.AddDisk("sdb", "8:16", 2048 * MiB + 512);
    m_system.AddDisk("sdc", "8:32", 4096 * MiB);
    m_system.AddDisk("sdd", "8:48", 4096 * MiB + 512);
    m_system.AddDisk("sde", "8:64", std::uint64_t{1} << 42);
    FileIdentity here;
    ASSERT_EQ(IdentifyPath(m_folder.Path(), here), ResultSuccess);
    struct RoomCase
    {
        std::string type;
        std::string disk;
        std::optional<ImageFault> fault;
    };
    for (const RoomCase& row : {RoomCase{"vfat", "sda", std::nullopt},
                                {"vfat", "sdb", ImageFault::TooLargeForFat},
                                {"vfat", "sdc", ImageFault::TooLargeForFat},
                                {"vfat", "sdd", ImageFault::TooLargeForFat32},
                                {"exfat", "sdd", ImageFault::TooLargeForFat},
                                {"tmpfs", "sde", ImageFault::NoRoom}}) {
        std::filesystem::remove(m_system.Folder() / "proc/self/mountinfo");
        m_system.AddMount(std::to_string(here.mountId) + " 1 0:77 / / rw - " + row.type +
                          " none rw");
        ImageTask task(Target(m_system.Node(row.disk)), m_folder / "new.img");
        std::optional<ImageProblem> problem = task.NextProblem();
        while (problem && problem->IsQuestion()) {
            problem = task.NextProblem();
        }
        ASSERT_EQ(problem.has_value(), row.fault.has_value()) << row.type << row.disk;
        EXPECT_TRUE(!problem || problem->fault == *row.fault) << row.type << row.disk;
    }
}

TEST_F(DiskTasksTest, AnImageIsNotBegunBeforeItsProblemsAreLookedAt)
{
    m_system.AddDisk("sda", "8:0", 2 * MiB);
    const ScanTarget source = Target(m_system.Node("sda"));
    const std::filesystem::path file = m_folder / "copy.img";
    WriteFileBytes(file, ByteVector(3 * MiB));
    const auto faultOf = [&source](const std::filesystem::path& path) {
        return ImageTask(source, path).NextProblem()->fault;
    };
    EXPECT_EQ(faultOf({}), ImageFault::NoName);
    EXPECT_EQ(faultOf(m_folder / "no/copy.img"), ImageFault::NoFolder);
    EXPECT_EQ(faultOf(m_folder.Path()), ImageFault::NotPlainFile);
    ScanTarget image;
    image.imagePath = file;
    ImageTask ofImage(image, m_folder / "new.img");
    for (int i = 0; i < 2; ++i) {  // what is no question is never passed
        EXPECT_EQ(ofImage.NextProblem()->fault, ImageFault::SourceIsImage);
    }
    ImageTask task(source, file);
    EXPECT_EQ(task.NextProblem()->fault, ImageFault::Exists);
    EXPECT_EQ(task.Run({}).end, ImageEnd::NotChecked);
    EXPECT_EQ(task.NextProblem()->fault, ImageFault::MayBeOnSource) << "no mount table";
    EXPECT_FALSE(task.NextProblem());
    const ImageOutcome stopped = task.Run([](const Progress& progress) {
        EXPECT_EQ(progress.total, 4096u);
        return progress.percent >= 50 ? Answer::Stop : Answer::GoOn;
    });
    EXPECT_EQ(stopped.end, ImageEnd::Stopped);
    EXPECT_EQ(stopped.WrittenBytes(), MiB);
    EXPECT_EQ(stopped.oldBytes, 3 * MiB);
    EXPECT_EQ(task.Run({}).end, ImageEnd::Complete);
}

}  // namespace
