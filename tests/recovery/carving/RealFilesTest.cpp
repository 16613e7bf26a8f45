// Real files of the formats that common tools make, laid into an image at sector borders between noise, text and zeros:
// what comes back of each, and what by design does not.
#include "tests/recovery/carving/CarveSupport.h"
#include "tests/support/RunCommand.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <ostream>

namespace {

enum class Comes
{
    Exact,     // byte for byte
    WithTail,  // from its first byte, with bytes of its last sector or of what follows
    Short,     // from its first byte, and ends too early
    AsEnd,     // makes no file, but ends one that runs before it
    NotAtAll   // and a file before it runs through it
};

void PrintTo(Comes comes, std::ostream* out)
{
    static constexpr std::string_view Names[] = {"exact", "with a tail", "short", "as an end",
                                                 "not at all"};
    *out << Names[static_cast<std::size_t>(comes)];
}

struct RealFile
{
    std::string_view name;  // its extension chooses the maker's format
    std::string_view maker;
    std::vector<std::string> arguments;  // "@" is the file to make
    Comes comes;
    std::string_view carvedAs;
};

void PrintTo(const RealFile& file, std::ostream* out)
{
    *out << file.name;
}

constexpr std::string_view Ffmpeg = "ffmpeg";

std::vector<std::string> Clip(std::initializer_list<const char*> options)
{
    std::vector<std::string> arguments = {"-v",
                                          "error",
                                          "-y",
                                          "-f",
                                          "lavfi",
                                          "-i",
                                          "testsrc=size=176x144:rate=25:duration=2",
                                          "-f",
                                          "lavfi",
                                          "-i",
                                          "sine=frequency=440:duration=2",
                                          "-flags",
                                          "+bitexact"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    arguments.emplace_back("@");
    return arguments;
}

const std::vector<RealFile>& Files()
{
    static const std::vector<RealFile> files = {
        {"a.mpg", Ffmpeg, Clip({"-c:v", "mpeg1video", "-c:a", "mp2"}), Comes::Exact, "mpeg"},
        {"a.vob", Ffmpeg, Clip({"-c:v", "mpeg2video", "-c:a", "mp2"}), Comes::Exact, "mpeg"},
        {"a.mp4", Ffmpeg, Clip({"-c:v", "mpeg4", "-c:a", "aac"}), Comes::WithTail, "mp4"},
        {"a.3gp", Ffmpeg, Clip({"-c:v", "mpeg4", "-c:a", "aac"}), Comes::WithTail, "3gp"},
        {"a.mov", Ffmpeg, Clip({"-c:v", "mpeg4", "-c:a", "aac"}), Comes::WithTail, "mov"},
        {"a.rm", Ffmpeg, Clip({"-c:v", "rv10", "-an"}), Comes::WithTail, "rmvb"},
        {"a.wmv", Ffmpeg, Clip({}), Comes::Exact, "wmv"},
        {"a.wma", Ffmpeg, Clip({"-vn"}), Comes::Exact, "wmv"},
        {"a.swf", Ffmpeg, Clip({"-c:v", "flv", "-an"}), Comes::NotAtAll,
         ""},  // plain, but of a newer version
        {"a.avi", Ffmpeg, Clip({}), Comes::Exact, "avi"},
        {"a.flv", Ffmpeg, Clip({"-an"}), Comes::WithTail, "flv"},
        {"a.mkv", Ffmpeg, Clip({"-c:v", "mpeg4", "-c:a", "mp2"}), Comes::WithTail, "mkv"},
        {"a.ts", Ffmpeg, Clip({"-c:v", "mpeg2video", "-c:a", "mp2"}), Comes::Exact, "ts"},
        {"a.m2ts", Ffmpeg, Clip({"-c:v", "mpeg2video", "-c:a", "mp2"}), Comes::NotAtAll,
         ""},  // another table stands first
        {"a.mxf", Ffmpeg, Clip({"-c:v", "mpeg2video", "-an"}), Comes::WithTail, "mxf"},
        {"a.mp3", Ffmpeg,
         Clip({"-vn", "-id3v2_version", "3", "-write_id3v1", "1", "-metadata", "title=Tone"}),
         Comes::WithTail, "mp3"},
        {"b.mp3", Ffmpeg, Clip({"-vn", "-id3v2_version", "0", "-write_xing", "0"}), Comes::NotAtAll,
         ""},
        {"a.mp2", Ffmpeg, Clip({"-vn", "-b:a", "384k", "-ar", "48000", "-ac", "2"}),
         Comes::NotAtAll, ""},  // joint stereo: another header

        {"a.wav", Ffmpeg, Clip({"-vn"}), Comes::Exact, "wav"},
        {"a.gif", Ffmpeg, Clip({"-an"}), Comes::Exact, "gif"},
        {"a.bmp", Ffmpeg, Clip({"-an", "-frames:v", "1"}), Comes::Exact, "bmp"},
        {"a.png", Ffmpeg, Clip({"-an", "-frames:v", "1"}), Comes::Exact, "png"},
        {"a.tif", Ffmpeg, Clip({"-an", "-frames:v", "1"}), Comes::WithTail, "tif"},
        {"a.jpg", "convert", {"plasma:red-blue", "-resize", "600x400!", "@"}, Comes::Exact, "jpg"},
        {"a.psd", "convert", {"plasma:red-blue", "-resize", "60x40!", "@"}, Comes::WithTail, "psd"},
        {"a.ico", "convert", {"plasma:red-blue", "-resize", "48x48!", "@"}, Comes::Exact, "ico"},
        {"a.docx", "zip", {"-q", "-r", "@", "word"}, Comes::AsEnd, ""},
        {"a.zip", "zip", {"-q", "@", "notes.txt"}, Comes::AsEnd, ""},
        {"a.7z", "7z", {"a", "-bd", "@", "notes.txt"}, Comes::AsEnd, ""},
        {"a.tgz", "tar", {"-c", "-f", "@", "-I", "gzip -9", "notes.txt"}, Comes::AsEnd, ""},
        {"b.tgz", "tar", {"-c", "-f", "@", "-I", "gzip -6", "notes.txt"}, Comes::NotAtAll, ""},
        {"a.db", "sqlite3", {"@", "create table notes(text);"}, Comes::AsEnd, ""},
    };
    return files;
}

constexpr std::uint64_t HeadLba = 8;

ByteVector TextOf(std::size_t count)
{
    ByteVector text(count);
    for (std::size_t i = 0; i < count; ++i) {
        text[i] = static_cast<std::uint8_t>("so many words, "[i % 15]);
    }
    return text;
}

// Noise, the file, the head of a document right after its last sector, text, zeros. With runner, a file without an end
// of its own begins before it.
std::vector<CarvedFile> CarveAmid(const ByteVector& file, bool runner)
{
    const std::uint64_t sectors = (file.size() + 511) / 512;
    CarveImage image(HeadLba + sectors + 400);
    image.Put(0, RandomBytes(HeadLba * 512, 21));
    if (runner) {
        image.Put(HeadLba - 2, Bytes("'II' 2A 00"));
    }
    image.Put(HeadLba, file);
    image.Put(HeadLba + sectors, Padded(Bytes("'%PDF-1.4'")) + TextOf(90000));
    return image.Carve();
}

Comes JudgeMissing(const ByteVector& file)
{
    for (const CarvedFile& carved : CarveAmid(file, true)) {
        if (carved.lba == HeadLba - 2) {
            return carved.length == 2 * 512 ? Comes::AsEnd : Comes::NotAtAll;
        }
    }
    ADD_FAILURE() << "the file in front was not found";
    return Comes::NotAtAll;
}

Comes Judge(const ByteVector& file, std::string& outExtension)
{
    for (const CarvedFile& carved : CarveAmid(file, false)) {
        if (carved.lba != HeadLba) {
            continue;
        }
        outExtension = carved.extension;
        if (carved.length == file.size()) {
            return Comes::Exact;
        }
        // Never over the head that follows.
        EXPECT_LE(carved.length, (file.size() + 511) / 512 * 512);
        return carved.length > file.size() ? Comes::WithTail : Comes::Short;
    }
    return JudgeMissing(file);
}

std::filesystem::path Maker(std::string_view name)
{
    // The first of the name in PATH may be another program's stand-in.
    const std::filesystem::path packaged = std::filesystem::path("/usr/bin") / name;
    return std::filesystem::exists(packaged) ? packaged : FindTool({name});
}

class RealFilesTest : public testing::TestWithParam<RealFile>
{};

TEST_P(RealFilesTest, ComesBackAsItsFormatAllows)
{
    const RealFile& one = GetParam();
    const std::filesystem::path maker = Maker(one.maker);
    if (maker.empty()) {
        GTEST_SKIP() << one.maker << " is not installed";
    }
    const TempFolder folder;
    const std::filesystem::path made = folder / one.name;
    std::filesystem::create_directory(folder / "word");
    WriteFileBytes(folder / "word/document.xml", Bytes("'<document/>'"));
    WriteFileBytes(folder / "notes.txt", RandomBytes(30000, 2));
    std::vector<std::string> command = {"env", "-C", folder.Path().string(), maker.string()};
    for (const std::string& argument : one.arguments) {
        command.push_back(argument == "@" ? made.string() : argument);
    }
    (void)MustRun(command);
    std::string extension;
    EXPECT_EQ(Judge(ReadFileBytes(made), extension), one.comes);
    EXPECT_EQ(extension, one.carvedAs);
}

INSTANTIATE_TEST_SUITE_P(Formats, RealFilesTest, testing::ValuesIn(Files()), [](const auto& one) {
    std::string name(one.param.name);
    std::replace(name.begin(), name.end(), '.', '_');
    return name;
});

}  // namespace
