// Heads: which type each is, how much of it must be there, and that asking only candidate rows changes nothing.
#include "recovery/carving/CarveContext.h"
#include "recovery/carving/DetectDispatch.h"
#include "tests/recovery/carving/CarveSupport.h"

#include <gtest/gtest.h>

#include <map>
#include <random>
#include <set>

namespace {

using enum FileTypeId;

struct HeadCase
{
    std::string_view name;
    std::string_view bytes;
    FileTypeId expected;
    std::size_t needed;  // bytes below which the head is none of its type
};

constexpr HeadCase Heads[] = {
    {"program stream", "00 00 01 BA 44 00*9 00 00 01 BB", Mpeg, 18},
    {"video stream", "00 00 01 B3 14 00*20 00 00 01 B8 00", Mpeg, 29},
    {"system header first", "00 00 01 BB 55*20 00 00 01 BA", Mpeg, 28},
    {"pack at 29", "00 00 01 BB 55*25 00 00 01 BA", None, 0},
    {"pack and sequence", "00 00 01 BA 00 00 01 B3 00*24", None, 0},
    {"mp4", "00 00 00 20 'ftypisom' 00*20", Mp4, 32},
    {"mp4 of another brand", "00 00 00 20 'ftypmp42' 00*20", None, 0},
    {"3gp", "00 00 00 20 'ftyp3gp4' 00*20", ThreeGp, 32},
    {"mov brand", "00 00 00 14 'ftypqt  ' 00*4", Mov, 16},
    {"mov name at 0", "'moov' 00*12", Mov, 16},
    {"mov behind a length", "00 00 10 00 'moov' 00*8", None, 0},
    {"RealMedia", "'.RMF'", RealMedia, 4},
    {"asf", "30 26 B2 75 8E 66 CF 11 A6 D9 00 AA 00 62 CE 6C 00*8", Asf, 24},
    {"swf packed", "'CWS' 0F 00*4", Swf, 8},
    {"swf packed, old", "'CWS' 05 00*4", None, 0},
    {"swf plain", "'FWS' 05 00*4", Swf, 8},
    {"swf plain, new", "'FWS' 06 00*4", None, 0},
    {"avi", "'RIFF' 00*4 'AVI LIST'", Avi, 16},
    {"wav", "'RIFF' 00*4 'WAVEfmt '", Wav, 16},
    {"wav with another chunk first", "'RIFF' 00*4 'WAVEJUNK'", None, 0},
    {"flv", "'FLV' 01 05 00 00 00 09 00*7", Flv, 16},
    {"mkv", "1A 45 DF A3 00*12", Mkv, 16},
    {"mts", "00*4 'G' 40 00 10 00 00 B0 11 00 00 C1 00", Mts, 16},
    {"mxf", "06 0E 2B 34 02 05 01 01 0D 01 02 01 01 02 04 00", Mxf, 16},
    {"mp3", "'ID3' 03 00 E0 7F 7F 7F 7F", Mp3, 10},
    {"mp3 of version 255", "'ID3' FF 00 00 00*4", None, 0},
    {"mp3 with unknown flags", "'ID3' 03 00 01 00*4", None, 0},
    {"mp3 with a bad size", "'ID3' 03 00 00 00 00 00 80", None, 0},
    {"frames without a tag", "FF FB 90 64 00*12", None, 0},
    {"midi, crafted", "'MThd' 06 00 00 00 00 01 00 01 00 60 'MTrk'", Midi, 18},
    {"midi, well-formed", "'MThd' 00 00 00 06 00 01 00 01 00 60 'MTrk'", None, 0},
    {"ape", "'MAC '", Ape, 4},
    {"mp2", "FF FD E4 00", Mp2, 4},
    {"mmf", "'MMMD'", Mmf, 4},
    {"compound file", "D0 CF 11 E0 A1 B1 1A E1 00*8", Fla, 16},
    {"gif", "'GIF89a' 00 00", Gif, 8},
    {"gif of any version", "'GIF99z' 00 00", Gif, 8},
    {"gif in capitals", "'GIF89A' 00 00", None, 0},
    {"bmp", "'BM' 00 01 00 00 00*4 36 00 00 00 28 00 00 00 00*22", Bmp, 40},
    {"bmp of another letter", "'BA' 00 01 00 00 00*4 36 00 00 00 28 00 00 00 00*22", Bmp, 40},
    {"bmp with a newer header", "'BM' 00 01 00 00 00*4 36 00 00 00 7C 00 00 00 00*22", None, 0},
    {"jfif", "FF D8 FF E0 00 10 'JFIF' 00*6", Jpeg, 16},
    {"exif", "FF D8 FF E1 12 34 'Exif' 00*6", Jpeg, 16},
    {"jpeg with tables first", "FF D8 FF DB 00 43 00*10", None, 0},
    {"png", "89 'PNG' 0D 0A 1A 0A", Png, 8},
    {"psd", "'8BPS' 00*36", Psd, 40},
    {"tiff big", "'MM' 00 2A", Tiff, 4},
    {"tiff little", "'II' 2A 00", Tiff, 4},
    {"ico",
     "00 00 01 00 02 00 10 10 00 00*5 08 00 00 00 26 00 00 00 10 10 00 00*5 04 00 00 00 2E 00 00 "
     "00",
     Ico, 38},
    {"ico with a gap",
     "00 00 01 00 02 00 10 10 00 00*5 08 00 00 00 26 00 00 00 10 10 00 00*5 04 00 00 00 2F 00 00 "
     "00",
     None, 0},
    {"ico of no images", "00 00 01 00 00 00 00*10", None, 0},
    {"pdf", "'%PDF-'", Pdf, 5},
    {"gzip", "1F 8B 08 08 00*4 02 03 00*6", Gzip, 16},
    {"gzip of an unknown system", "1F 8B 08 08 00*4 02 0E 00*6", None, 0},
    {"gzip of middle strength", "1F 8B 08 08 00*4 00 03 00*6", None, 0},
    {"7z", "'7z' BC AF 27", SevenZip, 5},
    {"zip", "'PK' 03 04 00*44", Zip, 48},
    {"rar", "'Rar!' 1A 07 00", Rar, 7},
    {"newer rar", "'Rar!' 1A 07 01", None, 0},
    {"cab", "'MSCF' 00*32", Cab, 36},
    {"gho", "FE EF 00 00", Gho, 4},
    {"SQLite", "'SQLite format 3' 00", Sqlite, 16},
    {"dbx", "CF AD 12 FE 00*12", Dbx, 16},
    {"pst", "'!BDN' 00*4 'SM' 00*6", Pst, 16},
    {"ttf", "00 01 00 00 00 01 01 01 01 01 01 01 'OS/2' 00*12 00 01 00 00", Ttf, 32},
    {"ttf without a table count", "00 01 00 00 00 00 01 01 01 01 01 01 00 01 00 00", None, 0},
};

FileTypeId WalkTable(const std::uint8_t* bytes, std::int32_t size)
{
    for (const SignatureEntry& row : SignatureTable()) {
        const FileTypeId typeId = row.detect != nullptr ? row.detect(bytes, size) : None;
        if (typeId != None) {
            return typeId;
        }
    }
    return None;
}

ByteVector Program(std::uint32_t peOffset, std::uint16_t flags)
{
    ByteVector program = Padded(Bytes("'MZ'"));
    program[60] = static_cast<std::uint8_t>(peOffset);
    program[61] = static_cast<std::uint8_t>(peOffset >> 8);
    if (peOffset + 24 <= program.size()) {
        program[peOffset] = 'P';
        program[peOffset + 1] = 'E';
        program[peOffset + 22] = static_cast<std::uint8_t>(flags);
        program[peOffset + 23] = static_cast<std::uint8_t>(flags >> 8);
    }
    return program;
}

class DetectTest : public testing::Test
{
protected:
    DetectTest()
    {
        ResetCarveContext();
        m_image.Put(8, RandomBytes(56 * 512, 3));
        EXPECT_EQ(m_source.OpenImage(m_image.Path()), ResultSuccess);
        PointAt(1);
    }
    void PointAt(std::uint64_t lba)
    {
        CarveContext& context = CarveContext::Instance();
        context.source = &m_source;
        context.sectorSize = 512;
        context.startLba = context.currentLba = lba;
    }

    CarveImage m_image{64};
    SectorSource m_source;
};

TEST_F(DetectTest, EveryHeadHasItsTypeAndItsSmallestSize)
{
    for (const HeadCase& head : Heads) {
        const ByteVector bytes = Bytes(head.bytes);
        const ByteVector sector = Padded(bytes);
        EXPECT_EQ(DetectAny(sector.data(), 512), head.expected) << head.name;
        for (std::size_t size = 0; head.expected != None && size <= bytes.size(); ++size) {
            const ByteVector cut(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(size));
            const FileTypeId typeId = DetectAny(cut.data(), static_cast<std::int32_t>(size));
            EXPECT_EQ(typeId == head.expected, size >= head.needed)
                << head.name << " cut at " << size;
        }
    }
}

TEST_F(DetectTest, ProgramsAreToldByTheirFlags)
{
    const struct
    {
        std::uint32_t peOffset;
        std::uint16_t flags;
        FileTypeId expected;
    } cases[] = {{128, 0x0102, Exe},  {128, 0x2102, Dll}, {128, 0x3102, Sys},  {128, 0x1002, Sys},
                 {128, 0x2100, None}, {488, 0x0002, Exe}, {489, 0x0002, None}, {0xFFFF, 2, None}};
    for (const auto& one : cases) {
        const ByteVector program = Program(one.peOffset, one.flags);
        EXPECT_EQ(DetectAny(program.data(), 512), one.expected) << one.peOffset << ' ' << one.flags;
        EXPECT_EQ(DetectAny(program.data(), 511), None);
    }
}

// A head of every format and some that are none.
std::vector<ByteVector> Samples()
{
    std::vector<ByteVector> samples;
    for (const HeadCase& head : Heads) {
        samples.push_back(Padded(Bytes(head.bytes)));
    }
    samples.push_back(Program(128, 2));
    ByteVector packets = RandomBytes(8 * 512, 1);
    for (std::size_t at = 0; at < packets.size(); at += 188) {
        packets[at] = 'G';
    }
    samples.push_back(packets);
    samples.push_back(Padded(ByteVector(31) + Bytes("'[Content_Types].xml'")));
    samples.push_back(Padded(Bytes("'PK' 03 04 00*26 'word/a'")));
    return samples;
}

// A row that was added without a head among the samples, or whose gate shuts out what its own function accepts, fails.
TEST_F(DetectTest, EveryRowIsAskedAboutWhatItAccepts)
{
    std::set<std::string_view> accepted = {""};  // the end row's
    for (const ByteVector& sample : Samples()) {
        m_image.Put(1, sample);  // some are looked for on the source as well
        SectorSource source;
        ASSERT_EQ(source.OpenImage(m_image.Path()), ResultSuccess);
        PointAt(1);
        CarveContext::Instance().source = &source;
        for (const SignatureEntry& row : SignatureTable()) {
            if (row.detect == nullptr || row.detect(sample.data(), 512) == None) {
                continue;
            }
            accepted.insert(row.extension);
            EXPECT_TRUE(row.gate != HeadGate::FirstByte ||
                        row.firstBytes.find(static_cast<char>(sample[0])) != std::string_view::npos)
                << row.extension;
        }
    }
    for (const SignatureEntry& row : SignatureTable()) {
        EXPECT_TRUE(accepted.contains(row.extension)) << row.extension;
    }
}

TEST_F(DetectTest, AskingCandidatesAloneAnswersAsTheWholeTableDoes)
{
    const std::vector<ByteVector> seeds = Samples();
    std::mt19937_64 random(5);
    CarveContext& context = CarveContext::Instance();
    std::size_t hits = 0;
    for (int turn = 0; turn < 60000; ++turn) {
        ByteVector sector =
            turn % 3 == 0 ? RandomBytes(512, random()) : seeds[random() % seeds.size()];
        for (std::uint64_t change = random() % 4; change > 0; --change) {
            sector[random() % 40] = static_cast<std::uint8_t>(random() % 3 == 0 ? 0 : random());
        }
        const ByteVector& other = seeds[random() % seeds.size()];
        if (turn % 5 == 0) {
            std::copy_n(other.begin() + 4, 28,
                        sector.begin() + 4);  // one format's start, another's middle
        }
        const auto size = static_cast<std::int32_t>(turn % 7 == 0 ? random() % 64 : 512);
        PointAt(random() % 70);
        context.TsRunHead = static_cast<std::int32_t>(random() % 2);
        context.InsideMts = static_cast<std::int32_t>(random() % 2);
        const FileTypeId expected = WalkTable(sector.data(), size);
        ASSERT_EQ(DetectAny(sector.data(), size), expected) << "turn " << turn << " size " << size;
        hits += expected != None ? 1 : 0;
    }
    EXPECT_GT(hits, 10000u);
}

TEST_F(DetectTest, NoRowForgetsAnything)
{
    constexpr std::size_t MostDetectFunctions = 64;  // a bit for each in the dispatch
    std::map<DetectFunction, const SignatureEntry*> heads;
    std::map<FileTypeId, LengthEnd> types;
    for (const SignatureEntry& row : SignatureTable().first(85)) {
        EXPECT_TRUE(row.detect != nullptr && !row.extension.empty());
        EXPECT_TRUE(row.gate != HeadGate::FirstByte || !row.firstBytes.empty()) << row.extension;
        const auto& [head, isNew] = heads.try_emplace(row.detect, &row);
        EXPECT_TRUE(isNew || (&row)[-1].detect == row.detect) << row.extension;
        EXPECT_EQ(row.gate, head->second->gate) << row.extension;
        EXPECT_EQ(row.firstBytes, head->second->firstBytes) << row.extension;
        EXPECT_EQ(row.lengthEnd, types.try_emplace(row.typeId, row.lengthEnd).first->second);
    }
    EXPECT_EQ(types.size(), static_cast<std::size_t>(None)) << "every type has a name";
    EXPECT_LE(heads.size(), MostDetectFunctions);
}

TEST_F(DetectTest, TheFirstRowOfATypeNamesIt)
{
    EXPECT_EQ(SignatureTable().size(), 86u);
    const std::pair<std::string_view, FileTypeId> cases[] = {
        {"VOB", Mpeg},         {"wma", Asf},         {"Jfif", Jpeg}, {"ett", SheetOle},
        {"mso07", OtherOoxml}, {"xltm", SheetOoxml}, {"", None},     {"txt", None}};
    for (const auto& [extension, typeId] : cases) {
        EXPECT_EQ(LookupTypeByExtension(extension), typeId) << extension;
    }
}

// A compound file at sector 0: its first stream at 1, its directory where the head says.
ByteVector Compound(const ByteVector& stream, std::uint8_t directoryAt, const ByteVector& directory)
{
    ByteVector head = Padded(Bytes("D0 CF 11 E0 A1 B1 1A E1"));
    head[48] = directoryAt;
    ByteVector file = head + Padded(stream);
    file.resize(512 * (std::size_t{directoryAt} + 1));
    return file + Padded(directory);
}

ByteVector Wide(std::string_view text)
{
    ByteVector wide;
    for (const char letter : text) {
        wide.push_back(static_cast<std::uint8_t>(letter));
        wide.push_back(0);
    }
    return wide;
}

ByteVector Member(std::string_view signature, std::size_t nameAt, std::string_view name)
{
    ByteVector member = Bytes(signature);
    member.resize(nameAt);
    member.insert(member.end(), name.begin(), name.end());
    return member;
}

TEST_F(DetectTest, DocumentsAreToldByWhatTheyHold)
{
    const auto local = [](std::string_view name) { return Member("'PK' 03 04", 30, name); };
    const auto central = [](std::string_view name) { return Member("'PK' 01 02", 46, name); };
    const ByteVector word = Compound(Bytes("EC A5"), 2, {});
    const ByteVector slides =
        Compound({}, 3, ByteVector(80) + Bytes("10 8D 81 64 9B 4F CF 11 86 EA 00 AA 00 B9 29 E8"));
    const ByteVector sheet = Compound(Bytes("09 08 10 00 00 06"), 2, {});
    const ByteVector named = Compound({}, 2, ByteVector(256) + Wide("WordDocumentX"));
    const ByteVector book = Compound({}, 2, ByteVector(128) + Wide("Wordbook"));
    const ByteVector plainBook = Compound({}, 2, ByteVector(128) + Wide("Workbook"));
    const ByteVector plain = local("readme.txt");
    ByteVector across = plain;
    across.resize(2046);
    ByteVector cutName = Padded(plain, 4);
    const ByteVector signature = Bytes("'PK' 03 04");
    std::copy(signature.begin(), signature.end(), cutName.end() - 32);
    cutName = cutName + Bytes("'word'");
    const struct
    {
        std::string_view name;
        ByteVector file;
        std::string_view yes;
        std::string_view no;
    } cases[] = {
        {"word stream", word, "doc", "xls"},
        {"word stream by another extension", word, "WPT", "ole"},
        {"sheet stream", sheet, "et", "doc"},
        {"slides class", slides, "pps", "doc"},
        {"stream name with a tail", named, "dot", "ole"},
        {"the sheet name looked for", book, "xla", "ole"},
        {"the sheet name as written", plainBook, "ole", "xls"},
        {"unknown compound file", Compound({}, 2, {}), "ole", "doc"},
        {"fla is any compound file", word, "fla", "mov"},
        {"word member", local("[Content_Types].xml") + local("Word/document.xml"), "docx", "mso07"},
        {"sheet member", local("xlabel.txt"), "xlsb", "docx"},
        {"slides in the central part", Padded(plain, 3) + central("ppt/slides"), "pptx", "docx"},
        {"local before central", plain + central("xl/a") + local("word/a"), "xlsx", "docx"},
        {"local wins at the same turn", local("word/a") + central("xl/a"), "docm", "xlsx"},
        {"behind the end of the central part", plain + Bytes("'PK' 05 06") + local("word/a"), "zip",
         "docx"},
        {"signature across two turns", across + local("word/a"), "docx", "pptx"},
        {"behind twenty sectors", Padded(plain, 20) + local("word/a"), "zip", "docx"},
        {"in the twentieth sector", Padded(plain, 19) + local("word/a"), "docx", "pptx"},
        {"name out of the turn", cutName, "zip", "docx"},
        {"pdf", Bytes("'%PDF-1.4'"), "pdf", "doc"},
        {"program", Program(128, 0x2002), "dll", "exe"},
        {"anything by an unknown extension", Bytes("'?'"), "txt", "jpg"},
    };
    for (const auto& one : cases) {
        CarveImage image(64);
        image.Put(7, one.file);
        EXPECT_TRUE(image.Verify(7, one.yes)) << one.name << " is " << one.yes;
        EXPECT_FALSE(image.Verify(7, one.no)) << one.name << " is " << one.no;
    }
    CarveImage atEnd(16);
    atEnd.Put(13, local("word/a"));
    EXPECT_FALSE(atEnd.Verify(13, "docx"));  // three sectors are left of the source
    EXPECT_TRUE(atEnd.Verify(13, "zip"));
}

TEST_F(DetectTest, ZipsSideBySideAreClassifiedAsEachAlone)
{
    std::map<FileTypeId, int> seen;
    // Crowded, and so sparse that most stretches name no document.
    for (const int parts : {1500, 60, 12}) {
        std::mt19937_64 random(11);
        ByteVector sectors = RandomBytes(200 * 512, 12);
        for (int i = 0; i < parts; ++i) {
            static constexpr std::string_view Parts[] = {"PK\3\4", "PK\1\2", "PK\3\4", "word",
                                                         "xl",     "PPT",    "PK"};
            const std::string_view part =
                i % 40 == 0 ? "PK\5\6" : Parts[random() % std::size(Parts)];
            const std::size_t at = random() % (sectors.size() - 64);
            std::copy(part.begin(), part.end(), sectors.begin() + static_cast<std::ptrdiff_t>(at));
            if (i % 4 == 0) {
                const std::string_view name = Parts[3 + random() % 3];
                const std::size_t offset = at + (part == "PK\1\2" ? 46 : 30);
                std::copy(name.begin(), name.end(),
                          sectors.begin() + static_cast<std::ptrdiff_t>(offset));
            }
        }
        CarveImage image(200);
        image.Put(0, sectors);
        SectorSource kept;
        ASSERT_EQ(kept.OpenImage(image.Path()), ResultSuccess);
        const ByteVector head = Padded(Bytes("'PK' 03 04"));
        const auto classify = [this, &head](SectorSource& source, std::uint64_t lba) {
            PointAt(lba);
            CarveContext::Instance().source = &source;
            return DetectAny(head.data(), 512);
        };
        std::vector<FileTypeId> inARow;
        for (std::uint64_t lba = 0; lba < 200; ++lba) {
            inARow.push_back(classify(kept, lba));
        }
        for (std::uint64_t lba = 0; lba < 200; ++lba) {
            SectorSource fresh;
            ASSERT_EQ(fresh.OpenImage(image.Path()), ResultSuccess);
            ASSERT_EQ(inARow[lba], classify(fresh, lba)) << lba;
            ++seen[inARow[lba]];
        }
    }
    EXPECT_EQ(seen.size(), 4u);  // every answer occurs
}

}  // namespace
