// Deep scans from the command line, and the log of earlier ones.
#include "tests/cli/CliFixture.h"
#include "tests/support/FailingReader.h"
#include "tests/support/RunCommand.h"

#include <csignal>
#include <tuple>

namespace {

class DeepCommandTest : public CardFixture
{
protected:
    int Found(const Outcome& outcome) { return Parse(outcome.out)["found"].asInt(); }
    Json::Value Scans() { return Parse(RunAsGiven({"scans", "--json"}).out)["scans"]; }
};

TEST_F(DeepCommandTest, DeepIsTheDefaultAndEveryFileSaysWhichDepthFoundIt)
{
    const Json::Value report =
        Parse(RunAsGiven({"list", Card(), "--json", "--types", "all", "--doubles"}).out);
    std::map<std::string, int> engines;
    for (const Json::Value& file : report["files"]) {
        ++engines[file["engine"].asString()];
    }
    EXPECT_EQ(engines["fast-fat"], 7);
    EXPECT_GE(engines["deep-fat"] + engines["carved"], 1);
    const Outcome recovered = RunAsGiven({"recover", Card(), (m_folder / "out").string()});
    EXPECT_EQ(recovered.status, 0) << recovered.err;
    const auto files = FilesBelow(m_folder / "out");
    EXPECT_EQ(files.at("photo/first picture.jpg"), m_originals.at("first picture.jpg"));
}

TEST_F(DeepCommandTest, AWholeScanKeepsWhatTheQuickStageKnowsAndShowsNoFileTwice)
{
    // An earlier scan that passed over what the file system uses does not stand in for one of all sectors.
    EXPECT_EQ(RunAsGiven({"scan", Card()}).status, 0);
    const Outcome outcome =
        RunAsGiven({"list", Card(), "--json", "--types", "all", "--whole", "--resume"});
    EXPECT_NE(outcome.err.find("No earlier scan"), std::string::npos) << outcome.err;
    std::map<std::string, int> names;
    std::map<std::string, int> engines;
    const Json::Value report = Parse(outcome.out);
    for (const Json::Value& file : report["files"]) {
        ++names[file["path"].asString() + file["name"].asString()];
        ++engines[file["engine"].asString()];
    }
    EXPECT_EQ(engines["fast-fat"], 7);
    EXPECT_EQ(names.count("Lake\\first picture.jpg"), 1u);
    EXPECT_EQ(names["Lake\\first picture.jpg"], 1);
    // Living files too: the pass reads what is in use.
    EXPECT_EQ(names.size(), m_originals.size()) << outcome.out;
    EXPECT_EQ(RunAsGiven({"scan", Card(), "--whole", "--resume"}).err.find("No earlier scan"),
              std::string::npos);
}

TEST_F(DeepCommandTest, AQuickStageThatFailsEndsADeepScanAndIsAWarningInAWholeOne)
{
    if (const std::string missing = MissingTool({"mkntfs", "ntfscp"}); !missing.empty()) {
        GTEST_SKIP() << missing;
    }
    const std::string volume = (m_folder / "volume.img").string();
    const ImageFile image(volume, 16 * 1024 * 1024);
    MustRun({"mkntfs", "-F", "-Q", "-q", "-c", "4096", volume});
    for (std::uint64_t i = 0; i < 30; ++i) {
        WriteFileBytes(m_folder / "file", MakeJpeg(60, 50, i));
        MustRun({"ntfscp", volume, (m_folder / "file").string(), std::to_string(i) + ".jpg"});
    }
    // The table of files, which the quick stage reads in large pieces.
    const ByteVector boot = image.Read(0, 512);
    FailingReader reader;
    const std::uint64_t bad = std::uint64_t{boot[48]} * 4096 + 64 * 1024;
    reader.FailBytes(bad, bad + 512);
    const Outcome deep = RunAsGiven({"scan", volume});
    EXPECT_EQ(deep.status, 3) << deep.err;
    EXPECT_NE(deep.err.find("--whole"), std::string::npos) << deep.err;
    EXPECT_EQ(deep.err.find("make an image"), std::string::npos) << "of an image: " << deep.err;
    const Outcome whole = RunAsGiven({"list", volume, "--whole", "--json", "--types", "all"});
    EXPECT_EQ(whole.status, 1) << "sectors are missing";
    EXPECT_NE(whole.err.find("Warning: what the file system knows"), std::string::npos)
        << whole.err;
    EXPECT_GT(Found(whole), 0);
}

// What is left out has to be, byte for byte, in what is shown.
class DoublesTest : public CliFixture
{
protected:
    static ByteVector BytesOf(const Json::Value& file)
    {
        return file["restoredTo"].isNull() ? ByteVector()
                                           : ReadFileBytes(file["restoredTo"].asString());
    }

    // How many rows are marked; each is held against the one that it names.
    int CheckedDoubles(const std::string& card, const std::string& folder)
    {
        const Json::Value report = Parse(
            RunAsGiven({"recover", card, folder, "--types", "all", "--json", "--doubles"}).out);
        std::map<std::string, ByteVector> shown;
        for (const Json::Value& file : report["files"]) {
            if (!file.isMember("doubleOf")) {
                shown[file["engine"].asString() + file["place"].asString()] = BytesOf(file);
            }
        }
        int doubles = 0;
        for (const Json::Value& file : report["files"]) {
            if (!file.isMember("doubleOf")) {
                continue;
            }
            ++doubles;
            const Json::Value& named = file["doubleOf"];
            const ByteVector& expected =
                shown.at(named["engine"].asString() + named["place"].asString());
            ByteVector bytes = BytesOf(file);
            if (file["engine"] == "carved") {
                bytes.resize(std::min(bytes.size(), expected.size()));  // it may be longer
            }
            EXPECT_TRUE(bytes == expected) << card << ' ' << file["name"].asString();
        }
        const Json::Value rest = Parse(RunAsGiven({"list", card, "--types", "all", "--json"}).out);
        EXPECT_EQ(rest["doublesLeftOut"].asInt(), doubles);
        EXPECT_EQ(rest["found"].asInt() + doubles, report["found"].asInt());
        return doubles;
    }

    static ByteVector Document(std::size_t bytes, std::uint64_t seed)
    {
        ByteVector document = RandomBytes(bytes, seed);
        const ByteVector head = Bytes("D0 CF 11 E0 A1 B1 1A E1");
        std::copy(head.begin(), head.end(), document.begin());
        return document;
    }
};

TEST_F(DoublesTest, OnlyRowsWithTheBytesOfTheNamedOneAreLeftOut)
{
    if (const std::string missing = FatCard::MissingTools(); !missing.empty()) {
        GTEST_SKIP() << missing;
    }
    int number = 0;
    for (const auto& [fatBits, megabytes, sectorsPerCluster] :
         {std::tuple(12, 4, 4u), std::tuple(16, 32, 4u), std::tuple(32, 64, 1u)}) {
        FatOptions options;
        options.fatBits = fatBits;
        options.volumeBytes = static_cast<std::uint64_t>(megabytes) << 20;
        options.sectorsPerCluster = sectorsPerCluster;
        const std::string name = "card" + std::to_string(++number);
        const FatCard card(m_folder / (name + ".img"), options);
        card.MakeFolder("Gone");
        card.Put("Gone/picture.jpg", MakeJpeg(300, 200, 1));
        card.Put("Gone/empty.jpg", {});
        card.Put("Gone/same content.jpg", MakeJpeg(300, 200, 1));
        card.Put("hole.bin", RandomBytes(9000, 2));
        card.Put("living.jpg", MakeJpeg(100, 80, 3));
        card.Delete("hole.bin");
        card.Put("in pieces.doc", Document(30000, 4));  // the first of them in the hole
        card.Put("whole.doc", Document(20000, 5));
        card.Delete("in pieces.doc");
        card.Delete("whole.doc");
        card.DeleteTree("Gone");
        EXPECT_GE(CheckedDoubles(card.ImagePath().string(), (m_folder / name).string()), 1) << name;
    }
}

TEST_F(DeepCommandTest, AnEarlierScanIsTakenUnlessItIsDeclined)
{
    const int found = Found(RunAsGiven({"list", Card(), "--json", "--types", "all"}));
    const Outcome again = RunAsGiven({"list", Card(), "--json", "--types", "all"});
    EXPECT_EQ(Found(again), found);
    EXPECT_NE(again.err.find("earlier scan (complete"), std::string::npos) << again.err;
    const std::string number = Scans()[0]["number"].asString();
    std::istringstream declined("n\n");
    EXPECT_EQ(RunAsGiven({"scan", Card()}, true, &declined).status, 0);
    EXPECT_NE(Scans()[0]["number"].asString(), number) << "declined, so scanned anew";
    EXPECT_EQ(RunAsGiven({"scan", Card(), "--new"}).status, 0);
    EXPECT_EQ(Scans().size(), 1u);
}

TEST_F(DeepCommandTest, AStoppedScanIsGoneOnWith)
{
    const ImageFile disk(m_folder / "disk.img", 16 * 1024 * 1024);
    disk.Put(1000, MakeJpeg(64, 48, 1));
    disk.Put(30000, MakeJpeg(64, 48, 2));
    FailingReader reader;
    reader.OnReadAt(8 * 1024 * 1024, 1, [] { std::raise(SIGINT); });
    const std::string path = disk.Path().string();
    EXPECT_EQ(RunAsGiven({"list", path, "--json"}).status, 130);
    EXPECT_TRUE(Scans()[0]["state"].asString().starts_with("stopped at "));
    const Outcome after = RunAsGiven({"list", path, "--json"});
    EXPECT_EQ(after.status, 0);
    EXPECT_NE(after.err.find("Going on with an earlier scan (stopped at "), std::string::npos)
        << after.err;
    EXPECT_EQ(Found(after), 2);
}

TEST_F(DeepCommandTest, ForgettingRemovesTheRecords)
{
    ASSERT_EQ(RunAsGiven({"scan", Card()}).status, 0);
    const std::string number = Scans()[0]["number"].asString();
    const std::filesystem::path log = m_folder / "data/OrvantaLumivault/ScanLog" / number;
    EXPECT_TRUE(std::filesystem::exists(log));
    EXPECT_EQ(RunAsGiven({"forget", number}).status, 0);
    EXPECT_FALSE(std::filesystem::exists(log));
    EXPECT_EQ(Scans().size(), 0u);
    EXPECT_EQ(RunAsGiven({"forget", "--all"}).status, 0);
}

}  // namespace
