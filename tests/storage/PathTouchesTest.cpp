#include "storage/PathTouches.h"

#include "platform/StorageMap.h"
#include "storage/DiskHelpers.h"
#include "storage/DriveRegistry.h"
#include "tests/support/Bytes.h"
#include "tests/support/MadeUpSystem.h"

#include <gtest/gtest.h>

namespace {

constexpr std::uint64_t MiB = 1 << 20;

// The folder of the tests lies on a disk that the made-up tables describe in one way after the other.
class PathTouchesTest : public testing::Test
{
protected:
    void SetUp() override { ASSERT_EQ(IdentifyPath(m_folder.Path(), m_here), ResultSuccess); }

    std::uint32_t NumberOf(const std::string& name)
    {
        const StorageMap storage;
        for (const BlockDevice& disk : storage.Devices()) {
            if (disk.name == name) {
                return DriveRegistry::Instance().NumberOf(disk);
            }
        }
        return DriveRegistry::NoNumber;
    }

    Touching Touches(const std::string& disk, std::uint64_t start, std::uint64_t count)
    {
        return PathTouches(m_folder / "new/folder", NumberOf(disk), start, count);
    }

    void AddMountHere(const std::string& deviceNumber, const std::string& rest)
    {
        m_system.AddMount(std::to_string(m_here.mountId) + " 1 " + deviceNumber +
                          " / /somewhere rw - " + rest);
    }

    MadeUpSystem m_system;
    TempFolder m_folder;
    FileIdentity m_here;
};

TEST_F(PathTouchesTest, APartitionCountsByItsSectors)
{
    if (m_here.deviceNumber.starts_with("0:")) {
        GTEST_SKIP() << "the temporary folder lies on no single device";
    }
    m_system.AddDisk("sda", "8:0", 100 * MiB);
    m_system.AddPartition("sda", 1, "8:1", 2048, 20480);
    m_system.AddPartition("sda", 2, m_here.deviceNumber, 22528, 20480);
    EXPECT_EQ(Touches("sda", 0, 100 * MiB), Touching::Yes);
    EXPECT_EQ(Touches("sda", 2048 * 512, 20480 * 512), Touching::No);
    EXPECT_EQ(Touches("sda", 2048 * 512, 20480 * 512 + 1), Touching::Yes);
    EXPECT_EQ(Touches("sda", (22528 + 20480) * 512, 512), Touching::No);
    EXPECT_EQ(PathTouches(m_folder.Path(), 99, 0, 1), Touching::Unknown);
}

TEST_F(PathTouchesTest, MappedVolumesLoopDevicesAndPoolsStandOnWhatIsBelow)
{
    if (m_here.deviceNumber.starts_with("0:")) {
        GTEST_SKIP() << "the temporary folder lies on no single device";
    }
    m_system.AddDisk("sda", "8:0", 100 * MiB);
    m_system.AddPartition("sda", 1, "8:1", 2048, 20480);
    m_system.AddPartition("sda", 2, "8:2", 22528, 20480);
    m_system.AddDisk("dm-0", m_here.deviceNumber, 9 * MiB, {{"slaves/sda2/dev", "8:2"}});
    EXPECT_EQ(Touches("dm-0", 0, 1), Touching::Yes);
    EXPECT_EQ(Touches("sda", 22528 * 512, 1), Touching::Yes);
    EXPECT_EQ(Touches("sda", 2048 * 512, 20480 * 512), Touching::No);
    // Rings of devices are no endless loop.
    m_system.AddDisk("dm-1", "253:1", 9 * MiB, {{"slaves/dm-0/dev", m_here.deviceNumber}});
    m_system.AddDisk("dm-0", m_here.deviceNumber, 9 * MiB, {{"slaves/dm-1/dev", "253:1"}});
    EXPECT_EQ(Touches("dm-1", 0, 1), Touching::Yes);
    // A loop device whose file is gone could lie anywhere.
    m_system.AddDisk("dm-0", m_here.deviceNumber, 9 * MiB,
                     {{"loop/backing_file", "/gone.img (deleted)"}});
    m_system.AddDisk("sdb", "8:16", MiB);
    EXPECT_EQ(Touches("sdb", 0, 1), Touching::Unknown);
}

TEST_F(PathTouchesTest, WhatIsMountedTellsWhereNoDeviceDoes)
{
    m_system.AddDisk("sdb", "8:16", MiB);
    EXPECT_EQ(Touches("sdb", 0, 1), Touching::Unknown) << "no mount table at all";
    struct MountCase
    {
        std::string rest;
        Touching expected;
    };
    const std::string image = (m_folder / "image").string();
    WriteFileBytes(image, Bytes("00"));
    for (const MountCase& row :
         {MountCase{"tmpfs none rw", Touching::No}, MountCase{"nfs4 server:/x rw", Touching::No},
          MountCase{"zfs pool/x rw", Touching::Unknown},
          MountCase{"fuse /nothing/there rw", Touching::Unknown},
          MountCase{"overlay overlay rw,lowerdir=/a", Touching::Unknown},
          MountCase{"overlay overlay rw,upperdir=/proc/none", Touching::Unknown},
          MountCase{"overlay overlay rw,upperdir=.", Touching::Unknown},
          // The image lies in the folder again: an end has to be found.
          MountCase{"fuse " + image + " rw", Touching::No}}) {
        std::filesystem::remove(m_system.Folder() / "proc/self/mountinfo");
        AddMountHere("0:77", row.rest);
        EXPECT_EQ(Touches("sdb", 0, 1), row.expected) << row.rest;
    }
    EXPECT_EQ(PathTouchesImage(m_folder / "x", image), Touching::Yes);
    EXPECT_EQ(PathTouchesImage(m_folder / "x", m_folder / "none"), Touching::Unknown);
    WriteFileBytes(m_folder / "other", Bytes("00"));
    EXPECT_EQ(PathTouchesImage(m_folder / "x", m_folder / "other"), Touching::No);
}

}  // namespace
