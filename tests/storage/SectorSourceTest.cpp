#include "storage/SectorSource.h"

#include "tests/support/Bytes.h"
#include "tests/support/FailingReader.h"

#include <gtest/gtest.h>

namespace {

class SectorSourceTest : public testing::Test
{
protected:
    static constexpr std::int32_t Untouched = -77;

    // 100 sectors and a torn one after them.
    const ByteVector m_content = RandomBytes(100 * 512 + 100, 11);
    TempFolder m_folder;
    FailingReader m_faults;
    SectorSource m_source;
    ByteVector m_buffer = ByteVector(m_content.size() + 4096);
    std::int32_t m_got = Untouched;

    void SetUp() override
    {
        WriteFileBytes(m_folder / "image", m_content);
        ASSERT_EQ(m_source.OpenImage(m_folder / "image"), ResultSuccess);
    }

    ResultCode Read(std::int32_t count, std::uint64_t lba, std::int32_t sectorSize)
    {
        m_got = Untouched;
        return m_source.ReadSectors(m_buffer.data(), count, lba, sectorSize, &m_got);
    }
};

TEST_F(SectorSourceTest, BoundsAreCountedInTheCallersSectors)
{
    EXPECT_EQ(m_source.totalSectors, 100u);
    struct BoundsCase
    {
        std::int32_t count;
        std::uint64_t lba;
        std::int32_t sectorSize;
        ResultCode result;
        std::int32_t sectorsRead;
    };
    const BoundsCase cases[] = {
        {1, 99, 512, 0, 1},
        {2, 99, 512, 87, Untouched},
        {0, 100, 512, 0, 0},
        {0, 101, 512, 87, Untouched},
        {100, 0, 512, 0, 100},
        {1, UINT64_MAX, 512, 87, Untouched},  // the end wraps to 0
        {-1, 5, 512, 87, Untouched},
        {1, 0, 0, 87, Untouched},
        {1, 0, -512, 87, Untouched},
        // Larger sectors pass the bound and then run off the file: what is whole of them is told.
        {1, 11, 4096, 0, 1},
        {2, 11, 4096, 30, 1},
        {1, 99, 4096, 30, 0},
        // The torn sector is out of reach by its own size, but a part of a larger one.
        {25, 0, 2048, 0, 25},
        {26, 0, 2048, 30, 25},
    };
    for (const BoundsCase& row : cases) {
        EXPECT_EQ(Read(row.count, row.lba, row.sectorSize), row.result)
            << row.lba << ' ' << row.count;
        EXPECT_EQ(m_got, row.sectorsRead) << row.lba << ' ' << row.count;
    }
    ASSERT_EQ(Read(3, 7, 512), ResultSuccess);
    EXPECT_TRUE(
        std::equal(m_buffer.begin(), m_buffer.begin() + 3 * 512, m_content.begin() + 7 * 512));
}

TEST_F(SectorSourceTest, ABadSectorEndsTheReadAndWhatCameStays)
{
    m_faults.FailSector(5);
    EXPECT_EQ(Read(4, 1, 512), ResultSuccess);
    EXPECT_EQ(Read(8, 1, 512), ResultReadFault);
    EXPECT_EQ(m_got, 4);
    EXPECT_TRUE(std::equal(m_buffer.begin(), m_buffer.begin() + 4 * 512, m_content.begin() + 512));
    EXPECT_EQ(Read(1, 5, 512), ResultReadFault);
    EXPECT_EQ(m_got, 0);
    EXPECT_EQ(Read(90, 6, 512), ResultSuccess) << "no state is left behind";
}

TEST_F(SectorSourceTest, OfALongReadWhatFailsIsCountedAndNotWhatFollowsIt)
{
    WriteFileBytes(m_folder / "long", ByteVector(1024 * 512));
    std::shared_ptr<ScanSource> source;
    ASSERT_EQ(ScanSource::OpenImage(m_folder / "long", &source), ResultSuccess);
    m_source.Open(source);
    m_buffer.resize(1024 * 512);
    for (const std::uint64_t sector : {130u, 700u, 701u}) {
        m_faults.FailBytes(sector * 512, sector * 512 + 512);
    }
    EXPECT_EQ(Read(1024, 0, 512), ResultReadFault);
    EXPECT_EQ(m_got, 130);
    // To the end of the 64 KiB that each fault lies in.
    EXPECT_EQ(source->Unread().Ends(),
              (std::map<std::uint64_t, std::uint64_t>{{130, 256}, {700, 768}}));
}

TEST_F(SectorSourceTest, ReadsAreCutIntoPiecesOf64KiB)
{
    const ImageFile image(m_folder / "large", 1 << 20);
    ASSERT_EQ(m_source.OpenImage(image.Path()), ResultSuccess);
    m_buffer.resize(200'000 + 512);
    EXPECT_EQ(Read(390, 0, 512), ResultSuccess);
    EXPECT_EQ(m_faults.ReadCount(), 4u);
    EXPECT_EQ(m_faults.LargestRead(), 65536u);
}

TEST_F(SectorSourceTest, OpeningFailsWithTheReasonAndLeavesNothing)
{
    SectorSource closed;
    EXPECT_EQ(closed.OpenImage(m_folder / "none"), ResultFileNotFound);
    EXPECT_EQ(closed.OpenDrive(77), ResultFileNotFound) << "a number never given";
    EXPECT_FALSE(closed.IsOpen());
    EXPECT_EQ(closed.ReadSectors(m_buffer.data(), 1, 0, 512, &m_got), ResultInvalidParameter);
}

}  // namespace
