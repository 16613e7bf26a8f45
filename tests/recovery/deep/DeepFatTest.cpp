// Deep scans of real FAT volumes that were damaged as cards are: formatted over, tables wiped, several volumes in one
// image without a table.
#include "tests/recovery/deep/DeepSupport.h"
#include "tests/support/Bytes.h"
#include "tests/support/FatCard.h"
#include "tests/support/Pictures.h"
#include "tests/support/RunCommand.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

constexpr std::uint64_t Mebibyte = 1024 * 1024;

class DeepFatTest : public testing::Test
{
protected:
    void SetUp() override
    {
        if (const std::string missing = FatCard::MissingTools(); !missing.empty()) {
            GTEST_SKIP() << missing;
        }
    }

    // Live files in the root and two folders deep; a seed for other contents.
    void Fill(const FatCard& card, std::uint64_t seed)
    {
        card.MakeFolder("HOLIDAY");
        card.MakeFolder("HOLIDAY/A long folder name");
        Add(card, "root picture.png", MakePng(64, 48, seed + 1));
        for (std::uint64_t i = 0; i < 4; ++i) {
            const std::string number = std::to_string(i);
            Add(card, "HOLIDAY/p" + number + ".jpg", MakeJpeg(320, 240, seed + 10 + i));
            Add(card, "HOLIDAY/A long folder name/some sound " + number + ".xyz",
                RandomBytes(5000 + 700 * i, seed + 20 + i));
        }
    }
    void Add(const FatCard& card, const std::string& path, const ByteVector& bytes)
    {
        card.Put(path, bytes);
        m_originals[path] = bytes;
    }

    // How many originals stand among the restored files with their own bytes, under any path that ends in their name.
    int CountByteExact(const std::map<std::string, ByteVector>& restored) const
    {
        int count = 0;
        for (const auto& [path, bytes] : m_originals) {
            const std::string name = path.substr(path.rfind('/') + 1);
            for (const auto& [found, content] : restored) {
                if (found.ends_with(name) && content == bytes) {
                    ++count;
                    break;
                }
            }
        }
        return count;
    }

    DataFolder m_data;
    TempFolder m_folder;
    std::map<std::string, ByteVector> m_originals;
};

TEST_F(DeepFatTest, FilesOfACardThatWasFormattedOverComeBackInTheirFolders)
{
    const std::filesystem::path image = m_folder / "card.img";
    {
        FatCard card(image, {.volumeBytes = 96 * Mebibyte, .extra = {}});
        Fill(card, 100);
    }
    // mkfs.fat writes the areas before the data and the first cluster of the root, nothing else.
    (void)MustRun({"mkfs.fat", "-F", "32", "-s", "1", image.string()});
    DeepRun run(image);
    ASSERT_EQ(run.Scan(), ResultSuccess);
    const auto restored = run.Restore();
    // The root picture's name went with the root; its content is found by the carver.
    EXPECT_EQ(CountByteExact(restored), 8);
    EXPECT_EQ(restored.at("LostFolder3/A long folder name/some sound 2.xyz"),
              m_originals.at("HOLIDAY/A long folder name/some sound 2.xyz"));
}

struct WipedCase
{
    const char* name;
    int fatBits;
    std::uint64_t volumeBytes;
    std::uint32_t sectorsPerCluster;
    std::uint64_t wipedBytes;  // boot sector and FATs, not the root
};
std::ostream& operator<<(std::ostream& out, const WipedCase& wiped)
{
    return out << wiped.name;
}

class WipedTablesTest : public DeepFatTest, public testing::WithParamInterface<WipedCase>
{};

TEST_P(WipedTablesTest, DirectoriesAloneGiveTheVolumeBack)
{
    const WipedCase& wiped = GetParam();
    const std::filesystem::path path = m_folder / "card.img";
    {
        FatCard card(path, {.fatBits = wiped.fatBits,
                            .volumeBytes = wiped.volumeBytes,
                            .sectorsPerCluster = wiped.sectorsPerCluster,
                            .extra = {}});
        Fill(card, 200);
    }
    const ImageFile image(path);
    image.PutAt(0, ByteVector(wiped.wipedBytes));
    DeepRun run(path);
    ASSERT_EQ(run.Scan(), ResultSuccess);
    EXPECT_GE(CountByteExact(run.Restore()), 8);
}

INSTANTIATE_TEST_SUITE_P(Kinds,
                         WipedTablesTest,
                         testing::Values(WipedCase{"Fat12", 12, 4 * Mebibyte, 4, 4096},
                                         WipedCase{"Fat16", 16, 32 * Mebibyte, 4, 32768},
                                         WipedCase{"Fat32", 32, 80 * Mebibyte, 2, 600000}),
                         testing::PrintToStringParamName());

TEST_F(DeepFatTest, APreviewShowsWhatARestoreBrings)
{
    const FatCard card(m_folder / "card.img", {});
    Fill(card, 500);
    card.DeleteTree("HOLIDAY");
    DeepRun run(card.ImagePath(), ScanDepth::Whole);
    ASSERT_EQ(run.Scan(), ResultSuccess);
    // What was deleted the quick engine knows, what lives only the pass has seen.
    EXPECT_EQ(run.ComparePreviews(),
              (std::map<std::uint32_t, std::set<std::string>>{
                  {EngineKindFastFat, {"same"}}, {EngineKindProfessionalFat, {"same"}}}));
}

TEST_F(DeepFatTest, TwoVolumesInOneImageWithoutATableAreToldApart)
{
    const std::filesystem::path path = m_folder / "disk.img";
    FatOptions first{.fatBits = 16,
                     .volumeBytes = 24 * Mebibyte,
                     .sectorsPerCluster = 2,
                     .startByte = 1 * Mebibyte,
                     .tailBytes = 60 * Mebibyte,
                     .extra = {}};
    Fill(FatCard(path, first), 300);
    const auto firstOriginals = m_originals;
    TempFolder second;
    {
        FatCard card(
            second / "b.img",
            {.fatBits = 16, .volumeBytes = 40 * Mebibyte, .sectorsPerCluster = 4, .extra = {}});
        card.MakeFolder("OTHER");
        card.MakeFolder("THIRD");
        Add(card, "OTHER/one.png", MakePng(50, 40, 301));
        Add(card, "THIRD/two.png", MakePng(60, 40, 302));
    }
    ImageFile(path).PutAt(30 * Mebibyte, ReadFileBytes(second / "b.img"));
    DeepRun run(path);
    ASSERT_EQ(run.Scan(), ResultSuccess);
    EXPECT_GE(CountByteExact(run.Restore()), 10);
}

TEST_F(DeepFatTest, AFileKnownByNameIsNotShownAgainByContent)
{
    const std::filesystem::path path = m_folder / "card.img";
    FatCard card(path, {.volumeBytes = 64 * Mebibyte, .extra = {}});
    Add(card, "one.jpg", MakeJpeg(320, 240, 1));
    Add(card, "two.dat", MakeJpeg(320, 240, 2));
    card.Delete("one.jpg");
    card.Delete("two.dat");
    DeepRun run(path);
    ASSERT_EQ(run.Scan(), ResultSuccess);
    int carved = 0;
    for (const FileRecord& record : run.Search()) {
        carved += record.EngineKind == EngineKindCarved ? 1 : 0;
    }
    // The picture that calls itself "dat" has another extension, so both stand.
    EXPECT_EQ(carved, 1);
}

TEST_F(DeepFatTest, AResumedScanOfACardKeepsTheQuickStoreAndFindsEveryFileAgain)
{
    const std::filesystem::path path = m_folder / "card.img";
    FatCard card(path, {.volumeBytes = 64 * Mebibyte, .extra = {}});
    Fill(card, 500);
    for (const auto& [name, bytes] : m_originals) {
        card.Delete(name);
    }
    DeepRun whole(path);
    ASSERT_EQ(whole.Scan(), ResultSuccess);
    const auto expected = whole.Restore();
    const auto stores = whole.StoreBytes();
    for (const int reports : {4, 40, 400}) {
        const DataFolder own;
        DeepRun cancelled(path);
        int left = reports;
        ASSERT_EQ(
            cancelled.Scan([&](const DeepProgress&) { return --left <= 0 ? ResultCancelled : 0; }),
            ResultCancelled);
        DeepRun resumed(path);
        ASSERT_TRUE(resumed.Engine().HasResumableScan());
        ASSERT_EQ(resumed.Scan(), ResultSuccess);
        const auto found = resumed.Restore();
        for (const char* store : {"Fast", "Fast_Relation", "Fast_DirInfo"}) {
            EXPECT_EQ(resumed.StoreBytes().at(store), stores.at(store)) << store << reports;
        }
        // Paths of the deep stores begin anew with their numbers; the quick engine's and all contents stay.
        for (const auto& [name, bytes] : expected) {
            const bool isThere =
                std::any_of(found.begin(), found.end(),
                            [&bytes = bytes](const auto& file) { return file.second == bytes; });
            EXPECT_TRUE(isThere) << name << " " << reports;
        }
    }
}

class WholeDiskTest : public DeepFatTest, public testing::WithParamInterface<const char*>
{};

TEST_P(WholeDiskTest, FilesOfItsVolumesComeBack)
{
    if (const std::string missing = MissingTool({"sfdisk"}); !missing.empty()) {
        GTEST_SKIP() << missing;
    }
    const std::filesystem::path path = m_folder / "disk.img";
    Fill(FatCard(path, {.fatBits = 16,
                        .volumeBytes = 24 * Mebibyte,
                        .sectorsPerCluster = 2,
                        .startByte = 2 * Mebibyte,
                        .tailBytes = 8 * Mebibyte,
                        .extra = {}}),
         400);
    WriteFileBytes(m_folder / "table", Bytes(GetParam()));
    (void)MustRun(
        {"sh", "-c", "sfdisk -q --force " + path.string() + " < " + (m_folder / "table").string()});
    DeepRun run(path);
    ASSERT_EQ(run.Scan(), ResultSuccess);
    EXPECT_GE(CountByteExact(run.Restore()), 8);
}

INSTANTIATE_TEST_SUITE_P(
    Tables,
    WholeDiskTest,
    testing::Values("'label: dos' 0A 'start=4096, size=49152, type=6' 0A",
                    "'label: gpt' 0A 'start=4096, size=49152, type=linux' 0A"));

}  // namespace
