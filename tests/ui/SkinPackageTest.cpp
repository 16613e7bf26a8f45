#include "ui/package/SkinPackage.h"

#include "tests/support/Bytes.h"
#include "tests/support/RunCommand.h"
#include "tests/ui/TestWindow.h"
#include "ui/package/PngImage.h"

#include <QImage>
#include <gtest/gtest.h>

namespace {

// A real archive: a member that packs well, one that is stored, a folder.
ByteVector MakeZip(const TempFolder& folder)
{
    std::filesystem::create_directory(folder / "xml");
    WriteFileBytes(folder / "xml/a.xml", ByteVector(5000, 'a'));
    WriteFileBytes(folder / "b.png", RandomBytes(300, 1));
    RunCommand({"sh", "-c", "cd " + folder.Path().string() + " && zip -q -r made.zip xml b.png"});
    return ReadFileBytes(folder / "made.zip");
}

std::size_t PlaceOf(const ByteVector& bytes, std::string_view mark)
{
    const std::string_view text(static_cast<const char*>(static_cast<const void*>(bytes.data())),
                                bytes.size());
    return text.find(mark);
}

}  // namespace

TEST(ZipArchive, ReadsWhatZipHasMade)
{
    const TempFolder folder;
    const auto package = SkinPackage::FromZip(MakeZip(folder));
    ASSERT_NE(package, nullptr);
    EXPECT_EQ(package->Read("xml\\a.xml"), ByteVector(5000, 'a'));
    EXPECT_EQ(package->Read("./b.png"), RandomBytes(300, 1));
    EXPECT_FALSE(package->Read("xml").has_value());
    EXPECT_FALSE(package->Read("c.png").has_value());
}

TEST(ZipArchive, NoLengthOfARealArchiveHarms)
{
    const TempFolder folder;
    const ByteVector zip = MakeZip(folder);
    for (std::size_t size = 0; size < zip.size(); ++size) {
        const ByteVector cut(zip.begin(), zip.begin() + static_cast<std::ptrdiff_t>(size));
        EXPECT_FALSE(ZipArchive::Open(ByteView(cut)).has_value()) << size;
    }
}

TEST(ZipArchive, DamageIsFoundAndLiesAreRefused)
{
    const TempFolder folder;
    const ByteVector zip = MakeZip(folder);
    const std::size_t entry = PlaceOf(zip, {"PK\1\2", 4});
    struct Fault
    {
        const char* name;
        std::size_t place;
        ByteVector bytes;
    };
    // All of the first entry of the directory, "xml/" is a folder: the second is the packed file.
    const std::size_t second = entry + 46 + 4 + zip[entry + 30] + zip[entry + 32];
    ASSERT_EQ(zip[second + 46], 'x');
    const Fault faults[] = {
        {"checksum", second + 16, Bytes("00 00 00 00")},
        {"claims 32 MiB and one byte", second + 24, Bytes("01 00 00 02")},
        {"claims more than its bytes can hold", second + 24, Bytes("00 00 00 01")},
        {"claims one byte less", second + 24, Bytes("87 13 00 00")},
        {"unknown method", second + 10, Bytes("63 00")},
        {"encrypted", second + 8, Bytes("01 00")},
        {"lies behind the end", second + 42, Bytes("FF FF FF 7F")},
        {"packed part goes over the end", second + 20, Bytes("FF FF FF 7F")},
    };
    ASSERT_TRUE(ZipArchive::Open(ByteView(zip))->Read("xml/a.xml").has_value());
    for (const Fault& fault : faults) {
        ByteVector bad = zip;
        std::copy(fault.bytes.begin(), fault.bytes.end(),
                  bad.begin() + static_cast<std::ptrdiff_t>(fault.place));
        const auto archive = ZipArchive::Open(ByteView(bad));
        ASSERT_TRUE(archive.has_value()) << fault.name;
        EXPECT_FALSE(archive->Read("xml/a.xml").has_value()) << fault.name;
        EXPECT_TRUE(archive->Read("b.png").has_value()) << fault.name;
    }
}

TEST(SkinPackage, NoNameLeadsOut)
{
    const TempFolder folder;
    std::filesystem::create_directory(folder / "skin");
    WriteFileBytes(folder / "secret", Bytes("00"));
    WriteFileBytes(folder / "skin/open", Bytes("01"));
    const auto package =
        SkinPackage::FromFolder(QString::fromStdString((folder / "skin").string()));
    EXPECT_TRUE(package->Read("open").has_value());
    for (const char* name :
         {"../secret", "a/../../secret", "..\\secret", "/etc/hostname", "", "."}) {
        EXPECT_FALSE(package->Read(name).has_value()) << name;
    }
}

TEST(SkinPackage, TheProgramCarriesItsSkin)
{
    EXPECT_TRUE(SkinPackage::Embedded()->Read("xml\\LikeItWnd.xml").has_value());
}

TEST(PngImage, ShowsThePixelsThatAnotherEncoderHasWritten)
{
    for (const QColor& color : {QColor(10, 200, 30), QColor(10, 200, 30, 128)}) {
        const ByteVector bytes = MakePng(7, 5, color);
        const QImage image = DecodePng(ByteView(bytes));
        ASSERT_EQ(image.size(), QSize(7, 5));
        const QColor pixel = image.pixelColor(6, 4);
        EXPECT_EQ(pixel.alpha(), color.alpha());
        // Premultiplied colours lose a little.
        EXPECT_NEAR(pixel.green(), color.green(), 2);
    }
}

TEST(PngImage, RefusesWhatIsCutDamagedOrTooLarge)
{
    const ByteVector bytes = MakePng(60, 50);
    for (std::size_t size = 0; size + 16 < bytes.size(); ++size) {
        EXPECT_TRUE(DecodePng(ByteView(bytes.data(), size)).isNull()) << size;
    }
    // Width and height stand at 16 and 20: sixty thousand by sixty thousand, and a long line.
    for (const char* sides :
         {"00 00 EA 60 00 00 EA 60", "00 00 EA 60 00 00 00 01", "00 00 40 00 00 00 02 01"}) {
        ByteVector large = bytes;
        const ByteVector claim = Bytes(sides);
        std::copy(claim.begin(), claim.end(), large.begin() + 16);
        EXPECT_TRUE(DecodePng(ByteView(large)).isNull()) << sides;
    }
}
