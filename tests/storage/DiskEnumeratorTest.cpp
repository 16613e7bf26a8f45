#include "storage/DiskEnumerator.h"

#include "platform/SystemFiles.h"
#include "storage/ByteReader.h"
#include "storage/DiskHelpers.h"
#include "storage/DriveRegistry.h"
#include "tests/support/Bytes.h"
#include "tests/support/FatCard.h"
#include "tests/support/LoopDevice.h"
#include "tests/support/MadeUpSystem.h"
#include "tests/support/RunCommand.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <sstream>
#include <thread>
#include <unistd.h>

namespace {

constexpr std::uint64_t MiB = 1 << 20;
constexpr std::uint64_t Cylinder = 16065;

class DiskEnumeratorTest : public testing::Test
{
protected:
    // "2048+100 type 7 FAT32 'CARD'", a line an entry.
    std::string Listing()
    {
        EXPECT_EQ(m_enumerator.Enumerate(), 1);
        std::ostringstream out;
        VolumeRecord volume;
        while (m_enumerator.Next(volume) == 1) {
            out << volume.StartSector << '+' << volume.SectorCount << " type "
                << unsigned{volume.PartitionType};
            if (!volume.FileSystemName.empty()) {
                out << ' ' << volume.FileSystemName << " '" << volume.VolumeLabel << '\'';
            }
            out << '\n';
        }
        return out.str();
    }

    std::vector<VolumeRecord> List()
    {
        EXPECT_EQ(m_enumerator.Enumerate(), 1);
        std::vector<VolumeRecord> list;
        m_enumerator.Snapshot(list);
        return list;
    }

    std::vector<unsigned> Numbers()
    {
        std::vector<unsigned> numbers;
        for (const VolumeRecord& volume : List()) {
            numbers.push_back(volume.Letter);
        }
        return numbers;
    }

    MadeUpSystem m_system;
    DiskEnumerator m_enumerator;
};

// The kernel's own table of a disk that may not be read: partitions exactly where a case wants them.
TEST_F(DiskEnumeratorTest, AreasAboveACylinderAreGaps)
{
    struct GapCase
    {
        std::uint64_t diskSectors;
        std::vector<std::pair<std::uint64_t, std::uint64_t>> partitions;
        std::string expected;
    };
    const std::string cylinderSectors = std::to_string(20 * Cylinder - 2048);
    const std::vector<GapCase> cases = {
        {20 * Cylinder, {{2048, 20 * Cylinder - 2048}}, "2048+" + cylinderSectors + " type 7\n"},
        // Between two partitions exactly a cylinder, then one sector more.
        {20 * Cylinder,
         {{63, 1000}, {1063 + Cylinder, 20 * Cylinder - 1063 - Cylinder}},
         "63+1000 type 7\n17128+304172 type 7\n"},
        {20 * Cylinder,
         {{63, 1000}, {1064 + Cylinder, 20 * Cylinder - 1064 - Cylinder}},
         "63+1000 type 7\n1063+16066 type 0\n17129+304171 type 7\n"},
        // Before the first, counted from the end of the first track; after the last, up to the last whole cylinder.
        {20 * Cylinder + 500,
         {{64 + Cylinder, 1000}},
         "63+16066 type 0\n16129+1000 type 7\n17129+304171 type 0\n"},
        {20 * Cylinder, {{0, 20 * Cylinder}}, "0+321300 type 7\n"},
        {20 * Cylinder, {}, "0+321300 type 0\n"},
        {20 * Cylinder + 500, {}, "0+321300 type 0\n"},
        {Cylinder - 1, {}, "0+16064 type 0\n"},
        // Past the end of the disk: cut, or dropped.
        {2 * Cylinder,
         {{100, 9 * Cylinder}, {3 * Cylinder, 100}},
         "100+" + std::to_string(2 * Cylinder - 100) + " type 7\n"},
    };
    for (const GapCase& row : cases) {
        m_system.AddDisk("sda", "8:0", row.diskSectors * 512);
        m_system.Lock("sda");
        int number = 0;
        for (const auto& [start, size] : row.partitions) {
            ++number;
            m_system.AddPartition("sda", number, "8:" + std::to_string(number), start, size);
        }
        EXPECT_EQ(Listing(), row.expected);
        m_system.Remove("sda");
    }
}

TEST_F(DiskEnumeratorTest, TablesAreReadFromTheDiskItself)
{
    if (const std::string missing = MissingTool({"sfdisk", "mkfs.fat", "mkntfs"});
        !missing.empty()) {
        GTEST_SKIP() << missing;
    }
    m_system.AddDisk("sda", "8:0", 200 * MiB);
    const ImageFile disk(m_system.Node("sda"));
    MakeTable(disk.Path(), "label: dos\n"
                           "start=2048, size=131072, type=c\n"
                           "start=133120, size=65536, type=7\n"
                           "start=230000, type=f\n"
                           "start=232048, size=40000, type=6\n"
                           "start=280000, size=40000, type=83\n");
    const TempFolder folder;
    FatOptions fat;
    fat.extra = {"-n", "CARD"};
    const FatCard card(folder / "fat", fat);
    disk.PutAt(2048 * 512, ReadFileBytes(card.ImagePath()));
    const ImageFile ntfs(folder / "ntfs", 32 * MiB);
    MustRun({"mkntfs", "-F", "-Q", "-q", "-s", "512", "-p", "133120", "-H", "255", "-S", "63", "-L",
             "Fotos Łódź", ntfs.Path()});
    disk.PutAt(133120 * 512, ReadFileBytes(ntfs.Path()));
    const std::string whole = "2048+131072 type 11 FAT32 'CARD'\n"
                              "133120+65536 type 7 NTFS 'Fotos Łódź'\n";
    EXPECT_EQ(Listing(), whole + "198656+33392 type 0\n"
                                 "232048+40000 type 6\n"
                                 "280000+40000 type 131\n"
                                 "320000+81625 type 0\n");
    EXPECT_EQ(Numbers(), (std::vector<unsigned>{1, 2, 3, 4, 5, 6}));

    disk.Put(230000, ByteVector(512));  // the logical partitions' table
    EXPECT_EQ(Listing(), whole + "198656+202969 type 0\n");
    disk.PutAt(510, ByteVector(2));  // and the mark of the table itself
    EXPECT_EQ(Listing(), "0+401625 type 0\n");

    MakeTable(disk.Path(), "label: gpt\n"
                           "start=3000, size=20000, type=U\n"
                           "start=24000, size=20000, type=L\n"
                           "start=44000, size=100, type=E3C9E316-0B5C-4DB8-817D-F92DF00215AE\n"
                           "start=50000, size=350000, type=EBD0A0A2-B9E5-4433-87C0-68B6B72699C7\n");
    const std::string guid = "3000+20000 type 239\n24000+20000 type 131\n50000+350000 type 7\n";
    EXPECT_EQ(Listing(), guid);
    disk.Put(1, ByteVector(512));
    EXPECT_EQ(Listing(), guid) << "the second copy of the table is read";
    disk.Put(409599, ByteVector(512));
    EXPECT_EQ(Listing(), "0+401625 type 0\n");
}

TEST_F(DiskEnumeratorTest, AFileSystemOnTheBareDiskIsOneEntry)
{
    if (const std::string missing = FatCard::MissingTools(); !missing.empty()) {
        GTEST_SKIP() << missing;
    }
    m_system.AddDisk("sda", "8:0", 64 * MiB);
    const ImageFile disk(m_system.Node("sda"));
    // What an earlier formatting has left behind stands beside it.
    const bool ext = MissingTool({"mkfs.ext4"}).empty();
    if (ext) {
        MustRun({"mkfs.ext4", "-q", disk.Path()});
    }
    const ByteVector old = disk.Read(1024, 1024);
    const FatCard card(disk.Path(), FatOptions());
    disk.PutAt(1024, old);
    card.Put("picture", RandomBytes(5 * MiB, 1));
    const std::vector<VolumeRecord> list = List();
    ASSERT_EQ(list.size(), 1u);
    EXPECT_EQ(list[0].FileSystemName, "FAT32");
    EXPECT_EQ(list[0].PartitionType, 11);
    EXPECT_EQ(list[0].SectorCount, 64 * MiB / 512);
    EXPECT_EQ(list[0].UsedBytes, 5 * MiB + 512) << "and the root folder's cluster";
    EXPECT_EQ(list[0].TotalBytes, list[0].UsedBytes + list[0].FreeBytes);
}

TEST_F(DiskEnumeratorTest, WhatIsNoDiskIsLeftOutAndTheOrderIsThatOfNames)
{
    const char* const hidden[] = {"ram0", "zram0", "fd0", "sr0", "mmcblk0boot0", "mmcblk0rpmb"};
    for (const char* name : hidden) {
        m_system.AddDisk(name, "1:1", MiB);
    }
    m_system.AddDisk("nbd0", "43:0", 0);
    m_system.AddDisk("sdz", "8:1", MiB, {{"hidden", "1"}});
    m_system.AddDisk("dm-1", "253:1", MiB, {{"holders/md0", ""}});
    m_system.AddDisk("loop1", "7:1", MiB, {{"ro", "1"}, {"loop/backing_file", "/app.squashfs"}});
    ImageFile(m_system.Node("loop1")).PutAt(0, Bytes("'hsqs'"));
    const char* const shown[] = {"nvme0n2", "nvme0n10", "sda", "sdb", "dm-0", "loop0"};
    for (const char* name : {"nvme0n10", "loop0", "sdb", "dm-0", "sda", "nvme0n2"}) {
        m_system.AddDisk(name, std::string("9:") + name, MiB);
    }
    ASSERT_EQ(m_enumerator.Enumerate(), 1);
    std::vector<std::string> names;
    for (const auto& [number, entries] : m_enumerator.Disks) {
        names.push_back(DriveRegistry::Instance().Find(number)->name);
    }
    EXPECT_EQ(names, std::vector<std::string>(std::begin(shown), std::end(shown)));
    std::filesystem::remove_all(m_system.Folder() / "sys/block");
    EXPECT_EQ(m_enumerator.Enumerate(), 0);
    EXPECT_TRUE(m_enumerator.Disks.empty());
}

TEST_F(DiskEnumeratorTest, WithoutRightsTheSystemsOwnTablesTell)
{
    m_system.AddDisk("sda", "8:0", 400 * MiB);
    m_system.AddDisk("sdb", "8:16", 100 * MiB, {{"queue/logical_block_size", "4096"}});
    for (const char* name : {"sda", "sdb"}) {
        m_system.Lock(name);
    }
    m_system.AddPartition("sda", 1, "8:1", 2048, 400000);
    m_system.AddPartition("sda", 2, "8:2", 402048, 2);
    m_system.AddPartition("sda", 5, "8:5", 404096, 400000);
    m_system.SetProperties("8:1", "E:ID_FS_TYPE=vfat\nE:ID_FS_VERSION=FAT16\n"
                                  "E:ID_FS_LABEL_ENC=My\\x20Card\\xff\nE:ID_PART_ENTRY_TYPE=0x6");
    m_system.SetProperties("8:2", "E:ID_PART_ENTRY_TYPE=0xf");
    m_system.SetProperties("8:5", "E:ID_FS_TYPE=ext4\nE:ID_PART_ENTRY_TYPE=0x83\nnonsense\nE:=");
    m_system.SetProperties("8:16", "E:ID_FS_TYPE=exfat\nE:ID_FS_LABEL_ENC=X");
    EXPECT_EQ(Listing(), "2048+400000 type 6 FAT 'My Card\uFFFD'\n"
                         "404096+400000 type 131 ext4 ''\n"
                         "0+25600 type 131 exFAT 'X'\n");
    EXPECT_EQ(m_enumerator.SectorSize, 4096);
}

// A mounted volume tells its own space; a mount point that leads to another file system would tell that one's. Its name may
// hold any white space.
TEST_F(DiskEnumeratorTest, AMountPointCountsWhereItLeadsToTheVolume)
{
    m_system.AddDisk("sda", "8:0", 400 * MiB);
    m_system.Lock("sda");
    m_system.AddPartition("sda", 1, "8:1", 2048, 400000);
    const std::string place = (m_system.Folder() / "a \v\rplace").string();
    const std::string escaped = (m_system.Folder() / "a\\040\v\rplace").string();
    std::filesystem::create_directory(place);
    struct MountCase
    {
        std::string also;
        bool leadsThere;
    };
    for (const MountCase& row : {
             MountCase{"nonsense", true},
             MountCase{"37 36 0:50 / " + escaped + "/below", true},
             MountCase{"37 25 0:50 / " + escaped + "bo", true},
             MountCase{"37 99 0:50 / " + escaped, true},  // seen from another system's root
             MountCase{"37 36 0:50 / " + escaped, false},
             MountCase{"37 25 0:50 / " + m_system.Folder().string(), false},
         }) {
        std::filesystem::remove(m_system.Folder() / "proc/self/mountinfo");
        m_system.AddMount("25 25 8:99 / / rw - ext4 /dev/sdz rw");
        m_system.AddMount("36 25 8:1 / " + escaped + " rw shared:1 - vfat  rw");
        m_system.AddMount(row.also + " rw - tmpfs none rw");
        const std::vector<VolumeRecord> list = List();
        const std::uint64_t capacity = std::filesystem::space(place).capacity;
        EXPECT_EQ(list.at(0).RootPath, row.leadsThere ? place + "/" : "") << row.also;
        EXPECT_EQ(list[0].TotalBytes, row.leadsThere ? capacity : std::uint64_t{400000} * 512);
        EXPECT_EQ(list[0].UsedBytes, list[0].TotalBytes - list[0].FreeBytes) << row.also;
        EXPECT_EQ(list[0].PartitionType, row.leadsThere ? 11 : 7) << row.also;
    }
}

TEST_F(DiskEnumeratorTest, WhatHasNoWholeSectorIsLeftOutAndTablesHaveAnEnd)
{
    const MadeUpSystem::Facts large = {{"queue/logical_block_size", "4096"}};
    m_system.AddDisk("sda", "8:0", 40 * MiB + 1024, large);
    ByteVector table(66);
    const ByteVector entries = Bytes("00 00 00 00 06 00 00 00 00 28 00 00 04 00 00 00 "
                                     "00 00 00 00 07 00 00 00 64 00 00 00 32 00 00 00");
    std::copy(entries.begin(), entries.end(), table.begin());
    table[64] = 0x55;
    table[65] = 0xAA;
    ImageFile(m_system.Node("sda")).PutAt(446, table);
    m_system.AddDisk("sdb", "8:16", 3072, large);
    EXPECT_EQ(Listing(), "100+50 type 7\n");

    if (const std::string missing = MissingTool({"sfdisk"}); !missing.empty()) {
        GTEST_SKIP() << missing;
    }
    m_system.AddDisk("sdc", "8:32", 20 * MiB);
    std::string script = "label: gpt\ntable-length: 400\n";
    for (int i = 0; i < 300; ++i) {
        script += "start=" + std::to_string(2048 + i * 8) + ", size=8\n";
    }
    MakeTable(m_system.Node("sdc"), script);
    ASSERT_EQ(m_enumerator.Enumerate(), 1);
    const std::vector<VolumeRecord>& many = m_enumerator.Disks.rbegin()->second;
    ASSERT_EQ(many.size(), 257u) << "and the gap behind them";
    EXPECT_EQ(many[255].StartSector, 2048u + 255 * 8);
}

TEST_F(DiskEnumeratorTest, NumbersStayWithTheirEntriesAndAreNeverGivenTwice)
{
    for (int i = 0; i < 40; ++i) {
        m_system.AddDisk("sda" + std::to_string(i), "8:" + std::to_string(i), MiB);
    }
    const std::vector<VolumeRecord> before = List();
    EXPECT_EQ(before.back().Letter, 40);
    std::vector<VolumeRecord> missing;
    EXPECT_EQ(m_enumerator.FindMissing(before, missing), 1);
    EXPECT_TRUE(missing.empty());

    m_system.Remove("sda39");
    EXPECT_EQ(m_enumerator.FindMissing(before, missing), 1);
    ASSERT_EQ(missing.size(), 1u);
    EXPECT_EQ(missing[0].Letter, 40);
    EXPECT_EQ(Numbers().size(), 39u);

    // 40 was used before; 42, 47 and the letters would be mistaken.
    for (int i = 50; i < 80; ++i) {
        m_system.AddDisk("sdb" + std::to_string(i), "9:" + std::to_string(i), 2 * MiB);
    }
    std::vector<unsigned> expected = {41, 43, 44, 45, 46};
    for (unsigned number = 48; number <= 124; ++number) {
        if (number <= 64 || (number >= 91 && number <= 96) || number >= 123) {
            expected.push_back(number);
        }
    }
    const std::vector<unsigned> numbers = Numbers();
    ASSERT_EQ(numbers.size(), 69u);
    EXPECT_EQ(std::vector<unsigned>(numbers.begin() + 39, numbers.end()), expected);
}

TEST_F(DiskEnumeratorTest, AnotherMediumInTheSameDriveIsAnotherDisk)
{
    DriveRegistry& registry = DriveRegistry::Instance();
    m_system.AddDisk("sda", "8:0", MiB, {{"diskseq", "5"}});
    ASSERT_EQ(m_enumerator.Enumerate(), 1);
    ASSERT_EQ(m_enumerator.Disks.count(0), 1u);
    FileHandle handle;
    EXPECT_EQ(registry.Open(0, handle), ResultSuccess);
    m_system.AddDisk("sda", "8:0", MiB, {{"diskseq", "6"}});
    EXPECT_EQ(registry.Open(0, handle), ResultNotConnected)
        << "not yet listed, and not read either";
    ASSERT_EQ(m_enumerator.Enumerate(), 1);
    EXPECT_EQ(m_enumerator.Disks.begin()->first, 1u);
    EXPECT_EQ(registry.Open(1, handle), ResultSuccess);
    registry.Forget(0);
    EXPECT_EQ(registry.NumberOf(m_system.Folder() / "another"), 0u) << "the lowest free one";
    EXPECT_EQ(registry.Open(77, handle), ResultFileNotFound);
}

TEST_F(DiskEnumeratorTest, TheOpenerWithMoreRightsIsAskedOnce)
{
    DriveRegistry& registry = DriveRegistry::Instance();
    m_system.AddDisk("sda", "8:0", MiB);
    m_system.AddDisk("sdb", "8:16", MiB, {{"diskseq", "5"}});
    for (const char* name : {"sda", "sdb"}) {
        std::filesystem::permissions(m_system.Node(name), std::filesystem::perms::none);
    }
    ASSERT_EQ(m_enumerator.Enumerate(), 1);
    constexpr uid_t Nobody = 65534;
    const bool asNobody = ::geteuid() == 0 && ::seteuid(Nobody) == 0;  // root may open everything
    FileHandle handle;
    EXPECT_EQ(registry.Open(0, handle), ResultAccessDenied);
    std::atomic<int> asked = 0;
    registry.SetPrivilegedOpener([&](const std::filesystem::path&, FileHandle& out) {
        ++asked;
        EXPECT_TRUE(registry.Find(0)) << "the list goes on while the question stands";
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        return out.OpenForReading("/dev/null");
    });
    std::thread other([&registry] {
        FileHandle own;
        EXPECT_EQ(registry.Open(0, own), ResultSuccess);
    });
    EXPECT_EQ(registry.Open(0, handle), ResultSuccess);
    other.join();
    EXPECT_EQ(registry.Open(0, handle), ResultSuccess);
    EXPECT_EQ(asked, 1);
    registry.SetPrivilegedOpener([&](const std::filesystem::path&, FileHandle& out) {
        EXPECT_EQ(asNobody ? ::seteuid(0) : 0, 0);
        m_system.AddDisk("sdb", "8:16", MiB, {{"diskseq", "6"}});
        return out.OpenForReading("/dev/null");
    });
    EXPECT_EQ(registry.Open(1, handle), ResultNotConnected) << "changed while the question stood";
    registry.SetPrivilegedOpener({});
}

// What ThreadSanitizer looks at: a refresh of the list beside a scan that opens its drive.
TEST_F(DiskEnumeratorTest, OneThreadListsDisksWhileAnotherOpensThem)
{
    for (const char* name : {"sda", "sdb", "sdc"}) {
        m_system.AddDisk(name, std::string("8:") + name, MiB);
    }
    ASSERT_EQ(m_enumerator.Enumerate(), 1);
    std::atomic<bool> listing = true;
    int opened = 0;
    std::thread opener([&] {
        for (std::uint32_t number = 0; listing || opened == 0; number = (number + 1) % 2) {
            OpenedSource source;
            EXPECT_EQ(OpenDriveSource(number, DriveFlush::Flush, source), ResultSuccess);
            EXPECT_EQ(source.sizeBytes, MiB);
            EXPECT_FALSE(IsRemovable(number));
            EXPECT_FALSE(DiskIdentity(number).empty());
            ++opened;
        }
    });
    for (int i = 0; i < 50; ++i) {
        m_system.Remove("sdc");
        EXPECT_EQ(m_enumerator.Enumerate(), 1);
        m_system.AddDisk("sdc", "8:sdc", MiB, {{"diskseq", std::to_string(i + 10)}});
        EXPECT_EQ(m_enumerator.Enumerate(), 1);
    }
    listing = false;
    opener.join();
    EXPECT_GT(opened, 0);
    EXPECT_EQ(m_enumerator.Disks.rbegin()->first, 52u)
        << "each medium of the third is another disk";
}

}  // namespace
