#include "recovery/metadata/FileSystemRecognition.h"
#include "tests/support/Bytes.h"
#include "tests/support/FatCard.h"
#include "tests/support/RunCommand.h"

#include <gtest/gtest.h>

namespace {

ByteVector StartOf(const std::filesystem::path& path)
{
    return ImageFile(path).Read(0, RecognitionBytes);
}

FileSystemKind Kind(const ByteVector& start)
{
    return RecogniseFileSystem(ByteView(start));
}

ByteVector Changed(ByteVector start, std::size_t offset, const char* bytes)
{
    const ByteVector patch = Bytes(bytes);
    std::copy(patch.begin(), patch.end(), start.begin() + static_cast<std::ptrdiff_t>(offset));
    return start;
}

TEST(Recognition, RealVolumesAreWhatTheyAre)
{
    const TempFolder folder;
    struct Maker
    {
        std::vector<std::string> command;
        FileSystemKind kind;
    };
    const Maker makers[] = {
        {{"mkfs.fat", "-F", "12", "-s", "32"}, FileSystemKind::Fat},
        {{"mkfs.fat", "-F", "16", "-s", "4"}, FileSystemKind::Fat},
        {{"mkfs.fat", "-F", "32", "-s", "1"}, FileSystemKind::Fat},
        {{"mkfs.fat", "-F", "32", "-s", "1", "-S", "4096"}, FileSystemKind::Fat},
        {{"mkfs.ntfs", "-F", "-q", "-c", "4096"}, FileSystemKind::Ntfs},
        {{"mkfs.ntfs", "-F", "-q", "-c", "512"}, FileSystemKind::Ntfs},
        {{"mkfs.ntfs", "-F", "-q", "-c", "65536"},
         FileSystemKind::Unknown},  // 128 sectors a cluster
        {{"mkfs.ext4", "-q", "-F", "-b", "1024"}, FileSystemKind::Ext},
        {{"mkfs.ext2", "-q", "-F", "-b", "4096"}, FileSystemKind::Ext},
        {{"mkswap"}, FileSystemKind::Unknown},
    };
    int made = 0;
    for (const Maker& maker : makers) {
        if (!MissingTool({maker.command[0]}).empty()) {
            continue;
        }
        const bool large = maker.command.back() == "4096" && maker.command[0] == "mkfs.fat";
        const ImageFile image(folder / "volume", large ? 400u << 20 : 40u << 20);
        std::vector<std::string> command = maker.command;
        command.push_back(image.Path().string());
        MustRun(command);
        EXPECT_EQ(Kind(StartOf(image.Path())), maker.kind)
            << maker.command[0] << ' ' << maker.command.back();
        ++made;
    }
    if (made == 0) {
        GTEST_SKIP() << "no tool that makes file systems is installed";
    }
}

TEST(Recognition, EachConditionOfABootSectorCounts)
{
    if (const std::string missing = MissingTool({"mkfs.fat", "mkfs.ntfs", "mkfs.ext4"});
        !missing.empty()) {
        GTEST_SKIP() << missing;
    }
    const TempFolder folder;
    const ImageFile image(folder / "volume", 40u << 20);
    const auto make = [&](std::vector<std::string> command) {
        command.push_back(image.Path().string());
        MustRun(command);
        return StartOf(image.Path());
    };
    const ByteVector ntfs = make({"mkfs.ntfs", "-F", "-q", "-c", "4096"});
    const ByteVector fat32 = make({"mkfs.fat", "-F", "32", "-s", "1"});
    const ByteVector fat16 = make({"mkfs.fat", "-F", "16", "-s", "4"});
    const ByteVector ext = make({"mkfs.ext4", "-q", "-F", "-b", "1024"});
    struct Change
    {
        const ByteVector& start;
        std::size_t offset;
        const char* bytes;
        FileSystemKind kind;
    };
    using enum FileSystemKind;
    const Change changes[] = {
        {ntfs, 3, "'NTFS   X'", Unknown},
        {ntfs, 11, "01", Unknown},
        {ntfs, 14, "01", Unknown},
        {ntfs, 13, "80", Unknown},  // read as a signed byte
        {ntfs, 13, "F4", Unknown},
        {ntfs, 13, "40", Ntfs},
        {ntfs, 40, "00*8", Unknown},
        {ntfs, 40, "00*7 80", Ntfs},  // unsigned
        {ntfs, 16, "01", Unknown},
        {ntfs, 35, "01", Unknown},
        {ntfs, 510, "00", Unknown},
        {fat32, 13, "80", Fat},
        {fat32, 13, "03", Unknown},
        {fat32, 13, "00", Unknown},
        {fat32, 11, "00 00", Unknown},
        {fat32, 16, "00", Unknown},
        {fat32, 82, "'FAT16   '", Unknown},  // neither test passes without a 16-bit FAT size
        {fat32, 3, "'-FVE-FS-'", Unknown},
        {fat32, 480, "78*8 FF*19 00 1F 2C", Unknown},
        {fat32, 480, "78*8 FF*19 00 1F 2D", Fat},
        {fat32, 511, "AB", Unknown},
        {fat16, 22, "00 00", Unknown},
        {fat16, 54, "'XXXXXXXX'", Fat},  // the name of the type does not count
        // A total smaller than its areas wraps: refused with few sectors a cluster, taken with many.
        {fat32, 32, "10 00 00 00", Unknown},
        {Changed(fat32, 13, "20"), 32, "10 00 00 00", Fat},
        {ext, 1024 + 56, "54", Unknown},
        {ext, 1024 + 4, "00*4", Unknown},
        {ext, 1024 + 20, "00*4", Unknown},  // 1024-byte blocks begin at 1
        {ext, 1024 + 84, "02 00 00 00", Unknown},
        {ext, 1024 + 24, "20 00 00 00", Ext},  // the shift is taken modulo 32
    };
    for (const Change& change : changes) {
        EXPECT_EQ(Kind(Changed(change.start, change.offset, change.bytes)), change.kind)
            << change.offset << ": " << change.bytes;
    }
    for (std::size_t size = 0; size < 512; ++size) {
        const ByteVector cut(fat32.begin(), fat32.begin() + static_cast<std::ptrdiff_t>(size));
        EXPECT_EQ(Kind(cut), Unknown) << size;
    }
}

}  // namespace
