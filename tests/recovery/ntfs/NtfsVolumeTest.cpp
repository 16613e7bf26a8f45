// Volumes that a real formatter and a real driver wrote: what comes back byte for byte, and what the rules make of the
// rest.
#include "recovery/RestoreSupport.h"
#include "recovery/ntfs/FastNtfsRecovery.h"
#include "tests/support/Bytes.h"
#include "tests/support/RunCommand.h"
#include "tests/support/TempFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <fstream>
#include <functional>
#include <map>
#include <string>
#include <sys/xattr.h>

namespace {

// A volume mounted through FUSE while the object lives.
class Mount
{
public:
    Mount(std::filesystem::path image, std::filesystem::path place) : m_place(std::move(place))
    {
        std::filesystem::create_directories(m_place);
        MustRun({"ntfs-3g", "-o", "compression", image.string(), m_place.string()});
    }
    Mount(const Mount&) = delete;
    Mount& operator=(const Mount&) = delete;
    ~Mount() { (void)RunCommand({"umount", m_place.string()}); }

    std::filesystem::path operator/(const std::string& name) const { return m_place / name; }

private:
    std::filesystem::path m_place;
};

std::string WhyNoVolumes()
{
    const std::string missing = MissingTool({"mkntfs", "ntfs-3g", "umount"});
    if (!missing.empty()) {
        return missing;
    }
    return std::filesystem::exists("/dev/fuse") ? "" : "There is no FUSE here.";
}

class NtfsVolumeTest : public testing::TestWithParam<std::uint32_t>
{
protected:
    void SetUp() override
    {
        if (const std::string why = WhyNoVolumes(); !why.empty()) {
            GTEST_SKIP() << why;
        }
        const ImageFile image(m_folder / "volume.img", 32 << 20);
        const std::string sector = std::to_string(GetParam());
        MustRun({"mkntfs", "-F", "-Q", "-q", "-s", sector, "-c", "4096", image.Path().string()});
    }

    void Change(const std::function<void(const Mount&)>& change)
    {
        try {
            const Mount mount(m_folder / "volume.img", m_folder / "mount");
            change(mount);
        } catch (const std::exception& fault) {
            GTEST_SKIP() << "mounting does not work here: " << fault.what();
        }
    }

    // Scans and gives all files found, by name.
    std::map<std::string, FileRecord> Find()
    {
        EXPECT_EQ(m_engine.OpenImageFile(m_folder / "volume.img", u'X'), ResultSuccess);
        EXPECT_EQ(m_engine.Scan(nullptr), ResultSuccess);
        FileRecordList list;
        EXPECT_EQ(m_engine.SearchRecords(AllFilesPattern, list), 1);
        std::map<std::string, FileRecord> files;
        for (const FileRecord& record : list) {
            files[std::string(record.NameText())] = record;
        }
        return files;
    }

    ByteVector Restore(const FileRecord& record)
    {
        const std::filesystem::path path = m_folder / "out";
        std::filesystem::remove(path);
        EXPECT_EQ(m_engine.RestoreRecord(&record, path, 0), ResultSuccess) << record.NameText();
        return ReadFileBytes(path);
    }

    TempFolder m_folder;
    DataFolder m_data;
    CFastNtfsRecovery m_engine{OpenLog()};
};

TEST_P(NtfsVolumeTest, WhatTheDriverDeletedComesBack)
{
    const std::map<std::string, ByteVector> files = {
        {"top.txt", Bytes("'resident'")},
        {"empty.txt", {}},
        {"live/inside.mp3", RandomBytes(4096, 2)},
        {"live/Фото моря.doc", RandomBytes(70001, 3)},
        {"live/写真 ünï.xyz", RandomBytes(300000, 4)},
        {"gone/one/deep.dat", RandomBytes(12345, 5)},
        {"gone/small.dat", RandomBytes(100, 6)},
    };
    Change([&](const Mount& mount) {
        for (const auto& [name, bytes] : files) {
            std::filesystem::create_directories((mount / name).parent_path());
            WriteFileBytes(mount / name, bytes);
        }
        WriteFileBytes(mount / "live/stays.txt", Bytes("'stays'"));
        for (const auto& [name, bytes] : files) {
            std::filesystem::remove(mount / name);
        }
        std::filesystem::remove_all(mount / "gone");
    });
    if (IsSkipped()) {
        return;
    }
    std::map<std::string, FileRecord> found = Find();
    EXPECT_EQ(found.count("stays.txt"), 0U);
    for (const auto& [name, bytes] : files) {
        const std::size_t slash = name.rfind('/');
        const std::string leaf = name.substr(slash == std::string::npos ? 0 : slash + 1);
        ASSERT_EQ(found.count(leaf), 1U) << name;
        EXPECT_EQ(Restore(found[leaf]), bytes) << name;
        std::string path;
        EXPECT_EQ(m_engine.GetRecordPath(&found[leaf], path), ResultSuccess);
        std::replace(path.begin(), path.end(), '\\', '/');
        EXPECT_EQ(path + leaf, name);
    }
    // The tree of a deleted folder in one go.
    FileRecordList root;
    ASSERT_EQ(m_engine.ListChildren(nullptr, 0, root), ResultSuccess);
    const auto gone = std::find_if(root.begin(), root.end(), [](const FileRecord& record) {
        return record.NameText() == "gone";
    });
    ASSERT_NE(gone, root.end());
    const std::filesystem::path target = m_folder / "tree";
    std::uint32_t separators = CountSeparators(target);
    EXPECT_EQ(m_engine.RestoreRecord(&*gone, target, separators - 1), ResultSuccess);
    EXPECT_EQ(ReadFileBytes(target / "one/deep.dat"), files.at("gone/one/deep.dat"));
    EXPECT_EQ(ReadFileBytes(target / "small.dat"), files.at("gone/small.dat"));
}

TEST_P(NtfsVolumeTest, WhatIsNotStoredPlainlyComesOutByTheRules)
{
    constexpr std::size_t Cluster = 4096;
    ByteVector sparse = RandomBytes(16 * Cluster, 7);
    const ByteVector block = RandomBytes(Cluster, 8);
    std::vector<ByteVector> woven(2);
    std::vector<ByteVector> torn(2);
    const std::string longName(200, 'n');
    Change([&](const Mount& mount) {
        WriteFileBytes(mount / "sparse.dat", {sparse.data(), 4 * Cluster});
        {
            std::fstream stream(mount / "sparse.dat",
                                std::ios::in | std::ios::out | std::ios::binary);
            stream.seekp(12 * Cluster);
            stream.write("end", 3);
        }
        const auto weave = [&](const std::string& stem, int rounds,
                               std::vector<ByteVector>& bytes) {
            for (int i = 0; i < rounds * 2; ++i) {
                const std::size_t which = static_cast<std::size_t>(i % 2);
                const ByteVector piece = RandomBytes(Cluster, static_cast<std::uint64_t>(100 + i));
                std::ofstream stream(mount / (stem + std::to_string(which)),
                                     std::ios::binary | std::ios::app);
                for (const std::uint8_t byte : piece) {
                    stream.put(static_cast<char>(byte));
                }
                bytes[which].insert(bytes[which].end(), piece.begin(), piece.end());
            }
        };
        weave("woven", 12, woven);
        weave("torn", 155, torn);  // run lists longer than a sector of 512 bytes
        // Files made in a folder with the attribute 0x800 are compressed.
        std::filesystem::create_directory(mount / "packed");
        constexpr std::array<std::uint8_t, 4> Compressed = {0, 0, 0x08, 0x10};
        (void)::setxattr((mount / "packed").c_str(), "system.ntfs_attrib_be", Compressed.data(),
                         Compressed.size(), 0);  // seen below
        WriteFileBytes(mount / "packed/text.dat", ByteVector(16 * Cluster, 'a'));
        WriteFileBytes(mount / "linked.dat", block);
        for (int i = 0; i < 40; ++i) {
            std::filesystem::create_hard_link(mount / "linked.dat",
                                              mount / (longName + std::to_string(i)));
        }
        for (const char* name :
             {"sparse.dat", "woven0", "woven1", "torn0", "torn1", "packed/text.dat"}) {
            std::filesystem::remove(mount / name);
        }
        std::filesystem::remove(mount / "linked.dat");
        for (int i = 0; i < 40; ++i) {
            std::filesystem::remove(mount / (longName + std::to_string(i)));
        }
    });
    if (IsSkipped()) {
        return;
    }
    std::map<std::string, FileRecord> found = Find();
    for (const std::size_t which : {0U, 1U}) {
        const std::string name = std::to_string(which);
        EXPECT_EQ(Restore(found["woven" + name]), woven[which]);
        ASSERT_EQ(found.count("torn" + name), 1U);
        EXPECT_EQ(std::uint64_t{found["torn" + name].FileSize}, torn[which].size());
        const ByteVector restored = Restore(found["torn" + name]);
        if (GetParam() == 512) {
            // A run list of a sector or more is not read at all.
            EXPECT_TRUE(restored.empty());
            continue;
        }
        // On larger sectors the driver still guards every 512 bytes of a record, and only the sector's tail is repaired:
        // the runs before byte 510 are right, those after it are not.
        const auto start = torn[which].begin();
        ASSERT_GT(restored.size(), 20 * Cluster);
        EXPECT_TRUE(std::equal(start, start + 20 * Cluster, restored.begin()));
        EXPECT_NE(restored, torn[which]);
    }
    // The hole is filled with what lies where the run before it began.
    ByteVector filled(sparse.begin(), sparse.begin() + 4 * Cluster);
    const ByteVector restored = Restore(found["sparse.dat"]);
    ASSERT_EQ(restored.size(), 12 * Cluster + 3);
    EXPECT_TRUE(std::equal(filled.begin(), filled.end(), restored.begin()));
    EXPECT_TRUE(std::equal(filled.begin(), filled.end(), restored.begin() + 4 * Cluster));
    EXPECT_EQ(std::string(restored.end() - 3, restored.end()), "end");
    // The compressed unit comes out as it lies: a chunk head with its signature, nothing unpacked.
    const ByteVector packed = Restore(found["text.dat"]);
    ASSERT_EQ(packed.size(), 16 * Cluster);
    EXPECT_EQ(packed[1] & 0xF0, 0xB0);
    EXPECT_NE(packed[0], 'a');
    // With its names in other records the file has none of its own, and is not found.
    EXPECT_EQ(found.count("linked.dat"), 0U);
}

TEST_P(NtfsVolumeTest, OverwrittenPicturesAreHidden)
{
    const ByteVector jpeg = Bytes("FF D8 FF E0 00 10 'JFIF' 00 01 01");
    Change([&](const Mount& mount) {
        ByteVector good = RandomBytes(9000, 9);
        std::copy(jpeg.begin(), jpeg.end(), good.begin());
        WriteFileBytes(mount / "good.jpg", good);
        WriteFileBytes(mount / "bad.jpg", RandomBytes(9000, 10));
        std::filesystem::remove(mount / "good.jpg");
        std::filesystem::remove(mount / "bad.jpg");
    });
    if (IsSkipped()) {
        return;
    }
    (void)Find();
    FileRecordList pictures;
    EXPECT_EQ(m_engine.SearchRecords("*.jpg|", pictures), 1);
    ASSERT_EQ(pictures.size(), 1U);
    EXPECT_EQ(pictures[0].NameText(), "good.jpg");
    EXPECT_EQ(std::uint32_t{pictures[0].HeadIntact}, 1U);
    // Free ranges hold what was deleted.
    ASSERT_EQ(m_engine.BuildUsedClusterMap(), ResultSuccess);
    std::uint64_t sector = 0;
    std::uint64_t length = 0;
    std::uint64_t freeSectors = 0;
    while (m_engine.NextFreeRange(sector, length) != 0 && length > 0) {
        freeSectors += length;
        sector += length;
    }
    EXPECT_GT(freeSectors * GetParam(), std::uint64_t{24} << 20);
    EXPECT_LT(freeSectors * GetParam(), std::uint64_t{32} << 20);
}

INSTANTIATE_TEST_SUITE_P(SectorSizes, NtfsVolumeTest, testing::Values(512U, 1024U, 4096U));

}  // namespace
