// The commands on drives: loop devices with real partition tables and file systems.
#include "storage/DiskHelpers.h"
#include "tests/cli/CliFixture.h"
#include "tests/support/LoopDevice.h"
#include "tests/support/RunCommand.h"

#include <algorithm>
#include <sstream>

namespace {

constexpr std::uint64_t MiB = 1 << 20;

class DiskCommandTest : public CliFixture
{
protected:
    void SetUp() override
    {
        for (const std::string& why : {FatCard::MissingTools(), LoopDevice::WhyNot()}) {
            if (!why.empty()) {
                GTEST_SKIP() << why;
            }
        }
    }

    // No command writes to the source, whatever it does.
    Outcome Run(const std::vector<std::string>& arguments, const std::string& answers = {})
    {
        const std::string before = Hash();
        Outcome outcome = RunOnMounted(arguments, answers);
        EXPECT_EQ(Hash(), before) << "the source was written to";
        return outcome;
    }

    // The system itself writes to a disk with a mounted file system on it.
    Outcome RunOnMounted(const std::vector<std::string>& arguments, const std::string& answers = {})
    {
        std::istringstream in(answers);
        return RunAsGiven(arguments, false, answers.empty() ? nullptr : &in);
    }

    std::string Hash() const
    {
        return std::filesystem::exists(m_disk) ? MustRun({"sha256sum", m_disk}) : std::string();
    }

    // The rows of one device.
    std::vector<Json::Value> Targets(const std::filesystem::path& device)
    {
        const Outcome outcome = Run({"targets", "--json"});
        EXPECT_EQ(outcome.status, 0) << outcome.err;
        std::vector<Json::Value> rows;
        const Json::Value document = Parse(outcome.out);
        for (const Json::Value& row : document["targets"]) {
            if (row["device"].asString() == device) {
                rows.push_back(row);
            }
        }
        return rows;
    }

    static std::string Number(const Json::Value& row)
    {
        return "#" + std::to_string(row["number"].asUInt());
    }

    // A disk with two partitions, both FAT; pictures of the second are deleted.
    void MakeTwoPartitions()
    {
        const ImageFile image(m_disk, 100 * MiB);
        MakeTable(m_disk,
                  "label: dos\nstart=2048, size=81920, type=c\nstart=90000, size=81920, type=c\n");
        FatOptions options;
        options.volumeBytes = 40 * MiB;
        for (const std::uint64_t start : {std::uint64_t{2048}, std::uint64_t{90000}}) {
            options.startByte = 0;
            options.extra = {"-n", start == 2048 ? "FIRST" : "SECOND"};
            const FatCard volume(m_folder / "volume", options);
            volume.Put(start == 2048 ? "other.png" : "kept.png", MakePng(30, 30, start));
            volume.Put("lost picture.jpg", start == 2048 ? m_firstLost : m_secondLost);
            volume.Delete("lost picture.jpg");
            image.PutAt(start * 512, ReadFileBytes(m_folder / "volume"));
            std::filesystem::remove(m_folder / "volume");
        }
    }

    const ByteVector m_firstLost = MakeJpeg(640, 480, 2);
    const ByteVector m_secondLost = MakeJpeg(640, 480, 4);
    const std::filesystem::path m_disk = m_folder / "disk.img";
};

TEST_F(DiskCommandTest, TheListIsRightWithAndWithoutPartitionNodes)
{
    MakeTwoPartitions();
    LoopDevice loop(m_disk);
    const std::vector<Json::Value> rows = Targets(loop.Node());
    ASSERT_EQ(rows.size(), 4u);
    EXPECT_EQ(rows[0]["label"], "FIRST");
    EXPECT_GT(rows[0]["freeBytes"].asUInt64(), 30 * MiB);
    EXPECT_EQ(rows[3]["kind"], "disk");
    EXPECT_EQ(rows[3]["sectorCount"].asUInt64(), 100 * MiB / 512) << "to its last sector";
    EXPECT_TRUE(rows[3]["freeBytes"].isNull());
    loop.AddPartitionNodes();
    EXPECT_EQ(Targets(loop.Node()), rows);
    const Outcome table = Run({"targets"});
    EXPECT_NE(table.out.find(loop.PartitionNode(2)), std::string::npos) << table.out;
    EXPECT_NE(table.out.find("SECOND"), std::string::npos) << table.out;
}

TEST_F(DiskCommandTest, DisksOfLargeSectorsAreCountedInTheirOwn)
{
    const ImageFile image(m_disk, 320 * MiB);
    const LoopDevice loop(m_disk, 4096);
    MakeTable(loop.Node(), "label: gpt\nstart=256, size=2560\nstart=4000, size=71680\n");
    FatOptions options;
    options.volumeBytes = 280 * MiB;
    options.sectorSize = 4096;
    const FatCard volume(m_folder / "volume", options);
    const ByteVector lost = MakeJpeg(640, 480, 1);
    volume.Put("lost.jpg", lost);
    volume.Delete("lost.jpg");
    image.PutAt(4000 * 4096, ReadFileBytes(volume.ImagePath()));
    const std::vector<Json::Value> rows = Targets(loop.Node());
    ASSERT_EQ(rows.size(), 3u) << "an area below a cylinder is no gap";
    EXPECT_EQ(rows[1]["startSector"].asUInt64(), 4000u);
    EXPECT_EQ(rows[1]["sectorSize"].asUInt(), 4096u);
    EXPECT_EQ(rows[1]["fileSystem"], "FAT32");
    for (const char* depth : {"--fast", "--new"}) {
        std::filesystem::remove_all(m_folder / "out");
        const Outcome outcome =
            Run({"recover", Number(rows[1]), (m_folder / "out").string(), depth});
        EXPECT_EQ(outcome.status, 0) << outcome.err;
        const auto files = FilesBelow(m_folder / "out");
        EXPECT_TRUE(std::any_of(files.begin(), files.end(), [&lost](const auto& file) {
            return file.second == lost;
        })) << depth;
    }
}

TEST_F(DiskCommandTest, ADeletedFileComesBackFromThePartitionAndFromTheWholeDisk)
{
    MakeTwoPartitions();
    LoopDevice loop(m_disk);
    loop.AddPartitionNodes();
    const std::string number = Number(Targets(loop.Node()).at(1));
    const Outcome outcome = Run({"recover", loop.PartitionNode(2), (m_folder / "out").string(),
                                 "--fast", "--types", "all"});
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_EQ(FilesBelow(m_folder / "out"),
              (std::map<std::string, ByteVector>{{"photo/lost picture.jpg", m_secondLost}}))
        << "only what is on the second partition";
    // A scan of a partition is resumed as long as it is the same: the log knows it by disk and place.
    EXPECT_EQ(Run({"scan", number}).status, 0);
    const Outcome again = Run({"scan", loop.PartitionNode(2)});
    EXPECT_NE(again.err.find("Taking the results of an earlier scan"), std::string::npos)
        << again.err;
    // In a scan of the whole disk both are found by their content, whose end is not always known.
    std::filesystem::remove_all(m_folder / "out");
    const Outcome whole = Run({"recover", loop.Node(), (m_folder / "out").string()});
    EXPECT_EQ(whole.status, 0) << whole.err << whole.out;
    const auto files = FilesBelow(m_folder / "out");
    for (const ByteVector& lost : {m_firstLost, m_secondLost}) {
        EXPECT_TRUE(std::any_of(files.begin(), files.end(), [&lost](const auto& file) {
            return file.second.size() >= lost.size() &&
                   std::equal(lost.begin(), lost.end(), file.second.begin());
        }));
    }
}

TEST_F(DiskCommandTest, OfAMountedVolumeADeletionAMomentAgoIsSeen)
{
    if (const std::string missing = MissingTool({"ntfs-3g", "mkntfs", "mount"}); !missing.empty()) {
        GTEST_SKIP() << missing;
    }
    const ImageFile image(m_disk, 64 * MiB);
    const LoopDevice loop(m_disk);
    MustRun(
        {"mkntfs", "-F", "-Q", "-q", "-s", "512", "-p", "0", "-H", "255", "-S", "63", loop.Node()});
    const auto find = [this, &loop](const std::string& name) {
        const Outcome listing = RunOnMounted({"list", loop.Node(), "--fast"});
        EXPECT_EQ(listing.status, 0) << listing.err;
        return listing.out.find(name) != std::string::npos;
    };
    std::optional<Mount> mount;
    try {
        mount.emplace(std::vector<std::string>{"ntfs-3g", loop.Node()}, m_folder / "mounted");
    } catch (const std::exception& error) {
        GTEST_SKIP() << error.what();
    }
    EXPECT_EQ(Targets(loop.Node()).at(0)["mountPoint"], (m_folder / "mounted").string());
    EXPECT_EQ(GetFileSystemName(m_folder / "mounted/new/folder"), "NTFS");
    for (int i = 0; i < 5; ++i) {
        const std::string name = "picture" + std::to_string(i) + ".jpg";
        WriteFileBytes(mount->Folder() / name, MakeJpeg(640, 480, static_cast<std::uint64_t>(i)));
        EXPECT_FALSE(find(name)) << "and what the scan read stays in no cache";
        std::filesystem::remove(mount->Folder() / name);
        EXPECT_TRUE(find(name)) << i;
    }
}

TEST_F(DiskCommandTest, NothingIsWrittenOntoTheSource)
{
    if (const std::string missing = MissingTool({"mkfs.ext4", "mount"}); !missing.empty()) {
        GTEST_SKIP() << missing;
    }
    const ImageFile image(m_disk, 120 * MiB);
    MakeTable(m_disk,
              "label: dos\nstart=2048, size=122880, type=83\nstart=126976, size=81920, type=c\n");
    FatOptions fat;
    fat.volumeBytes = 40 * MiB;
    const FatCard volume(m_folder / "volume", fat);
    volume.Put("lost picture.jpg", MakeJpeg(320, 200, 1));
    volume.Delete("lost picture.jpg");
    image.PutAt(126976 * 512, ReadFileBytes(volume.ImagePath()));
    LoopDevice loop(m_disk);
    loop.AddPartitionNodes();
    MustRun({"mkfs.ext4", "-q", loop.PartitionNode(1)});
    const Mount mount({"mount", "-o", "noatime", loop.PartitionNode(1)}, m_folder / "ext");
    std::filesystem::create_directory(m_folder / "ext/sub");
    const Mount bound({"mount", "--bind", m_folder / "ext/sub"}, m_folder / "bound");
    // A drive whose bytes lie in a file on the source.
    const ImageFile inner(m_folder / "ext/inner.img", 30 * MiB);
    MustRun({"mkfs.ext4", "-q", inner.Path()});
    const LoopDevice innerLoop(inner.Path());
    const Mount innerMount({"mount", "-o", "noatime", innerLoop.Node()}, m_folder / "inner");
    MustRun({"sync"});

    const std::string whole = loop.Node();
    const std::string ext = loop.PartitionNode(1);
    const std::string other = loop.PartitionNode(2);
    const auto places = {m_folder / "ext", m_folder / "ext/not/yet", m_folder / "bound",
                         m_folder / "inner"};
    for (const std::filesystem::path& place : places) {
        for (const std::string& source : {whole, ext}) {
            const Outcome refused =
                RunOnMounted({"recover", source, place.string(), "--types", "jpg"});
            EXPECT_EQ(refused.status, 2) << source << ' ' << place;
            EXPECT_NE(refused.err.find("lies on the source itself"), std::string::npos)
                << refused.err;
        }
    }
    for (const std::filesystem::path& place :
         {m_folder / "ext", m_folder / "bound", m_folder / "inner"}) {
        const Outcome refused =
            RunOnMounted({"image", ext, (place / "new.img").string(), "--force"});
        EXPECT_EQ(refused.status, 2) << place;
        EXPECT_NE(refused.err.find("lies on the source itself"), std::string::npos) << refused.err;
        EXPECT_FALSE(std::filesystem::exists(place / "new.img"));
    }
    // The file that is shown as the disk is the disk.
    EXPECT_EQ(RunOnMounted({"image", whole, m_disk.string(), "--force"}).status, 2);
    EXPECT_EQ(RunOnMounted({"image", innerLoop.Node(), inner.Path().string(), "--force"}).status,
              2);
    // What is no plain file is never written to.
    EXPECT_EQ(RunOnMounted({"image", other, "/dev/null", "--force"}).status, 2);
    EXPECT_EQ(RunOnMounted({"image", other, innerLoop.Node().string(), "--force"}).status, 2);
    // Too little room, by one byte's worth: the source must be smaller than what is free.
    const Outcome full = RunOnMounted({"image", other, (m_folder / "inner/new.img").string()});
    EXPECT_EQ(full.status, 2);

    // Another partition of the same disk is another place.
    const Outcome allowed =
        RunOnMounted({"recover", other, (m_folder / "ext/out").string(), "--fast"});
    EXPECT_EQ(allowed.status, 0) << allowed.err;
    EXPECT_EQ(ReadFileBytes(m_folder / "ext/out/photo/lost picture.jpg"), MakeJpeg(320, 200, 1));
}

TEST_F(DiskCommandTest, AnImageEndsAtTheFirstBadSectorAndAsksBeforeItOverwrites)
{
    const ImageFile image(m_disk, 10 * MiB);
    image.PutAt(0, RandomBytes(10 * MiB, 3));
    const LoopDevice loop(m_disk);
    const std::string file = (m_folder / "copy.img").string();
    const ByteVector whole = ReadFileBytes(m_disk);
    EXPECT_EQ(Run({"image", loop.Node(), file}).status, 0);
    EXPECT_EQ(Run({"image", loop.Node(), file}).status, 2) << "it exists";
    EXPECT_EQ(Run({"image", loop.Node(), file}, "n\n").status, 2);
    EXPECT_EQ(Run({"image", loop.Node(), file}, "y\n").status, 0);
    EXPECT_EQ(Run({"image", loop.Node(), (m_folder / "no/folder.img").string()}).status, 2);

    image.Truncate(5 * MiB);
    const Outcome broken = Run({"image", loop.Node(), (m_folder / "part.img").string()});
    EXPECT_EQ(broken.status, 3);
    EXPECT_NE(broken.err.find("could not be read at sector 10240"), std::string::npos)
        << broken.err;
    EXPECT_NE(broken.err.find("that were read before stand in"), std::string::npos) << broken.err;
    const ByteVector part = ReadFileBytes(m_folder / "part.img");
    EXPECT_EQ(part.size(), 5 * MiB);
    EXPECT_TRUE(std::equal(part.begin(), part.end(), whole.begin()));
    // Over the longer one: its tail is told of.
    EXPECT_NE(Run({"image", loop.Node(), file, "--force"}).err.find("is still there"),
              std::string::npos);
}

TEST_F(DiskCommandTest, ARescueLeavesOutExactlyTheSectorsThatFail)
{
    const ImageFile image(m_disk, 6 * MiB);
    image.PutAt(0, RandomBytes(6 * MiB, 4));
    const LoopDevice loop(m_disk);
    const ByteVector whole = ReadFileBytes(m_disk);
    constexpr std::size_t Left = 5 * MiB + 3 * 512;  // in the middle of a page
    image.Truncate(Left);
    const std::string file = (m_folder / "copy.img").string();
    const Outcome plain = Run({"image", loop.Node(), (m_folder / "plain.img").string()});
    EXPECT_NE(plain.err.find("sector 10243."), std::string::npos) << plain.err;
    EXPECT_NE(plain.err.find("--rescue"), std::string::npos) << plain.err;

    const Outcome first = Run({"image", loop.Node(), file, "--rescue", "--retries", "1"});
    EXPECT_EQ(first.status, 1) << first.err;
    EXPECT_NE(first.err.find("1022.5 KB of 6.0 MB are missing, 1022.5 KB of them in 1 place"),
              std::string::npos)
        << first.err;
    ByteVector expected = whole;
    std::fill(expected.begin() + static_cast<std::ptrdiff_t>(Left), expected.end(), 0);
    EXPECT_EQ(ReadFileBytes(file), expected);

    // Gone on with where an earlier run was at the edges: the good sectors of a page with a bad one come all the same.
    const std::string second = (m_folder / "second.img").string();
    const std::string map = "0 * 1\n0 5242880 ?\n5242880 1048576 *\n";
    WriteFileBytes(second, {});
    WriteFileBytes(second + ".map", ByteVector(map.begin(), map.end()));
    EXPECT_EQ(Run({"image", loop.Node(), second, "--rescue"}).status, 1);
    EXPECT_EQ(ReadFileBytes(second), expected);

    image.PutAt(Left, {whole.begin() + static_cast<std::ptrdiff_t>(Left), whole.end()});
    const Outcome healed = Run({"image", loop.Node(), file, "--rescue", "--retries", "1"});
    EXPECT_EQ(healed.status, 0) << healed.err;
    EXPECT_NE(healed.err.find("Going on with an earlier rescue."), std::string::npos);
    EXPECT_EQ(ReadFileBytes(file), whole);
    EXPECT_EQ(Run({"image", loop.Node(), file, "--retries", "1"}).status, 2);
}

}  // namespace
