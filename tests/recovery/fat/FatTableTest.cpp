// The window over the FAT, the map of used clusters, and the searches of the deep analysis compared with plain walks.
#include "recovery/fat/FatTable.h"

#include "recovery/fat/DirectorySamples.h"
#include "recovery/fat/FatVolumeList.h"
#include "recovery/fat/UsedClusterMap.h"
#include "tests/support/Bytes.h"

#include <gtest/gtest.h>

namespace {

constexpr std::uint64_t Window = FatTable::WindowBytes;

// A FAT of the bytes at sector 32, with so much behind its start.
class FatTableTest : public testing::Test
{
protected:
    void Open(std::uint64_t bytesBehind)
    {
        ImageFile image(m_folder / "fat.img", 32 * 512 + bytesBehind);
        for (const auto& [cluster, entry] : m_entries) {
            ByteVector bytes(4);
            std::memcpy(bytes.data(), &entry, 4);
            image.PutAt(32 * 512 + std::uint64_t{cluster} * 4, bytes);
        }
        ASSERT_EQ(m_source.OpenImage(image.Path()), ResultSuccess);
        m_table.Open(m_source, m_geometry, 32);
    }
    std::uint32_t Entry(std::uint32_t cluster)
    {
        std::uint32_t entry = 0xDEAD;
        return m_table.ReadFatEntry(cluster, &entry) == ResultSuccess ? entry : 0xBAD;
    }

    TempFolder m_folder;
    std::map<std::uint32_t, std::uint32_t> m_entries;
    FatGeometry m_geometry;
    SectorSource m_source;
    FatTable m_table;
};

TEST_F(FatTableTest, ASourceShorterThanTheWindowReadsAsZeros)
{
    m_entries = {{3, 4}};
    Open(Window - 512);
    EXPECT_EQ(Entry(3), 0u);
    EXPECT_EQ(m_table.NextCluster(3), 4u);  // both free: the file runs on
    EXPECT_EQ(Entry(Window / 4), 0xBADu);
}

TEST_F(FatTableTest, TheWindowMovesBothWaysAndOnlyWhole)
{
    const auto second = static_cast<std::uint32_t>(Window / 4);
    m_entries = {{3, 4}, {second + 5, second + 9}, {second + 200, 7}};
    Open(2 * Window);
    EXPECT_EQ(Entry(3), 4u);
    EXPECT_EQ(Entry(second + 5), second + 9);
    EXPECT_EQ(Entry(3), 4u);
    // From the sector of this one less than a window is left, so that it cannot be loaded from here ...
    EXPECT_EQ(Entry(second + 200), 0xBADu);
    // ... and what was there is still there.
    EXPECT_EQ(Entry(3), 4u);
    EXPECT_EQ(Entry(second + 5), second + 9);
    EXPECT_EQ(Entry(second + 200),
              7u);  // inside the window that begins with the sector of the one before
}

TEST_F(FatTableTest, TheMapEndsAtAPointerThatLeadsNowhere)
{
    m_geometry.totalSectors32 = 1000;
    m_entries = {{4, 0x0FFFFFFF}, {6, 7}, {9, 1}, {12, 0x0FFFFFFF}};
    Open(Window);
    UsedClusterMap map;
    ASSERT_EQ(map.Build(m_table, m_geometry, 1000, [] { return ResultSuccess; }), ResultSuccess);
    std::vector<std::pair<std::uint64_t, std::uint64_t>> ranges;
    std::uint64_t length = 0;
    for (std::uint64_t sector = 0; map.NextFreeRange(sector, length), length != 0;
         sector += length) {
        ranges.emplace_back(sector, length);
    }
    // Clusters 4, 6, 7 (pointed at) and 9 are used; 12 stands behind the end of the walk.
    EXPECT_EQ(ranges, (decltype(ranges){{0, 2}, {3, 1}, {6, 1}, {8, 992}}));
}

TEST(FatVolumeList, FindsWhatAPlainWalkFinds)
{
    std::uint64_t dice = 1;
    const auto roll = [&dice](std::uint64_t limit) {
        dice = dice * 6364136223846793005 + 1442695040888963407;
        return (dice >> 33) % limit;
    };
    for (int round = 0; round < 40; ++round) {
        const std::uint64_t base = round % 2 == 0 ? 0 : 777;
        FatVolumeList list;
        list.Clear(base);
        std::vector<FatVolume> plain;
        for (std::uint64_t i = roll(12); i > 0; --i) {
            plain.push_back(
                {LegalClusterSizes[roll(8)], static_cast<std::uint32_t>(roll(600)), base});
            list.Append(plain.back());
        }
        for (int question = 0; question < 400; ++question) {
            const std::uint64_t lba = base + roll(3000);
            const auto cluster = static_cast<std::uint32_t>(roll(40));
            const FatVolume* exact = nullptr;
            const FatVolume* holding = nullptr;
            const FatVolume* aligned = nullptr;
            std::uint32_t alignedCluster = 0;
            for (const FatVolume& volume : plain) {
                const std::uint64_t sector = ClusterSector(volume, cluster);
                exact = exact == nullptr && sector == lba ? &volume : exact;
                const bool holds = sector <= lba && lba - sector < volume.SectorsPerCluster;
                holding = holding == nullptr && holds ? &volume : holding;
                const auto distance =
                    static_cast<std::int64_t>(lba - volume.DataStart - volume.Base);
                const std::int64_t size = volume.SectorsPerCluster;
                if (aligned == nullptr && (distance >= 0 || distance == -2 * size) &&
                    distance % size == 0) {
                    aligned = &volume;
                    alignedCluster = static_cast<std::uint32_t>(distance / size + 2);
                }
            }
            const auto found = list.FindByCluster(lba, cluster);
            ASSERT_EQ(found.has_value(), exact != nullptr);
            ASSERT_TRUE(!found || list.At(*found) == *exact);
            const FatVolume* foundHolding = list.FindHolding(lba, cluster);
            ASSERT_EQ(foundHolding != nullptr, holding != nullptr);
            ASSERT_TRUE(holding == nullptr || *foundHolding == *holding);
            std::uint32_t foundCluster = 0;
            const FatVolume* foundAligned = list.FindAligned(lba, &foundCluster);
            ASSERT_EQ(foundAligned != nullptr, aligned != nullptr) << lba;
            ASSERT_TRUE(aligned == nullptr ||
                        (*foundAligned == *aligned && foundCluster == alignedCluster));
        }
    }
}

TEST(DirectorySampleList, DerivesWhatAWalkOverAllOlderSamplesDerives)
{
    std::uint64_t dice = 7;
    const auto roll = [&dice](std::uint64_t limit) {
        dice = dice * 6364136223846793005 + 1442695040888963407;
        return (dice >> 33) % limit;
    };
    int derived = 0;
    for (int round = 0; round < 60; ++round) {
        DirectorySampleList list;
        std::vector<DirectorySample> plain;
        for (int i = 0; i < 40; ++i) {
            // Few places and clusters, so that pairs meet; now and then one beyond 2^31 sectors.
            const auto cluster =
                static_cast<std::uint32_t>(roll(9) == 0 ? 0x10000000 + roll(50) : roll(60));
            const DirectorySample sample = {cluster, 20 + roll(900)};
            std::optional<FatVolume> expected;
            for (const DirectorySample& older : plain) {
                expected = TryVolume(
                    std::max(sample.Cluster, older.Cluster), std::max(sample.Lba, older.Lba),
                    std::min(sample.Cluster, older.Cluster), std::min(sample.Lba, older.Lba), 0);
                if (expected) {
                    break;
                }
            }
            ASSERT_EQ(list.DeriveVolume(sample, 0), expected);
            derived += expected ? 1 : 0;
            list.Append(sample);
            plain.push_back(sample);
        }
    }
    EXPECT_GT(derived, 100);
}

struct PairCase
{
    std::uint32_t clusterHigh;
    std::uint64_t lbaHigh;
    std::uint32_t clusterLow;
    std::uint64_t lbaLow;
    std::optional<std::uint32_t> sectorsPerCluster;
};

TEST(TryVolume, TakesLegalClusterSizesAndPlacesOnTheDisk)
{
    const PairCase cases[] = {
        {9, 1032, 5, 1000, 8},
        {9, 1030, 5, 1000, std::nullopt},  // a remainder
        {8, 1012, 5, 1000, 4},
        {6, 1256, 5, 1000, std::nullopt},  // 256 a cluster
        {5, 1032, 5, 1000, std::nullopt},
        {900, 1032, 899, 1024, std::nullopt},  // a start in front of the disk
    };
    for (const PairCase& pair : cases) {
        const auto volume =
            TryVolume(pair.clusterHigh, pair.lbaHigh, pair.clusterLow, pair.lbaLow, 0);
        ASSERT_EQ(volume.has_value(), pair.sectorsPerCluster.has_value()) << pair.lbaHigh;
        EXPECT_TRUE(!volume || volume->SectorsPerCluster == *pair.sectorsPerCluster);
    }
}

}  // namespace
