// Deep scans of real NTFS volumes whose table can no longer be walked: formatted over, the boot sector gone, the volume
// somewhere inside a disk.
#include "tests/recovery/deep/DeepSupport.h"
#include "tests/support/Bytes.h"
#include "tests/support/FailingReader.h"
#include "tests/support/Pictures.h"
#include "tests/support/RunCommand.h"

#include <gtest/gtest.h>

namespace {

constexpr std::uint64_t Mebibyte = 1024 * 1024;

class DeepNtfsTest : public testing::Test
{
protected:
    void SetUp() override
    {
        if (const std::string missing = MissingTool({"mkntfs", "ntfs-3g", "umount"});
            !missing.empty()) {
            GTEST_SKIP() << missing;
        }
        MakeVolume(m_path, 40 * Mebibyte);
        const std::filesystem::path mount = m_folder / "mount";
        std::filesystem::create_directory(mount);
        if (RunCommand({"ntfs-3g", m_path.string(), mount.string()}).exitStatus != 0) {
            GTEST_SKIP() << "volumes cannot be mounted here: no FUSE, or not the rights to use it";
        }
        std::filesystem::create_directories(mount / "Album" / "Été");
        Add(mount, "resident note.txt", Bytes("'a few words'"));
        Add(mount, "Album/first.jpg", MakeJpeg(640, 480, 1));
        Add(mount, "Album/Été/deep inside.png", MakePng(90, 70, 2));
        Add(mount, "Album/Été/deleted.bin", RandomBytes(30000, 3));
        std::filesystem::remove(mount / "Album/Été/deleted.bin");
        (void)MustRun({"umount", mount.string()});
    }

    static void MakeVolume(const std::filesystem::path& volume,
                           std::uint64_t sizeBytes,
                           const std::string& sectorBytes = "512")
    {
        if (!std::filesystem::exists(volume)) {
            ImageFile(volume, sizeBytes);
        }
        (void)MustRun({"mkntfs", "-F", "-Q", "-q", "-s", sectorBytes, "-p", "0", "-H", "255", "-S",
                       "63", volume.string()});
    }
    void Add(const std::filesystem::path& mount, const std::string& name, const ByteVector& bytes)
    {
        WriteFileBytes(mount / name, bytes);
        m_originals[name] = bytes;
    }
    std::map<std::string, ByteVector> Restored(const std::filesystem::path& image)
    {
        DeepRun run(image);
        EXPECT_EQ(run.Scan(), ResultSuccess);
        return run.Restore();
    }
    void ExpectAll(const std::map<std::string, ByteVector>& restored) const
    {
        for (const auto& [name, bytes] : m_originals) {
            const auto found = restored.find(name);
            ASSERT_NE(found, restored.end()) << name;
            EXPECT_EQ(found->second, bytes) << name;
        }
    }

    DataFolder m_data;
    TempFolder m_folder;
    std::filesystem::path m_path = m_folder / "volume.img";
    std::map<std::string, ByteVector> m_originals;
};

TEST_F(DeepNtfsTest, ACarvedFileIsADoubleWhateverTheSectorsOfTheVolume)
{
    for (const char* sectorBytes : {"512", "4096"}) {
        const std::filesystem::path image = m_folder / (std::string(sectorBytes) + ".img");
        const std::filesystem::path mount = m_folder / "mount";
        MakeVolume(image, 40 * Mebibyte, sectorBytes);
        (void)MustRun({"ntfs-3g", image.string(), mount.string()});
        WriteFileBytes(mount / "picture.jpg", MakeJpeg(640, 480, 1));
        std::filesystem::remove(mount / "picture.jpg");
        (void)MustRun({"umount", mount.string()});
        DeepRun run(image, ScanDepth::Whole);
        ASSERT_EQ(run.Scan(), ResultSuccess);
        std::vector<std::string> names;
        for (const FileRecord& record : run.Search()) {
            if (record.NameText().ends_with(".jpg")) {
                names.emplace_back(record.NameText());
            }
        }
        EXPECT_EQ(names, std::vector<std::string>{"picture.jpg"}) << sectorBytes;
    }
}

TEST_F(DeepNtfsTest, LiveAndDeletedFilesStandInTheirFolders)
{
    // The map of the volume says that live files' records are in use: only a pass over everything sees them.
    DeepRun run(m_path, ScanDepth::Whole);
    ASSERT_EQ(run.Scan(), ResultSuccess);
    ExpectAll(run.Restore());
}

TEST_F(DeepNtfsTest, APreviewShowsWhatARestoreBringsAndASecondSearchReadsNothing)
{
    FailingReader counting;
    DeepRun run(m_path);
    ASSERT_EQ(run.Scan(), ResultSuccess);
    const FileRecordList first = run.Search();
    const std::size_t reads = counting.ReadCount();
    EXPECT_EQ(run.Search().size(), first.size());
    EXPECT_EQ(counting.ReadCount(), reads);
    for (const auto& [kind, results] : run.ComparePreviews()) {
        EXPECT_EQ(results, std::set<std::string>{"same"}) << kind;
    }
    DeepRun whole(m_path, ScanDepth::Whole);
    whole.Engine().DiscardResumableScan();
    ASSERT_EQ(whole.Scan(), ResultSuccess);
    EXPECT_EQ(whole.ComparePreviews().at(EngineKindProfessionalNtfs),
              std::set<std::string>{"same"});
}

TEST_F(DeepNtfsTest, AWipedBootSectorCostsNothing)
{
    ImageFile(m_path).PutAt(0, ByteVector(512));
    ExpectAll(Restored(m_path));
}

TEST_F(DeepNtfsTest, AVolumeInsideADiskWithoutATableIsFound)
{
    const std::filesystem::path disk = m_folder / "disk.img";
    const ImageFile image(disk, 60 * Mebibyte);
    image.PutAt(3 * Mebibyte + 8 * 512, ReadFileBytes(m_path));
    const auto restored = Restored(disk);
    // Record 0 tells where the volume begins as soon as the pass has seen it.
    ExpectAll(restored);
}

TEST_F(DeepNtfsTest, AVolumeFormattedOverGivesWhatTheNewTableLeft)
{
    MakeVolume(m_path, 0);
    const auto restored = Restored(m_path);
    int exact = 0;
    for (const auto& [name, bytes] : m_originals) {
        const std::string last = name.substr(name.rfind('/') + 1);
        for (const auto& [found, content] : restored) {
            exact += found.ends_with(last) && content == bytes ? 1 : 0;
        }
    }
    EXPECT_GE(exact, 3);
}

}  // namespace
