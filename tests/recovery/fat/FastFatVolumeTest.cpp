// The quick FAT engine on real volumes: what mdel and mdeltree removed comes back.
#include "recovery/RestoreSupport.h"
#include "recovery/fat/FastFatRecovery.h"
#include "tests/support/Bytes.h"
#include "tests/support/FatCard.h"
#include "tests/support/Pictures.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <map>

namespace {

constexpr std::uint64_t Mebibyte = 1024 * 1024;

struct VolumeCase
{
    const char* name;
    int fatBits;
    std::uint64_t volumeBytes;
    std::uint32_t sectorsPerCluster;
    bool allComesBack;  // FAT12 entries are read as 16 bits, so its chains can lead astray
};
std::ostream& operator<<(std::ostream& out, const VolumeCase& volume)
{
    return out << volume.name;
}

class FastFatVolumeTest : public testing::TestWithParam<VolumeCase>
{
protected:
    void SetUp() override
    {
        if (const std::string missing = FatCard::MissingTools(); !missing.empty()) {
            GTEST_SKIP() << missing;
        }
        const VolumeCase& volume = GetParam();
        m_card.emplace(m_folder / "card.img",
                       FatOptions{.fatBits = volume.fatBits,
                                  .volumeBytes = volume.volumeBytes,
                                  .sectorsPerCluster = volume.sectorsPerCluster,
                                  .extra = {}});
    }

    // Named as the engine shall name it; live files between the deleted ones keep their clusters.
    void AddDeleted(const std::string& path, const std::string& foundAs, const ByteVector& bytes)
    {
        m_card->Put(path, bytes);
        m_card->Put(path + ".live", RandomBytes(700, path.size()));
        m_expected[foundAs] = bytes;
        m_toDelete.push_back(path);
    }

    // Found files by path, restored.
    std::map<std::string, ByteVector> ScanAndRestore(CFastFatRecovery& engine)
    {
        EXPECT_EQ(engine.OpenImageFile(m_card->ImagePath(), 1001), ResultSuccess);
        EXPECT_EQ(engine.Scan(nullptr), ResultSuccess);
        FileRecordList records;
        EXPECT_EQ(engine.SearchRecords(AllFilesPattern, records), 1);
        std::map<std::string, ByteVector> files;
        for (const FileRecord& record : records) {
            std::string path;
            EXPECT_EQ(engine.GetRecordPath(&record, path), ResultSuccess);
            std::replace(path.begin(), path.end(), '\\', '/');
            path += record.NameText();
            const std::filesystem::path to = m_folder / "restored";
            std::filesystem::remove(to);
            if (engine.RestoreRecord(&record, to, 0) == ResultSuccess) {
                files[path] = ReadFileBytes(to);
            }
        }
        return files;
    }

    DataFolder m_data;
    TempFolder m_folder;
    std::optional<FatCard> m_card;
    std::map<std::string, ByteVector> m_expected;
    std::vector<std::string> m_toDelete;
};

TEST_P(FastFatVolumeTest, DeletedFilesComeBackByteForByteUnderTheirNames)
{
    m_card->MakeFolder("Holiday");
    m_card->MakeFolder("Holiday/Zweiter Ordner mit Ümläuten");
    m_card->MakeFolder("GONE");
    m_card->MakeFolder("GONE/Inner folder");
    AddDeleted("A picture with a long name.jpg", "A picture with a long name.jpg",
               MakeJpeg(640, 480, 1));
    AddDeleted("SHORT.PNG", "!hort.png", MakePng(60, 50, 2));
    AddDeleted("Holiday/海の写真.png", "Holiday/海の写真.png", MakePng(90, 70, 3));
    AddDeleted("Holiday/Zweiter Ordner mit Ümläuten/Фото.bmp",
               "Holiday/Zweiter Ordner mit Ümläuten/Фото.bmp", MakeBmp(64, 50, 4));
    AddDeleted("Holiday/no extension", "Holiday/no extension", RandomBytes(4321, 5));
    AddDeleted("Holiday/empty file.txt", "Holiday/empty file.txt", {});
    // In a folder that is deleted as a whole, live and deleted alike. Nothing is written after the first deletion.
    const ByteVector inner = MakeJpeg(320, 240, 6);
    m_card->Put("GONE/Inner folder/still here.jpg", inner);
    for (const std::string& path : m_toDelete) {
        m_card->Delete(path);
    }
    m_card->DeleteTree("GONE");
    m_expected["!one/Inner folder/still here.jpg"] = inner;

    CFastFatRecovery engine(OpenLog());
    const auto restored = ScanAndRestore(engine);
    std::size_t exact = 0;
    std::string wrong;
    for (const auto& [path, bytes] : m_expected) {
        const auto found = restored.find(path);
        ASSERT_NE(found, restored.end()) << path;
        exact += found->second == bytes ? 1u : 0u;
        wrong += found->second == bytes ? "" : " " + path;
        EXPECT_EQ(found->second.size(), bytes.size()) << path;
    }
    RecordProperty("byteExact", static_cast<int>(exact));
    EXPECT_TRUE(exact == m_expected.size() || !GetParam().allComesBack) << wrong;
    EXPECT_GE(exact, m_expected.size() / 2);
}

TEST_P(FastFatVolumeTest, AFolderComesBackWithAllBelowIt)
{
    m_card->MakeFolder("TOP");
    m_card->MakeFolder("TOP/MIDDLE");
    m_card->MakeFolder("TOP/MIDDLE/LOW");
    AddDeleted("TOP/the first one.xyz", "the first one.xyz", RandomBytes(3000, 1));
    AddDeleted("TOP/MIDDLE/LOW/the second.xyz", "middle/low/the second.xyz", RandomBytes(5000, 2));
    for (const std::string& path : m_toDelete) {
        m_card->Delete(path);
    }
    CFastFatRecovery engine(OpenLog());
    ASSERT_EQ(ScanAndRestore(engine).size(), 2u);
    FileRecordList root;
    ASSERT_EQ(engine.ListChildren(nullptr, 0, root), ResultSuccess);
    ASSERT_EQ(root.size(), 1u);
    // The depth of a folder is told by its path: that of the top one is 1.
    const std::filesystem::path to = m_folder / "tree" / "top";
    ASSERT_EQ(engine.RestoreRecord(&root.front(), to, CountSeparators(to) - 1), ResultSuccess);
    std::map<std::string, std::uintmax_t> found;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(to)) {
        if (entry.is_regular_file()) {
            found[entry.path().lexically_relative(to)] = entry.file_size();
        }
    }
    EXPECT_EQ(found, (std::map<std::string, std::uintmax_t>{{"middle/low/the second.xyz", 5000},
                                                            {"the first one.xyz", 3000}}));
    EXPECT_TRUE(!GetParam().allComesBack || ReadFileBytes(to / "middle/low/the second.xyz") ==
                                                m_expected["middle/low/the second.xyz"]);
}

TEST_P(FastFatVolumeTest, FreeRangesAndUsedClustersCoverTheDataArea)
{
    m_card->Put("one.bin", RandomBytes(100 * 1024, 1));
    m_card->Put("two.bin", RandomBytes(100 * 1024, 2));
    m_card->Delete("one.bin");
    CFastFatRecovery engine(OpenLog());
    ASSERT_EQ(engine.OpenImageFile(m_card->ImagePath(), 1001), ResultSuccess);
    ASSERT_EQ(engine.BuildUsedClusterMap(), ResultSuccess);
    const std::uint64_t sectors = GetParam().volumeBytes / 512;
    std::uint64_t sector = 0;
    std::uint64_t length = 0;
    std::uint64_t free = 0;
    std::uint64_t end = 0;
    while (engine.NextFreeRange(sector, length) != 0 && length != 0) {
        ASSERT_GE(sector, end);
        free += length;
        sector += length;
        end = sector;
    }
    EXPECT_GT(free, sectors / 2);
    EXPECT_LE(free, sectors);
    EXPECT_LE(end, sectors + sectors / 8)
        << "the last range runs on by what lies in front of the data, not more";
}

INSTANTIATE_TEST_SUITE_P(Kinds,
                         FastFatVolumeTest,
                         testing::Values(VolumeCase{"Fat12", 12, 18 * Mebibyte, 16, false},
                                         VolumeCase{"SmallFat12", 12, 4 * Mebibyte, 4, false},
                                         VolumeCase{"Fat16", 16, 64 * Mebibyte, 4, true},
                                         VolumeCase{"SmallFat16", 16, 12 * Mebibyte, 2, true},
                                         VolumeCase{"Fat32", 32, 300 * Mebibyte, 4, true},
                                         VolumeCase{"Fat32LargeClusters", 32, 300 * Mebibyte, 8,
                                                    true}),
                         testing::PrintToStringParamName());

}  // namespace
