// The window over the FAT, the map of used clusters, and the searches of the deep analysis compared with plain walks.
#include "recovery/fat/FatTable.h"

#include "recovery/fat/DirectorySamples.h"
#include "recovery/fat/FatVolumeList.h"
#include "recovery/fat/UsedClusterMap.h"
#include "tests/support/Bytes.h"

#include <gtest/gtest.h>

namespace {

constexpr std::uint64_t Window = FatTable::WindowBytes;

// A FAT of the entries at sector 32, with so much after its start.
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
    // From the sector of this one less than a window is left, so it cannot be loaded from here ...
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
    // Clusters 4, 6, 7 (pointed at) and 9 are used; 12 lies past the end of the walk.
    EXPECT_EQ(ranges, (decltype(ranges){{0, 2}, {3, 1}, {6, 1}, {8, 992}}));
}

struct OddTotal
{
    bool isFat32;
    std::uint32_t totalSectors32;
    std::uint32_t dataStart;
    std::uint32_t sectorsPerCluster;
    std::uint64_t bytesBehind;  // the FAT's start
};

std::ostream& operator<<(std::ostream& out, const OddTotal& odd)
{
    return out << (odd.isFat32 ? "Fat32" : "Fat16") << "Total" << odd.totalSectors32 << "By"
               << odd.sectorsPerCluster << "Behind" << odd.bytesBehind;
}

// What the map must be, entry by entry in one walk over all rounds.
class OddTotalTest : public FatTableTest, public testing::WithParamInterface<OddTotal>
{
protected:
    static constexpr std::uint64_t PartitionSectors = 50000;

    void SetUp() override
    {
        const OddTotal& odd = GetParam();
        m_geometry.isFat32 = odd.isFat32;
        m_geometry.totalSectors32 = odd.totalSectors32;
        m_geometry.dataStart = odd.dataStart;
        m_geometry.sectorsPerCluster = odd.sectorsPerCluster;
        // Two to a slot of a FAT16; after the first window too, and none that ends the walk early.
        for (std::uint32_t i = 0; i < 300; ++i) {
            m_entries[5 + i * 7] = i % 5 == 0 ? UINT32_MAX : (30 + i * 3) | (400 + i) << 16;
            if (odd.bytesBehind > Window) {
                m_entries[static_cast<std::uint32_t>(Window / 4) + i] = (2000 + i * 3) | 0xFFFF0000;
            }
        }
        if (odd.isFat32) {
            for (auto& [cluster, entry] : m_entries) {
                entry = entry == UINT32_MAX ? entry : entry & 0xFFF;
            }
        }
        Open(odd.bytesBehind);
        const std::uint32_t clusters = (odd.totalSectors32 - odd.dataStart) / odd.sectorsPerCluster;
        m_clusters = clusters + (odd.totalSectors32 % odd.sectorsPerCluster != 0 ? 1 : 0);
        m_marked.resize(m_clusters / 8 * 8);
    }
    bool Mark(std::uint32_t cluster, std::uint32_t entry)
    {
        const auto set = [this](std::uint64_t bit) {
            return bit < m_marked.size() && (m_marked[bit] = true);
        };
        (void)set(cluster - 2);
        const std::uint32_t pointer = GetParam().isFat32 ? entry : entry & 0xFFFF;
        return m_table.IsEndMark(entry) || set(std::uint32_t{pointer - 2});
    }
    void ExpectTheSameFreeRanges()
    {
        FatTable again;
        again.Open(m_source, m_geometry, 32);
        UsedClusterMap map;
        ASSERT_EQ(map.Build(again, m_geometry, PartitionSectors, [] { return ResultSuccess; }),
                  ResultSuccess);
        std::uint64_t ranges = 0;
        for (std::uint64_t bit = 0, sector = 0;; ++ranges) {
            while (bit < m_marked.size() && m_marked[bit]) {
                ++bit;
            }
            const std::uint64_t begin = bit * m_geometry.sectorsPerCluster + m_geometry.dataStart;
            std::uint64_t length = 0;
            map.NextFreeRange(sector, length);
            if (begin >= PartitionSectors || bit == m_marked.size()) {
                break;
            }
            while (bit < m_marked.size() && !m_marked[bit]) {
                ++bit;
            }
            ASSERT_EQ(sector, begin);
            const std::uint64_t most = PartitionSectors - (begin - m_geometry.dataStart);
            ASSERT_EQ(
                length,
                std::min(bit * m_geometry.sectorsPerCluster + m_geometry.dataStart - begin, most));
            sector += length;
        }
        EXPECT_EQ(ranges > 10, GetParam().bytesBehind >= Window);
    }

    std::uint64_t m_clusters = 0;
    std::vector<bool> m_marked;
};

TEST_P(OddTotalTest, TheMapIsThatOfAPlainWalk)
{
    // Entry by entry where that takes a moment, else as the table itself tells them, round for round.
    if (GetParam().sectorsPerCluster >= 64 || m_clusters < 1000000) {
        for (std::uint64_t cluster = 2; cluster < m_clusters; ++cluster) {
            std::uint32_t entry = 0;
            if (m_table.ReadFatEntry(static_cast<std::uint32_t>(cluster), &entry) ==
                    ResultSuccess &&
                entry != 0 && !Mark(static_cast<std::uint32_t>(cluster), entry)) {
                break;
            }
        }
    } else {
        ASSERT_EQ(m_table.ForEachUsedEntry(
                      2, m_clusters, [] { return ResultSuccess; },
                      [this](auto cluster, auto entry) { return Mark(cluster, entry); }),
                  ResultSuccess);
    }
    ExpectTheSameFreeRanges();
}

constexpr OddTotal OddTotals[] = {
    {false, 0, 77, 128, Window - 512}, {false, 0, 77, 128, Window},
    {false, 63, 545, 64, 2 * Window},  {false, 1, 77, 1, 2 * Window},
    {false, 12347, 545, 3, Window},    {true, 0, 33, 1, 2 * Window},
    {true, 12347, 33, 5, Window},      {true, 17, 33, 128, 2 * Window - 512},
};

INSTANTIATE_TEST_SUITE_P(Volumes,
                         OddTotalTest,
                         testing::ValuesIn(OddTotals),
                         testing::PrintToStringParamName());

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
        {900, 1032, 899, 1024, std::nullopt},  // a start before the disk
    };
    for (const PairCase& pair : cases) {
        const auto volume =
            TryVolume(pair.clusterHigh, pair.lbaHigh, pair.clusterLow, pair.lbaLow, 0);
        ASSERT_EQ(volume.has_value(), pair.sectorsPerCluster.has_value()) << pair.lbaHigh;
        EXPECT_TRUE(!volume || volume->SectorsPerCluster == *pair.sectorsPerCluster);
    }
}

}  // namespace
