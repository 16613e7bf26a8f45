#include "storage/RawDiskCopier.h"

#include "storage/DiskHelpers.h"
#include "storage/DriveRegistry.h"
#include "tests/support/Bytes.h"
#include "tests/support/FailingReader.h"

#include <gtest/gtest.h>

namespace {

constexpr std::uint64_t Sectors = 1000;  // no whole number of pieces

class RawDiskCopierTest : public testing::Test
{
protected:
    void SetUp() override { WriteFileBytes(m_folder / "disk", m_content); }
    void TearDown() override { DriveRegistry::Instance().Forget(m_disk); }

    struct Report
    {
        std::int32_t percent;
        std::uint64_t done;
        std::uint64_t total;
        std::int32_t secondsLeft;
    };

    ResultCode Copy(std::uint64_t start, std::uint64_t count, std::size_t stopAfter = SIZE_MAX)
    {
        m_reports.clear();
        m_stop = stopAfter;
        return m_copier.Copy(
            m_disk, start, count, m_folder / "image",
            [](void* context, std::int32_t percent, std::uint64_t done, std::uint64_t total,
               std::int32_t secondsLeft) -> ResultCode {
                auto& test = *static_cast<RawDiskCopierTest*>(context);
                test.m_reports.push_back({percent, done, total, secondsLeft});
                return test.m_reports.size() < test.m_stop ? ResultSuccess : ResultCancelled;
            },
            this);
    }

    ByteVector Image() const { return ReadFileBytes(m_folder / "image"); }
    ByteVector Part(std::uint64_t start, std::uint64_t count) const
    {
        return {m_content.begin() + static_cast<std::ptrdiff_t>(start * 512),
                m_content.begin() + static_cast<std::ptrdiff_t>((start + count) * 512)};
    }

    const ByteVector m_content = RandomBytes(Sectors * 512, 5);
    TempFolder m_folder;
    const std::uint32_t m_disk = DriveRegistry::Instance().NumberOf(m_folder / "disk");
    RawDiskCopier m_copier;
    std::vector<Report> m_reports;
    std::size_t m_stop = 0;
};

TEST_F(RawDiskCopierTest, ARangeOrTheWholeDiskIsCopiedByteForByte)
{
    EXPECT_EQ(Copy(0, 0), ResultSuccess);
    EXPECT_EQ(Image(), m_content);
    ASSERT_EQ(m_reports.size(), 8u);
    EXPECT_EQ(m_reports[0].percent, 12);
    EXPECT_EQ(m_reports[0].done, 128u);
    EXPECT_EQ(m_reports[0].secondsLeft, -1);
    EXPECT_EQ(m_reports[7].percent, 100);
    EXPECT_EQ(m_reports[7].done, Sectors);
    EXPECT_EQ(m_reports[7].total, Sectors);

    const ByteVector tail = Part(300, 700);
    EXPECT_EQ(Copy(7, 300), ResultSuccess);
    ByteVector expected = Part(7, 300);
    expected.insert(expected.end(), tail.begin(), tail.end());
    EXPECT_EQ(Image(), expected) << "what stood behind it in a longer file stays";
}

TEST_F(RawDiskCopierTest, TheFirstBadSectorEndsItAndWhatWasWrittenStays)
{
    FailingReader faults;
    faults.FailSector(300);
    EXPECT_EQ(Copy(10, 500), ResultReadFault);
    EXPECT_EQ(m_copier.FailedSector, 300u);
    EXPECT_EQ(m_copier.WrittenSectors, 256u) << "the piece with the bad sector is not written";
    EXPECT_EQ(Image(), Part(10, 256));
    EXPECT_EQ(Copy(900, 200), ResultReadFault) << "behind the end of the disk";
    EXPECT_EQ(m_copier.FailedSector, 1000u);
    EXPECT_EQ(Copy(UINT64_MAX / 512, 2), ResultInvalidParameter);
    EXPECT_EQ(Copy(5, UINT64_MAX / 600), ResultReadFault);
}

TEST_F(RawDiskCopierTest, TheCallbacksAnswerEndsIt)
{
    EXPECT_EQ(Copy(0, 0, 3), ResultCancelled);
    EXPECT_EQ(Image(), Part(0, 3 * 128));
    EXPECT_EQ(m_copier.WrittenSectors, 3u * 128);
}

TEST_F(RawDiskCopierTest, OnlyAPlainFileIsEverWrittenTo)
{
    std::filesystem::create_directory(m_folder / "image");
    EXPECT_EQ(Copy(0, 0), ResultAccessDenied);
    std::filesystem::remove(m_folder / "image");
    WriteFileBytes(m_folder / "precious", Bytes("'stays'"));
    std::filesystem::create_symlink(m_folder / "precious", m_folder / "image");
    EXPECT_NE(Copy(0, 0), ResultSuccess);
    EXPECT_EQ(ReadFileBytes(m_folder / "precious"), Bytes("'stays'"));
    EXPECT_EQ(m_copier.Copy(99, 0, 0, m_folder / "other", nullptr, nullptr), ResultFileNotFound);
    EXPECT_FALSE(std::filesystem::exists(m_folder / "other"));
    EXPECT_EQ(ReadFileBytes(m_folder / "disk"), m_content);
}

TEST_F(RawDiskCopierTest, SingleQuestionsAboutDisksAndPlaces)
{
    std::uint64_t bytes = 0;
    EXPECT_EQ(GetDiskLength(m_disk, &bytes), ResultSuccess);
    EXPECT_EQ(bytes, Sectors * 512);
    EXPECT_EQ(GetDiskLength(99, &bytes), ResultFileNotFound);
    EXPECT_FALSE(IsRemovable(m_disk));
    EXPECT_FALSE(IsRemovable(99));
    EXPECT_EQ(GetFileSize(m_folder / "disk", &bytes), ResultSuccess);
    EXPECT_EQ(bytes, Sectors * 512);
    EXPECT_EQ(GetFileSize(m_folder / "none", &bytes), ResultFileNotFound);
    EXPECT_EQ(GetFreeBytes(m_folder / "not/there/yet", &bytes), ResultSuccess);
    // Others write at the same time.
    EXPECT_NEAR(static_cast<double>(bytes),
                static_cast<double>(std::filesystem::space(m_folder.Path()).available), 1e9);
    EXPECT_EQ(GetFileSystemName("/proc/self"), "proc");
    EXPECT_NE(DiskIdentity(m_disk), "");
    EXPECT_EQ(DiskIdentity(99), "");
}

}  // namespace
