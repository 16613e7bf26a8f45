#include "recovery/carving/SignatureTable.h"

#include "platform/Text.h"
#include "recovery/carving/formats/Formats.h"

namespace {

using namespace std::string_view_literals;
using enum FileTypeId;
using enum HeadGate;
using enum LengthEnd;

// The first row of a type names and measures every file of that type, whatever row fired.
// clang-format off
constexpr SignatureEntry Rows[] = {
    {"mpeg",   Mpeg,        PackStart,    ""sv,     DetectMpeg,   LengthMpeg,         Seen},  // its mark may follow another's
    {"mpg",    Mpeg,        PackStart,    ""sv,     DetectMpeg,   LengthMpeg,         Seen},
    {"vob",    Mpeg,        PackStart,    ""sv,     DetectMpeg,   LengthMpeg,         Seen},
    {"mp4",    Mp4,         FileType,     ""sv,     DetectMp4,    LengthMp4,          Seen},
    {"rmvb",   RealMedia,   FirstByte,    "."sv,    DetectRm,     LengthRm,           Seen},
    {"rm",     RealMedia,   FirstByte,    "."sv,    DetectRm,     LengthRm,           Seen},
    {"wmv",    Asf,         FirstByte,    "0"sv,    DetectAsf,    LengthAsf,          Claimed},
    {"asf",    Asf,         FirstByte,    "0"sv,    DetectAsf,    LengthAsf,          Claimed},
    {"wma",    Asf,         FirstByte,    "0"sv,    DetectAsf,    LengthAsf,          Claimed},
    {"swf",    Swf,         FirstByte,    "CF"sv,   DetectSwf,    LengthSwf,          Claimed},
    {"avi",    Avi,         FirstByte,    "R"sv,    DetectAvi,    LengthAvi,          Claimed},
    {"flv",    Flv,         FirstByte,    "F"sv,    DetectFlv,    LengthBounded4G,    Seen},
    {"3gp",    ThreeGp,     FileType,     ""sv,     Detect3gp,    LengthBounded4G,    Seen},
    {"mkv",    Mkv,         FirstByte,    "\x1A"sv, DetectMkv,    LengthMkv,          Seen},
    {"ts",     Ts,          FirstByte,    "G"sv,    DetectTs,     LengthTs,           Seen},
    {"mts",    Mts,         TimedTable,   ""sv,     DetectMts,    LengthBounded4G,    Seen},
    {"mxf",    Mxf,         FirstByte,    "\x06"sv, DetectMxf,    LengthBounded4G,    Seen},
    {"mp3",    Mp3,         FirstByte,    "I"sv,    DetectMp3,    LengthMp3,          Seen},
    {"mid",    Midi,        FirstByte,    "M"sv,    DetectMidi,   LengthMidi,         Seen},
    {"ape",    Ape,         FirstByte,    "M"sv,    DetectApe,    LengthApe,          Seen},
    {"wav",    Wav,         FirstByte,    "R"sv,    DetectWav,    LengthWav,          Claimed},
    {"mov",    Mov,         FileType,     "m"sv,    DetectMov,    LengthBounded64M,   Seen},
    {"mp2",    Mp2,         FirstByte,    "\xFF"sv, DetectMp2,    LengthBounded64M,   Seen},
    {"mmf",    Mmf,         FirstByte,    "M"sv,    DetectMmf,    LengthBounded64M,   Seen},
    {"fla",    Fla,         FirstByte,    "\xD0"sv, DetectFla,    LengthBounded64M,   Seen},  // before doc: takes all of them
    {"gif",    Gif,         FirstByte,    "G"sv,    DetectGif,    LengthGif,          Seen},
    {"bmp",    Bmp,         FirstByte,    "B"sv,    DetectBmp,    LengthBmp,          Claimed},
    {"dib",    Bmp,         FirstByte,    "B"sv,    DetectBmp,    LengthBmp,          Claimed},
    {"jpg",    Jpeg,        FirstByte,    "\xFF"sv, DetectJpeg,   LengthJpeg,         Seen},
    {"jpeg",   Jpeg,        FirstByte,    "\xFF"sv, DetectJpeg,   LengthJpeg,         Seen},
    {"jpe",    Jpeg,        FirstByte,    "\xFF"sv, DetectJpeg,   LengthJpeg,         Seen},
    {"jfif",   Jpeg,        FirstByte,    "\xFF"sv, DetectJpeg,   LengthJpeg,         Seen},
    {"png",    Png,         FirstByte,    "\x89"sv, DetectPng,    LengthPng,          Seen},
    {"psd",    Psd,         FirstByte,    "8"sv,    DetectPsd,    LengthScanOnly128M, Seen},
    {"tif",    Tiff,        FirstByte,    "MI"sv,   DetectTiff,   LengthScanOnly128M, Seen},
    {"tiff",   Tiff,        FirstByte,    "MI"sv,   DetectTiff,   LengthScanOnly128M, Seen},
    {"ico",    Ico,         FirstByte,    "\0"sv,   DetectIco,    LengthIco,          Claimed},
    {"doc",    WordOle,     FirstByte,    "\xD0"sv, DetectOle2,   nullptr,            Claimed},
    {"dot",    WordOle,     FirstByte,    "\xD0"sv, DetectOle2,   nullptr,            Claimed},
    {"wps",    WordOle,     FirstByte,    "\xD0"sv, DetectOle2,   nullptr,            Claimed},
    {"wpt",    WordOle,     FirstByte,    "\xD0"sv, DetectOle2,   nullptr,            Claimed},
    {"xls",    SheetOle,    FirstByte,    "\xD0"sv, DetectOle2,   nullptr,            Claimed},
    {"xlt",    SheetOle,    FirstByte,    "\xD0"sv, DetectOle2,   nullptr,            Claimed},
    {"xla",    SheetOle,    FirstByte,    "\xD0"sv, DetectOle2,   nullptr,            Claimed},
    {"et",     SheetOle,    FirstByte,    "\xD0"sv, DetectOle2,   nullptr,            Claimed},
    {"ett",    SheetOle,    FirstByte,    "\xD0"sv, DetectOle2,   nullptr,            Claimed},
    {"ppt",    SlidesOle,   FirstByte,    "\xD0"sv, DetectOle2,   nullptr,            Claimed},
    {"pot",    SlidesOle,   FirstByte,    "\xD0"sv, DetectOle2,   nullptr,            Claimed},
    {"pps",    SlidesOle,   FirstByte,    "\xD0"sv, DetectOle2,   nullptr,            Claimed},
    {"dps",    SlidesOle,   FirstByte,    "\xD0"sv, DetectOle2,   nullptr,            Claimed},
    {"dpt",    SlidesOle,   FirstByte,    "\xD0"sv, DetectOle2,   nullptr,            Claimed},
    {"ole",    OtherOle,    FirstByte,    "\xD0"sv, DetectOle2,   nullptr,            Claimed},
    {"docx",   WordOoxml,   ContentTypes, "P"sv,    DetectOoxml,  nullptr,            Seen},  // before zip: takes documents
    {"docm",   WordOoxml,   ContentTypes, "P"sv,    DetectOoxml,  nullptr,            Seen},
    {"dotm",   WordOoxml,   ContentTypes, "P"sv,    DetectOoxml,  nullptr,            Seen},
    {"dotx",   WordOoxml,   ContentTypes, "P"sv,    DetectOoxml,  nullptr,            Seen},
    {"xlsx",   SheetOoxml,  ContentTypes, "P"sv,    DetectOoxml,  nullptr,            Seen},
    {"xlsb",   SheetOoxml,  ContentTypes, "P"sv,    DetectOoxml,  nullptr,            Seen},
    {"xlsm",   SheetOoxml,  ContentTypes, "P"sv,    DetectOoxml,  nullptr,            Seen},
    {"xlsx",   SheetOoxml,  ContentTypes, "P"sv,    DetectOoxml,  nullptr,            Seen},  // a second time, on purpose
    {"xlam",   SheetOoxml,  ContentTypes, "P"sv,    DetectOoxml,  nullptr,            Seen},
    {"xltx",   SheetOoxml,  ContentTypes, "P"sv,    DetectOoxml,  nullptr,            Seen},
    {"xltm",   SheetOoxml,  ContentTypes, "P"sv,    DetectOoxml,  nullptr,            Seen},
    {"pptx",   SlidesOoxml, ContentTypes, "P"sv,    DetectOoxml,  nullptr,            Seen},
    {"pptm",   SlidesOoxml, ContentTypes, "P"sv,    DetectOoxml,  nullptr,            Seen},
    {"potx",   SlidesOoxml, ContentTypes, "P"sv,    DetectOoxml,  nullptr,            Seen},
    {"potm",   SlidesOoxml, ContentTypes, "P"sv,    DetectOoxml,  nullptr,            Seen},
    {"ppsx",   SlidesOoxml, ContentTypes, "P"sv,    DetectOoxml,  nullptr,            Seen},
    {"ppsm",   SlidesOoxml, ContentTypes, "P"sv,    DetectOoxml,  nullptr,            Seen},
    {"mso07",  OtherOoxml,  ContentTypes, "P"sv,    DetectOoxml,  nullptr,            Seen},  // nothing returns its type
    {"pdf",    Pdf,         FirstByte,    "%"sv,    DetectPdf,    nullptr,            Seen},
    {"gz",     Gzip,        FirstByte,    "\x1F"sv, DetectGzip,   nullptr,            Seen},
    {"gzip",   Gzip,        FirstByte,    "\x1F"sv, DetectGzip,   nullptr,            Seen},
    {"7z",     SevenZip,    FirstByte,    "7"sv,    Detect7z,     nullptr,            Seen},
    {"zip",    Zip,         FirstByte,    "P"sv,    DetectZip,    nullptr,            Seen},
    {"rar",    Rar,         FirstByte,    "R"sv,    DetectRar,    nullptr,            Seen},
    {"cab",    Cab,         FirstByte,    "M"sv,    DetectCab,    nullptr,            Claimed},
    {"exe",    Exe,         FirstByte,    "M"sv,    DetectPe,     nullptr,            Seen},
    {"dll",    Dll,         FirstByte,    "M"sv,    DetectPe,     nullptr,            Seen},
    {"sys",    Sys,         FirstByte,    "M"sv,    DetectPe,     nullptr,            Seen},
    {"gho",    Gho,         FirstByte,    "\xFE"sv, DetectGho,    nullptr,            Seen},
    {"db",     Sqlite,      FirstByte,    "S"sv,    DetectSqlite, nullptr,            Seen},
    {"dbx",    Dbx,         FirstByte,    "\xCF"sv, DetectDbx,    nullptr,            Seen},
    {"pst",    Pst,         FirstByte,    "!"sv,    DetectPst,    nullptr,            Seen},
    {"ttf",    Ttf,         FirstByte,    "\0"sv,   DetectTtf,    nullptr,            Claimed},
    {"",       None,        FirstByte,    ""sv,     nullptr,      nullptr,            Seen},
};
// clang-format on

static_assert(std::size(Rows) == 86);

}  // namespace

std::span<const SignatureEntry> SignatureTable()
{
    return Rows;
}

FileTypeId LookupTypeByExtension(std::string_view extension)
{
    for (const SignatureEntry& row : Rows) {
        if (row.typeId != None && EqualIgnoringAsciiCase(row.extension, extension)) {
            return row.typeId;
        }
    }
    return None;
}
