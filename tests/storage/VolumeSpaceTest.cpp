#include "storage/VolumeSpace.h"

#include "tests/support/Bytes.h"
#include "tests/support/FatCard.h"
#include "tests/support/RunCommand.h"

#include <gtest/gtest.h>

#include <string>

namespace {

constexpr std::uint64_t MiB = 1 << 20;

class VolumeSpaceTest : public testing::Test
{
protected:
    bool Read(const std::filesystem::path& image, std::uint64_t startByte = 0)
    {
        FileHandle handle;
        EXPECT_EQ(handle.OpenForReading(image), ResultSuccess);
        std::uint64_t size = 0;
        EXPECT_EQ(handle.Size(&size), ResultSuccess);
        return ReadVolumeSpace(*MakeHandleReader(std::move(handle)), startByte, size - startByte,
                               m_space);
    }

    // The number after a word in what a program prints, blanks in it or not.
    static std::uint64_t NumberAfter(std::string text, std::string word)
    {
        std::erase(text, ' ');
        std::erase(word, ' ');
        const std::size_t at = text.find(word);
        EXPECT_NE(at, std::string::npos) << text;
        return std::stoull(text.substr(at + word.size()));
    }

    TempFolder m_folder;
    VolumeSpace m_space;
};

// Counts what is asked of a volume that is a head followed by zeros without end.
class EndlessReader : public IByteReader
{
public:
    explicit EndlessReader(ByteVector start) : m_head(std::move(start)) {}
    ResultCode ReadAt(std::uint64_t position,
                      std::uint8_t* buffer,
                      std::size_t count,
                      std::size_t* outRead) override
    {
        for (std::size_t i = 0; i < count; ++i) {
            buffer[i] = position + i < m_head.size() ? m_head[position + i] : std::uint8_t{0};
        }
        *outRead = count;
        asked += count;
        return asked < std::uint64_t{1} << 28 ? ResultSuccess : ResultReadFault;
    }

    std::uint64_t asked = 0;

private:
    ByteVector m_head;
};

TEST_F(VolumeSpaceTest, FatVolumesAreAsFullAsMtoolsSays)
{
    if (const std::string missing = FatCard::MissingTools(); !missing.empty()) {
        GTEST_SKIP() << missing;
    }
    struct FatCase
    {
        int bits;
        std::uint64_t bytes;
        std::uint32_t clusterSectors;
        std::uint64_t start;
    };
    // The last FAT needs several reads.
    for (const FatCase& row : {FatCase{12, 3 * MiB, 2, 0}, FatCase{16, 40 * MiB, 4, 1 * MiB},
                               FatCase{32, 300 * MiB, 1, 0}}) {
        FatOptions options;
        options.fatBits = row.bits;
        options.volumeBytes = row.bytes;
        options.sectorsPerCluster = row.clusterSectors;
        options.startByte = row.start;
        const FatCard card(m_folder / ("fat" + std::to_string(row.bits)), options);
        card.Put("a", RandomBytes(MiB + 1, 1));
        card.Put("b", RandomBytes(MiB, 1));
        card.Delete("a");
        ASSERT_TRUE(Read(card.ImagePath(), row.start)) << row.bits;
        const std::string listing =
            MustRun({"mdir", "-i", card.ImagePath().string() + "@@" + std::to_string(row.start)},
                    {"MTOOLS_SKIP_CHECK=1"});
        const std::size_t line = listing.rfind('\n', listing.find("bytes free"));
        EXPECT_EQ(m_space.freeBytes, NumberAfter(listing.substr(line), "\n")) << row.bits;
        EXPECT_GT(m_space.totalBytes, row.bytes * 9 / 10);
        EXPECT_LT(m_space.totalBytes, row.bytes);
    }
}

TEST_F(VolumeSpaceTest, NtfsVolumesAreAsFullAsTheirOwnToolSays)
{
    if (const std::string missing = MissingTool({"mkntfs", "ntfsinfo", "ntfscp"});
        !missing.empty()) {
        GTEST_SKIP() << missing;
    }
    for (const std::uint32_t clusterBytes : {512u, 4096u, 65536u}) {
        const ImageFile image(m_folder / ("ntfs" + std::to_string(clusterBytes)),
                              24 * MiB + 512 * 7);
        MustRun({"mkntfs", "-F", "-Q", "-q", "-s", "512", "-p", "0", "-H", "255", "-S", "63", "-c",
                 std::to_string(clusterBytes), image.Path()});
        WriteFileBytes(m_folder / "some", RandomBytes(3 * MiB, 3));
        MustRun({"ntfscp", "-f", image.Path(), m_folder / "some", "some"});
        ASSERT_TRUE(Read(image.Path())) << clusterBytes;
        const std::string told = MustRun({"ntfsinfo", "-f", "-m", image.Path()});
        EXPECT_EQ(m_space.freeBytes, NumberAfter(told, "Free Clusters:") * clusterBytes);
        EXPECT_EQ(m_space.totalBytes, NumberAfter(told, "Volume Size in Clusters:") * clusterBytes);
    }
}

// A bitmap whose runs all lie in one place could have a list of disks read for days.
TEST_F(VolumeSpaceTest, NoTableIsReadForEver)
{
    if (const std::string missing = MissingTool({"mkntfs"}); !missing.empty()) {
        GTEST_SKIP() << missing;
    }
    const ImageFile image(m_folder / "ntfs", 4 * MiB);
    MustRun({"mkntfs", "-F", "-Q", "-q", "-s", "512", "-p", "0", "-H", "255", "-S", "63", "-c",
             "4096", image.Path()});
    ByteVector volume = ReadFileBytes(image.Path());
    const std::size_t record = volume[48] * 4096u + 6 * 1024;
    std::size_t attribute = record + volume[record + 20];
    while (volume[attribute] != 0x80) {
        attribute += volume[attribute + 4];
    }
    // The volume claims all sectors that there can be; each of two runs is a hundred gigabytes, one over the other.
    const ByteVector sectors = Bytes("00 00 00 00 00 00 07 00");
    std::copy(sectors.begin(), sectors.end(), volume.begin() + 40);
    const ByteVector runs = Bytes("14 00 00 80 01 10 14 00 00 80 01 00 00");
    std::copy(runs.begin(), runs.end(),
              volume.begin() + static_cast<std::ptrdiff_t>(attribute + volume[attribute + 32]));
    volume[attribute + 4] = static_cast<std::uint8_t>(volume[attribute + 4] + 16);
    EndlessReader reader(volume);
    EXPECT_FALSE(ReadVolumeSpace(reader, 0, std::uint64_t{1} << 40, m_space));
    EXPECT_LT(reader.asked, MiB);
}

TEST_F(VolumeSpaceTest, DamagedTablesGiveAnAnswerOrNone)
{
    if (const std::string missing = MissingTool({"mkntfs", "mkfs.fat"}); !missing.empty()) {
        GTEST_SKIP() << missing;
    }
    const ImageFile ntfs(m_folder / "ntfs", 4 * MiB);
    MustRun(
        {"mkntfs", "-F", "-Q", "-q", "-s", "512", "-p", "0", "-H", "255", "-S", "63", ntfs.Path()});
    FatOptions options;
    options.volumeBytes = 4 * MiB;
    options.fatBits = 12;
    options.sectorsPerCluster = 4;
    const FatCard fat(m_folder / "fat", options);
    const ByteVector boot = ntfs.Read(0, 512);
    const std::uint64_t cluster = boot[13] * 512u;
    const std::uint64_t bitmapRecord = boot[48] * cluster + 6 * 1024;
    int answers = 0;
    for (std::uint64_t seed = 0; seed < 2000; ++seed) {
        const bool isNtfs = seed % 2 == 0;
        const ImageFile image(isNtfs ? ntfs.Path() : fat.ImagePath());
        const std::uint64_t at = isNtfs && seed % 4 == 0 ? bitmapRecord : 0;
        const std::uint64_t size = at != 0 ? 1024 : 90;
        const ByteVector whole = image.Read(at, size);
        ByteVector damaged = whole;
        const ByteVector random = RandomBytes(6, seed);
        damaged[(random[0] * 256u + random[1]) % size] = random[2];
        damaged[(random[3] * 256u + random[4]) % size] = random[5];
        image.PutAt(at, damaged);
        if (Read(image.Path())) {
            ++answers;
            EXPECT_LE(m_space.freeBytes, m_space.totalBytes) << seed;
            EXPECT_LE(m_space.totalBytes, std::uint64_t{1} << 62) << seed;
        }
        image.PutAt(at, whole);
    }
    EXPECT_GT(answers, 200);
    EXPECT_LT(answers, 1990);
    ntfs.Truncate(4 * cluster);
    EXPECT_FALSE(Read(ntfs.Path())) << "its tables lie behind the cut";
}

}  // namespace
