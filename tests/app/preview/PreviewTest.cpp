// What a preview shows of good and of hostile files, and the window that shows it alone.
#include "app/popups/Messages.h"
#include "app/preview/PictureDecoding.h"
#include "app/preview/PictureSteps.h"
#include "app/preview/PreviewPane.h"
#include "app/preview/PreviewWnd.h"
#include "tests/app/popups/PopupFixture.h"
#include "tests/support/Bytes.h"
#include "ui/controls/RichEditUI.h"

#include <QBuffer>
#include <QImage>
#include <QImageWriter>

#include <algorithm>

namespace {

ByteVector Encoded(int width, int height, const char* format, bool isProgressive = false)
{
    QImage image(width, height, QImage::Format_RGB32);
    image.fill(Qt::red);
    image.setPixelColor(0, 0, Qt::blue);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    QImageWriter writer(&buffer, format);
    writer.setProgressiveScanWrite(isProgressive);
    EXPECT_TRUE(writer.write(image));
    return {bytes.begin(), bytes.end()};
}

// Claims other sides than its data fill.
ByteVector JpegClaiming(std::uint16_t width, std::uint16_t height, bool isProgressive)
{
    ByteVector bytes = Encoded(64, 64, "jpg", isProgressive);
    for (std::size_t i = 0; i + 9 < bytes.size(); ++i) {
        if (bytes[i] == 0xFF && (bytes[i + 1] == 0xC0 || bytes[i + 1] == 0xC2)) {
            bytes[i + 5] = static_cast<std::uint8_t>(height >> 8);
            bytes[i + 6] = static_cast<std::uint8_t>(height);
            bytes[i + 7] = static_cast<std::uint8_t>(width >> 8);
            bytes[i + 8] = static_cast<std::uint8_t>(width);
            return bytes;
        }
    }
    throw std::runtime_error("no frame");
}

// As a camera held upright writes it.
ByteVector TurnedJpeg()
{
    ByteVector bytes = Encoded(40, 20, "jpg");
    const ByteVector exif =
        Bytes("FF E1 00 22 'Exif' 00 00 'MM' 00 2A 00 00 00 08 00 01 01 12 00 03 "
              "00 00 00 01 00 06 00 00 00 00 00 00");
    bytes.insert(bytes.begin() + 2, exif.begin(), exif.end());
    return bytes;
}

ByteVector Cut(ByteVector bytes, std::size_t size)
{
    bytes.resize(std::min(bytes.size(), size));
    return bytes;
}

ByteVector Noise(std::size_t size)
{
    ByteVector bytes(size);
    std::uint32_t state = 1;
    std::generate(bytes.begin(), bytes.end(), [&state] {
        state = state * 1664525 + 1013904223;
        return static_cast<std::uint8_t>(state >> 24);
    });
    return bytes;
}

// Hundreds of kilobytes.
ByteVector EncodedNoise(const char* format)
{
    const ByteVector noise = Noise(400 * 300 * 4);
    const QImage image(noise.data(), 400, 300, QImage::Format_RGB32);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    EXPECT_TRUE(QImageWriter(&buffer, format).write(image));
    return {bytes.begin(), bytes.end()};
}

// A few kilobytes that become half a gigabyte.
ByteVector PngBomb()
{
    QImage image(12000, 12000, QImage::Format_Mono);
    image.fill(0);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    EXPECT_TRUE(QImageWriter(&buffer, "png").write(image));
    return {bytes.begin(), bytes.end()};
}

struct PictureCase
{
    const char* name;
    std::function<ByteVector()> bytes;
    QSize size;  // invalid: no picture
};

class PictureTest : public testing::TestWithParam<PictureCase>
{};

TEST_P(PictureTest, IsDecodedWithinLimitsOrNotAtAll)
{
    const TempFolder folder;
    WriteFileBytes(folder / "tmp.jpg", GetParam().bytes());
    const QImage picture = DecodePicture(folder / "tmp.jpg");
    EXPECT_EQ(picture.isNull(), !GetParam().size.isValid());
    if (GetParam().size.isValid()) {
        EXPECT_EQ(picture.size(), GetParam().size);
    }
}

const PictureCase Pictures[] = {
    {"Jpeg", [] { return Encoded(40, 20, "jpg"); }, {40, 20}},
    {"PngUnderAnotherName", [] { return Encoded(40, 20, "png"); }, {40, 20}},
    {"PngThatIsReadInManyPieces", [] { return EncodedNoise("png"); }, {400, 300}},
    {"Tiff", [] { return EncodedNoise("tiff"); }, {400, 300}},
    {"Webp", [] { return EncodedNoise("webp"); }, {400, 300}},
    {"Bmp", [] { return Encoded(40, 20, "bmp"); }, {40, 20}},
    {"TurnedByItsCamera", TurnedJpeg, {20, 40}},
    {"LargeIsScaled", [] { return Encoded(5000, 2500, "jpg"); }, {2048, 1024}},
    {"CutInTheMiddle", [] { return Cut(Encoded(400, 400, "jpg"), 1200); }, {400, 400}},
    {"CutInItsHead", [] { return Cut(Encoded(40, 20, "jpg"), 100); }, {}},
    {"TwoByTwo", [] { return Encoded(2, 2, "png"); }, {}},
    {"TwoByThree", [] { return Encoded(2, 3, "png"); }, {2, 3}},
    {"Empty", [] { return ByteVector(); }, {}},
    {"Noise", [] { return Noise(100000); }, {}},
    {"Vector",
     [] {
         return Bytes("'<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"40\" height=\"40\"/>'");
     },
     {}},
    {"Pixmap", [] { return Bytes("'/* XPM */ static char*x[]={\"4 4 1 1\",\"a c red\"'"); }, {}},
    {"JpegOfFourBillionPixels", [] { return JpegClaiming(65500, 65500, false); }, {}},
    {"ProgressiveJpegOf144Million", [] { return JpegClaiming(12000, 12000, true); }, {}},
    {"JpegOf144MillionThatEndsEarly",
     [] { return JpegClaiming(12000, 12000, false); },
     {2048, 2048}},
    {"PngOf144Million", PngBomb, {}},
};
INSTANTIATE_TEST_SUITE_P(Files, PictureTest, testing::ValuesIn(Pictures), [](const auto& row) {
    return std::string(row.param.name);
});

class PreviewTest : public PopupFixture
{
protected:
    PreviewTest() : skin(main.GetSkin()), pane(skin) {}

    std::filesystem::path Put(const char* name, const ByteVector& bytes) const
    {
        WriteFileBytes(folder / name, bytes);
        return folder / name;
    }

    std::shared_ptr<Skin> skin;
    CRichEditUI pane;
};

TEST_F(PreviewTest, ThePaneShowsThePictureOrWhatStandsForIt)
{
    const QString fallback = QStringLiteral("no <b>picture");
    EXPECT_TRUE(InsertPicture(&pane, Put("a.jpg", Encoded(40, 20, "jpg")), fallback));
    EXPECT_TRUE(pane.HasPicture());
    EXPECT_TRUE(InsertPicture(&pane, Put("b.jpg", Noise(5000)), fallback));
    EXPECT_FALSE(pane.HasPicture());
    EXPECT_EQ(pane.GetText().trimmed(), fallback);
    for (const char* path : {"", "/nowhere/a.jpg", "http://www.orvanta.example/a.jpg"}) {
        EXPECT_FALSE(InsertPicture(&pane, path, QStringLiteral("other"))) << path;
    }
    EXPECT_FALSE(InsertPicture(nullptr, folder / "a.jpg", fallback));
    EXPECT_EQ(pane.GetText().trimmed(), fallback) << "nothing was done";
}

TEST_F(PreviewTest, ADumpHasACharacterAByte)
{
    EXPECT_EQ(DumpText(Bytes("41 00 42 FF")), QStringLiteral("A.B\u00FF\r\n"));
    EXPECT_EQ(DumpText({}), QStringLiteral("\r\n"));
    const QString line = QString(1024, QLatin1Char('A')) + QLatin1String("\r\n");
    EXPECT_EQ(DumpText(ByteVector(2048, 'A')), line + line) << "one line's end is enough";
    EXPECT_EQ(DumpText(ByteVector(1025, 'A')), line + QLatin1String("A\r\n"));
    ShowDump(pane, ByteVector(PreviewData::Capacity, 'A'));
    EXPECT_GT(pane.GetText().size(), 100000);
}

struct StepCase
{
    std::vector<const char*> names;
    int current;  // -1: not in the list
    int next;     // -1: none
    int previous;
};

TEST(PictureStepsTest, GoRoundOverWhatIsNoPicture)
{
    for (const StepCase& row : {StepCase{{"a.jpg", "b.txt", "c.PNG"}, 0, 2, 2},
                                {{"a.jpg", "b.jpg", "c.jpg"}, 2, 0, 1},
                                {{"a.jpg", "b.jpg", "c.jpg"}, 0, 1, 2},
                                {{"a.jpg", "b.jpg", "c.mp3"}, -1, 0, 1},
                                {{"jpg", "b.mp3"}, 0, -1, -1},
                                {{"a.jpg"}, 0, 0, 0},
                                {{}, -1, -1, -1}}) {
        std::vector<FoundRow> rows(row.names.size());
        for (std::size_t i = 0; i < rows.size(); ++i) {
            rows[i].record.SetName(row.names[i]);
            rows[i].at = {EngineKindCarved, static_cast<std::uint32_t>(i + 1)};  // all of node 0
        }
        FoundRow other;
        other.record.NodeId = 99;
        const FoundRow& current = row.current < 0 ? other : rows[std::size_t(row.current)];
        const auto step = [&](bool isForward) {
            const auto place = StepToPicture(rows, current, isForward);
            return place ? static_cast<int>(*place) : -1;
        };
        EXPECT_EQ(step(true), row.next) << row.names.size() << " " << row.current;
        EXPECT_EQ(step(false), row.previous) << row.names.size() << " " << row.current;
    }
}

TEST_F(PreviewTest, TheWindowStepsFetchesAndRestores)
{
    script.Add("a.jpg", 4);
    script.Add("note.txt", 4);
    script.Add("b.jpg", 4);
    OpenAll();
    const std::vector<FoundRow> rows = First().engine->Search(AllFilesPattern).rows;
    CPreviewWnd window;
    window.SetMain(&main, &state);
    window.data.row = rows[0];
    window.data.tempPath = Put("tmp.jpg", Encoded(40, 20, "png"));
    window.siblings = [&] { return rows; };
    int askedForFolder = 0;
    window.askRestoreFolder = [&](QWidget* parent) {
        EXPECT_EQ(parent, &window);
        return ++askedForFolder == 2;
    };
    ASSERT_TRUE(window.Create(&main, 600, 500));
    const auto* const edit = window.FindControlAs<CRichEditUI>(QStringLiteral("PreviewEdit"));
    EXPECT_TRUE(edit->HasPicture());
    EXPECT_EQ(TextOf(window, "FileName"), "a.jpg");
    When([&] { return window.isVisible(); },
         [&] {
             Click(window, "NextBtn");
             EXPECT_EQ(window.data.row.record.NameText(), "b.jpg");
             Pump(0);
             EXPECT_EQ(TextOf(window, "FileName"), "b.jpg");
             Click(window, "PrevBtn");
             EXPECT_EQ(window.data.row.record.NameText(), "a.jpg");
             Click(window, "RecoveryBtn");
             EXPECT_FALSE(std::filesystem::exists(folder / "out"));
             When(
                 [] {
                     return FindWindow("FinishBtn") != nullptr &&
                            FindWindow("FinishBtn")->FindControl("FinishBtn")->IsVisible();
                 },
                 [] { Click(*FindWindow("FinishBtn"), "FinishBtn"); });
             Click(window, "RecoveryBtn");
             Click(window, "CancelBtn");
         });
    EXPECT_EQ(window.DoModal(), CloseCancelled);
    EXPECT_EQ(ReadFileBytes(folder / "out/photo/a.jpg"), script.content);
}

TEST_F(PreviewTest, TheWindowShowsBytesWhereThereIsNoFile)
{
    CPreviewWnd window;
    window.SetMain(&main, &state);
    window.data.buffer[0] = 'A';
    window.data.dataSize = 2;
    ASSERT_TRUE(window.Create(&main, 600, 500));
    EXPECT_EQ(window.FindControl(QStringLiteral("PreviewEdit"))->GetText().trimmed(), "A.");
    EXPECT_FALSE(window.FindControl(QStringLiteral("PrevBar"))->IsVisible());
    EXPECT_FALSE(window.FindControl(QStringLiteral("NextBar"))->IsVisible());
}

TEST_F(PreviewTest, ATemporaryPictureGoesWithItsWindowUnlessItWasTakenOver)
{
    for (const auto& [isPlayable, isTaken, isLeft] :
         {std::tuple{false, false, false}, {true, false, true}, {false, true, true}}) {
        const std::filesystem::path file = Put("tmp.jpg", Bytes("00"));
        {
            CPreviewWnd window;
            window.data.tempPath = file;
            window.data.isPlayable = isPlayable;
            if (isTaken) {
                EXPECT_EQ(window.TakeTempPath(), file);
            }
        }
        EXPECT_EQ(std::filesystem::exists(file), isLeft) << isPlayable << isTaken;
    }
}

}  // namespace
