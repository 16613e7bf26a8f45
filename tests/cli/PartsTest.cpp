// Images of whole disks: real tables with real volumes in them, scanned part by part.
#include "platform/Text.h"
#include "tests/cli/CliFixture.h"
#include "tests/support/FailingReader.h"
#include "tests/support/LoopDevice.h"
#include "tests/support/RunCommand.h"

#include <csignal>
#include <set>

namespace {

constexpr std::uint64_t MiB = 1 << 20;
constexpr int FilesInEach = 90;

struct DiskCase
{
    const char* name;
    const char* table;
    std::uint64_t second;  // where the second volume begins
};

void PrintTo(const DiskCase& disk, std::ostream* out)
{
    *out << disk.name;
}

// Where the first volume ends lies a gap of 12 MiB; the second one is a logical partition in the table of the old kind.
const DiskCase Disks[] = {
    {"Dos",
     "label: dos\nstart=2048, size=32768, type=6\nstart=61440, size=53248, type=5\n"
     "start=63488, size=32768, type=6\n",
     63488},
    {"Gpt", "label: gpt\nstart=2048, size=32768\nstart=61440, size=32768\n", 61440}};

bool BeginsWith(const ByteVector& bytes, const ByteVector& start)
{
    return bytes.size() >= start.size() && std::equal(start.begin(), start.end(), bytes.begin());
}

class PartsTest : public CliFixture
{
protected:
    void SetUp() override
    {
        for (const std::string& why : {FatCard::MissingTools(), MissingTool({"sfdisk"})}) {
            if (!why.empty()) {
                GTEST_SKIP() << why;
            }
        }
    }

    // A volume of 16 MiB with named pictures, all deleted.
    ByteVector Volume(const std::string& prefix, std::uint32_t sectorsPerCluster)
    {
        const FatOptions options{.fatBits = 16,
                                 .volumeBytes = 16 * MiB,
                                 .sectorsPerCluster = sectorsPerCluster,
                                 .extra = {}};
        const FatCard card(m_folder / "volume.img", options);
        for (std::uint32_t i = 0; i < FilesInEach; ++i) {
            const std::string name = prefix + " " + std::to_string(i) + ".jpg";
            const ByteVector bytes = MakeJpeg(60 + i, 50, ++m_seed);
            card.Put(name, bytes);
            m_originals[name] = bytes;
        }
        card.Delete(prefix + " *.jpg");
        ByteVector bytes = ReadFileBytes(card.ImagePath());
        std::filesystem::remove(card.ImagePath());
        return bytes;
    }

    void MakeDisk(const DiskCase& disk)
    {
        const ImageFile image(Disk(), 64 * MiB);
        MakeTable(image.Path(), disk.table);
        // Their clusters differ: the geometry of one says nothing of the other.
        image.PutAt(MiB, Volume("first", 2));
        image.PutAt(disk.second * 512, Volume("second", 8));
        for (std::uint64_t i = 0; i < 3; ++i) {
            const ByteVector picture = MakeJpeg(300, 200, 1000 + i);
            m_lost.push_back(picture);
            image.PutAt((20 + i) * MiB, picture);
        }
    }

    std::string Disk() const { return (m_folder / "disk.img").string(); }

    Json::Value List(std::vector<std::string> arguments)
    {
        arguments.insert(arguments.begin(), "list");
        arguments.insert(arguments.end(), {"--json", "--types", "jpg"});
        return Parse(RunAsGiven(arguments).out);
    }

    // How many files with their names come from each part.
    std::map<unsigned, int> NamedIn(const Json::Value& report) const
    {
        std::map<unsigned, int> named;
        for (const Json::Value& file : report["files"]) {
            named[file["part"].asUInt()] += m_originals.contains(file["name"].asString()) ? 1 : 0;
        }
        return named;
    }

    Json::Value Scans() { return Parse(RunAsGiven({"scans", "--json"}).out)["scans"]; }

    std::map<std::string, ByteVector> m_originals;
    std::vector<ByteVector> m_lost;
    std::uint64_t m_seed = 0;
};

class TableTest : public PartsTest, public testing::WithParamInterface<DiskCase>
{};

INSTANTIATE_TEST_SUITE_P(Tables, TableTest, testing::ValuesIn(Disks), [](const auto& one) {
    return std::string(one.param.name);
});

TEST_P(TableTest, EveryPartGivesItsFilesWithTheirNames)
{
    MakeDisk(GetParam());
    const Outcome outcome =
        RunAsGiven({"recover", Disk(), (m_folder / "out").string(), "--json", "--types", "jpg"});
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    const Json::Value report = Parse(outcome.out);
    ASSERT_EQ(report["parts"].size(), 5u) << outcome.out;
    EXPECT_EQ(report["parts"][1]["fileSystem"], "FAT");
    EXPECT_EQ(report["parts"][3]["startSector"].asUInt64(), GetParam().second);
    for (const Json::Value& part : report["parts"]) {
        EXPECT_EQ(part["state"], "complete");
    }
    EXPECT_EQ(NamedIn(report)[2], FilesInEach);
    EXPECT_EQ(NamedIn(report)[4], FilesInEach);
    const auto files = FilesBelow(m_folder / "out/photo");
    for (const auto& [name, bytes] : m_originals) {
        ASSERT_TRUE(files.contains(name)) << name;
        EXPECT_EQ(files.at(name), bytes) << name;
    }
    for (const ByteVector& lost : m_lost) {
        EXPECT_TRUE(std::any_of(files.begin(), files.end(), [&lost](const auto& file) {
            return BeginsWith(file.second, lost);
        })) << "found by its content, whose end is not always known";
    }
}

TEST_P(TableTest, EachPartIsATargetOfItsOwn)
{
    MakeDisk(GetParam());
    const Json::Value targets = Parse(RunAsGiven({"targets", Disk(), "--json"}).out)["targets"];
    ASSERT_EQ(targets.size(), 6u);
    std::string kinds;
    for (const Json::Value& row : targets) {
        kinds += row["kind"].asString() + " ";
    }
    EXPECT_EQ(kinds, "gap partition gap partition gap disk ");
    EXPECT_EQ(targets[5]["sectorCount"].asUInt64(), 64 * MiB / 512);
    const Json::Value second = List({Disk() + "#4"});
    EXPECT_EQ(second["found"].asInt(), FilesInEach);
    EXPECT_EQ(NamedIn(second)[0], FilesInEach) << "of one piece no row names a part";
    EXPECT_FALSE(second.isMember("parts"));
    // What was scanned by itself is taken in the scan of all, and the other way round.
    const Outcome all = RunAsGiven({"scan", Disk()});
    EXPECT_NE(all.err.find("Part 4 (partition, FAT, 16.0 MB): Taking the results"),
              std::string::npos)
        << all.err;
    EXPECT_EQ(Scans().size(), 5u);
    EXPECT_EQ(Scans()[0]["target"].asString().find(Disk() + "#4, sectors "), 0u);
    EXPECT_NE(RunAsGiven({"scan", Disk() + "#2"}).err.find("Taking the results"),
              std::string::npos);
    const Outcome none = RunAsGiven({"scan", Disk() + "#7"});
    EXPECT_EQ(none.status, 3);
    EXPECT_NE(none.err.find("has no part #7"), std::string::npos) << none.err;
}

TEST_F(PartsTest, AsOnePieceItIsScannedAsWithoutATable)
{
    MakeDisk(Disks[0]);
    const Json::Value report = List({Disk(), "--as-one-piece"});
    EXPECT_FALSE(report.isMember("parts"));
    ASSERT_EQ(Scans().size(), 1u);
    EXPECT_EQ(Scans()[0]["target"], Disk());
    EXPECT_EQ(Scans()[0]["startSector"].asUInt64(), 0u);
    EXPECT_EQ(Scans()[0]["sectorCount"].asUInt64(), 64 * MiB / 512);
    // The whole under its number is the same.
    EXPECT_NE(RunAsGiven({"scan", Disk() + "#6", "--as-one-piece"}).err.find("Taking the results"),
              std::string::npos);
}

TEST_F(PartsTest, StoppedInTheSecondPartitionItGoesOnThere)
{
    MakeDisk(Disks[1]);
    // A scan of all sectors reads in known places.
    const Json::Value undisturbed = List({Disk(), "--whole"});
    EXPECT_EQ(RunAsGiven({"forget", "--all"}).status, 0);
    {
        FailingReader reader;
        reader.OnReadAt(Disks[1].second * 512 + 12 * MiB, 1, [] { std::raise(SIGINT); });
        const Outcome stopped = RunAsGiven({"list", Disk(), "--json", "--types", "jpg", "--whole"});
        EXPECT_EQ(stopped.status, 130);
        const Json::Value report = Parse(stopped.out);
        EXPECT_EQ(report["cancelled"], true);
        EXPECT_EQ(report["parts"][1]["state"], "complete");
        EXPECT_EQ(report["parts"][3]["state"], "stopped") << stopped.err;
        EXPECT_EQ(report["parts"][4]["state"], "notScanned");
    }
    EXPECT_EQ(Scans().size(), 4u);
    EXPECT_TRUE(Scans()[3]["state"].asString().starts_with("stopped at "));
    const Outcome resumed =
        RunAsGiven({"list", Disk(), "--json", "--types", "jpg", "--whole", "--resume"});
    EXPECT_EQ(resumed.status, 0) << resumed.err;
    EXPECT_NE(resumed.err.find("Part 4 (partition, FAT, 16.0 MB): Going on with"),
              std::string::npos)
        << resumed.err;
    const Json::Value after = Parse(resumed.out);
    EXPECT_EQ(NamedIn(after), NamedIn(undisturbed));
    EXPECT_EQ(after["found"], undisturbed["found"]);
}

TEST_F(PartsTest, APartThatCannotBeReadCostsNoOther)
{
    MakeDisk(Disks[1]);
    FailingReader reader;
    reader.FailBytes(MiB, MiB + 512);
    const Outcome outcome = RunAsGiven({"list", Disk(), "--json", "--types", "jpg"});
    EXPECT_EQ(outcome.status, 1) << outcome.err;
    const Json::Value report = Parse(outcome.out);
    EXPECT_EQ(report["parts"][1]["state"], "notOpened");
    EXPECT_EQ(NamedIn(report)[4], FilesInEach);
    reader.FailBytes(0, 64 * MiB);
    EXPECT_EQ(RunAsGiven({"list", Disk(), "--new"}).status, 3);
}

TEST_F(PartsTest, WhatARescueHasNotReadIsNeitherZerosNorFoundWhole)
{
    MakeDisk(Disks[1]);
    // Of the second lost picture a sector is missing; the third one stands in the same block as its end.
    const std::uint64_t hole = 21 * MiB + 1024;
    const std::string map = "0 + 1\n0 " + std::to_string(hole) + " +\n" + std::to_string(hole) +
                            " 512 -\n" + std::to_string(hole + 512) + " " +
                            std::to_string(64 * MiB - hole - 512) + " +\n";
    const ImageFile image(Disk());
    image.PutAt(hole, ByteVector(512));
    WriteFileBytes(Disk() + ".map", ByteVector(map.begin(), map.end()));
    const ByteVector behind = MakeJpeg(40, 30, 77);
    image.PutAt(21 * MiB + 60 * 512, behind);
    const Outcome outcome =
        RunAsGiven({"recover", Disk(), (m_folder / "out").string(), "--json", "--types", "jpg"});
    EXPECT_EQ(outcome.status, 1) << outcome.err;
    const Json::Value report = Parse(outcome.out);
    EXPECT_GE(report["unreadable"]["sectors"].asUInt64(), 1u);
    EXPECT_EQ(report["parts"][2]["state"], "incomplete");
    EXPECT_EQ(NamedIn(report)[2] + NamedIn(report)[4], 2 * FilesInEach);
    bool isThere = false;
    for (const auto& [name, bytes] : FilesBelow(m_folder / "out")) {
        isThere = isThere || BeginsWith(bytes, behind);
    }
    EXPECT_TRUE(isThere) << "what lies behind a missing sector in the same block";
    // A map that says nothing is missing, and one that is none, change nothing.
    for (const std::string& text : {std::string("0 + 1\n0 0x4000000 +\n"), std::string("no map")}) {
        WriteFileBytes(Disk() + ".map", ByteVector(text.begin(), text.end()));
        EXPECT_EQ(RunAsGiven({"scan", Disk(), "--new"}).status, 0);
    }
}

TEST_F(PartsTest, HostileTablesEndAndAreNotReadForAges)
{
    // Chained boot records that point at themselves, partitions that overlap or lie past the end.
    const ImageFile image(Disk(), 8 * MiB);
    const auto entry = [](std::uint8_t type, std::uint32_t start, std::uint32_t count) {
        ByteVector bytes(16);
        bytes[4] = type;
        for (std::size_t i = 0; i < 4; ++i) {
            bytes[8 + i] = static_cast<std::uint8_t>(start >> (8 * i));
            bytes[12 + i] = static_cast<std::uint8_t>(count >> (8 * i));
        }
        return bytes;
    };
    const auto table = [](const std::vector<ByteVector>& entries) {
        ByteVector sector(446);
        for (const ByteVector& one : entries) {
            sector = sector + one;
        }
        sector.resize(510);
        return sector + Bytes("55 AA");
    };
    image.PutAt(0, table({entry(6, 63, 0xFFFFFFFF), entry(7, 63, 16000), entry(5, 100, 16000),
                          entry(11, 0x80000000, 5)}));
    image.PutAt(100 * 512, table({entry(6, 1, 16000), entry(5, 0, 16000)}));
    image.PutAt(4 * MiB, MakeJpeg(100, 80, 1));
    const Json::Value report = List({Disk()});
    EXPECT_LE(report["parts"].size(), 8u);
    EXPECT_EQ(report["found"].asInt(), 1);
}

TEST_F(PartsTest, WhatIsNoTableIsScannedAsOnePiece)
{
    // Volumes whose first sectors end as a table does, a table without partitions, one that only protects another.
    const std::string volume = (m_folder / "volume.img").string();
    const std::vector<std::vector<std::string>> makers = {{"mkfs.fat", "-F", "32", volume},
                                                          {"mkntfs", "-F", "-Q", "-q", volume},
                                                          {"mkfs.exfat", volume},
                                                          {"mkfs.ext4", "-q", volume}};
    const std::map<std::string, std::string> words = {{"mkfs.exfat", "exFAT, which"},
                                                      {"mkfs.ext4", "ext4, which"}};
    for (const std::vector<std::string>& maker : makers) {
        if (!MissingTool({maker[0]}).empty()) {
            continue;
        }
        std::filesystem::remove(volume);
        const ImageFile image(volume, 40 * MiB);
        MustRun(maker);
        const Outcome outcome = RunAsGiven({"list", volume, "--json"});
        EXPECT_EQ(outcome.status, 0) << outcome.err;
        EXPECT_FALSE(Parse(outcome.out).isMember("parts")) << maker[0];
        EXPECT_EQ(outcome.err.find("not understood") != std::string::npos, words.contains(maker[0]))
            << outcome.err;
        if (words.contains(maker[0])) {
            EXPECT_NE(outcome.err.find(words.at(maker[0])), std::string::npos) << outcome.err;
        }
    }
    for (const char* table : {"label: dos\n", "label: dos\nstart=1, size=16383, type=ee\n"}) {
        std::filesystem::remove(volume);
        const ImageFile image(volume, 8 * MiB);
        MakeTable(volume, table);
        EXPECT_FALSE(List({volume}).isMember("parts")) << table;
    }
}

TEST_F(PartsTest, AnEncryptedVolumeIsNamed)
{
    const ImageFile image(Disk(), 4 * MiB);
    image.PutAt(0, Bytes("'LUKS' BA BE 00 01 'aes' 00*29 'xts-plain64' 00*21 'sha256'"));
    const Outcome outcome = RunAsGiven({"scan", Disk()});
    EXPECT_NE(outcome.err.find("This is LUKS, an encrypted volume"), std::string::npos)
        << outcome.err;
}

}  // namespace
