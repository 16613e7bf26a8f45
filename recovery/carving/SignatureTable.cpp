#include "recovery/carving/SignatureTable.h"

#include "platform/Text.h"
#include "recovery/carving/formats/Formats.h"

namespace {

using enum FileTypeId;

// The first row of a type names and measures every file of that type, whatever row fired.
// clang-format off
constexpr SignatureEntry Rows[] = {
    {"mpeg",  Mpeg,        DetectMpeg,   LengthMpeg},  // its mark may stand behind another format's
    {"mpg",   Mpeg,        DetectMpeg,   LengthMpeg},
    {"vob",   Mpeg,        DetectMpeg,   LengthMpeg},
    {"mp4",   Mp4,         DetectMp4,    LengthMp4},
    {"rmvb",  RealMedia,   DetectRm,     LengthRm},
    {"rm",    RealMedia,   DetectRm,     LengthRm},
    {"wmv",   Asf,         DetectAsf,    LengthAsf},
    {"asf",   Asf,         DetectAsf,    LengthAsf},
    {"wma",   Asf,         DetectAsf,    LengthAsf},
    {"swf",   Swf,         DetectSwf,    LengthSwf},
    {"avi",   Avi,         DetectAvi,    LengthAvi},
    {"flv",   Flv,         DetectFlv,    LengthBounded4G},
    {"3gp",   ThreeGp,     Detect3gp,    LengthBounded4G},
    {"mkv",   Mkv,         DetectMkv,    LengthMkv},
    {"ts",    Ts,          DetectTs,     LengthTs},
    {"mts",   Mts,         DetectMts,    LengthBounded4G},
    {"mxf",   Mxf,         DetectMxf,    LengthBounded4G},
    {"mp3",   Mp3,         DetectMp3,    LengthMp3},
    {"mid",   Midi,        DetectMidi,   LengthMidi},
    {"ape",   Ape,         DetectApe,    LengthApe},
    {"wav",   Wav,         DetectWav,    LengthWav},
    {"mov",   Mov,         DetectMov,    LengthBounded64M},
    {"mp2",   Mp2,         DetectMp2,    LengthBounded64M},
    {"mmf",   Mmf,         DetectMmf,    LengthBounded64M},
    {"fla",   Fla,         DetectFla,    LengthBounded64M},  // before doc: takes every compound file
    {"gif",   Gif,         DetectGif,    LengthGif},
    {"bmp",   Bmp,         DetectBmp,    LengthBmp},
    {"dib",   Bmp,         DetectBmp,    LengthBmp},
    {"jpg",   Jpeg,        DetectJpeg,   LengthJpeg},
    {"jpeg",  Jpeg,        DetectJpeg,   LengthJpeg},
    {"jpe",   Jpeg,        DetectJpeg,   LengthJpeg},
    {"jfif",  Jpeg,        DetectJpeg,   LengthJpeg},
    {"png",   Png,         DetectPng,    LengthPng},
    {"psd",   Psd,         DetectPsd,    LengthScanOnly128M},
    {"tif",   Tiff,        DetectTiff,   LengthScanOnly128M},
    {"tiff",  Tiff,        DetectTiff,   LengthScanOnly128M},
    {"ico",   Ico,         DetectIco,    LengthIco},
    {"doc",   WordOle,     DetectOle2,   nullptr},
    {"dot",   WordOle,     DetectOle2,   nullptr},
    {"wps",   WordOle,     DetectOle2,   nullptr},
    {"wpt",   WordOle,     DetectOle2,   nullptr},
    {"xls",   SheetOle,    DetectOle2,   nullptr},
    {"xlt",   SheetOle,    DetectOle2,   nullptr},
    {"xla",   SheetOle,    DetectOle2,   nullptr},
    {"et",    SheetOle,    DetectOle2,   nullptr},
    {"ett",   SheetOle,    DetectOle2,   nullptr},
    {"ppt",   SlidesOle,   DetectOle2,   nullptr},
    {"pot",   SlidesOle,   DetectOle2,   nullptr},
    {"pps",   SlidesOle,   DetectOle2,   nullptr},
    {"dps",   SlidesOle,   DetectOle2,   nullptr},
    {"dpt",   SlidesOle,   DetectOle2,   nullptr},
    {"ole",   OtherOle,    DetectOle2,   nullptr},
    {"docx",  WordOoxml,   DetectOoxml,  nullptr},  // before zip: takes the zips that are documents
    {"docm",  WordOoxml,   DetectOoxml,  nullptr},
    {"dotm",  WordOoxml,   DetectOoxml,  nullptr},
    {"dotx",  WordOoxml,   DetectOoxml,  nullptr},
    {"xlsx",  SheetOoxml,  DetectOoxml,  nullptr},
    {"xlsb",  SheetOoxml,  DetectOoxml,  nullptr},
    {"xlsm",  SheetOoxml,  DetectOoxml,  nullptr},
    {"xlsx",  SheetOoxml,  DetectOoxml,  nullptr},  // a second time, on purpose
    {"xlam",  SheetOoxml,  DetectOoxml,  nullptr},
    {"xltx",  SheetOoxml,  DetectOoxml,  nullptr},
    {"xltm",  SheetOoxml,  DetectOoxml,  nullptr},
    {"pptx",  SlidesOoxml, DetectOoxml,  nullptr},
    {"pptm",  SlidesOoxml, DetectOoxml,  nullptr},
    {"potx",  SlidesOoxml, DetectOoxml,  nullptr},
    {"potm",  SlidesOoxml, DetectOoxml,  nullptr},
    {"ppsx",  SlidesOoxml, DetectOoxml,  nullptr},
    {"ppsm",  SlidesOoxml, DetectOoxml,  nullptr},
    {"mso07", OtherOoxml,  DetectOoxml,  nullptr},  // answers no to every head: nothing returns its type
    {"pdf",   Pdf,         DetectPdf,    nullptr},
    {"gz",    Gzip,        DetectGzip,   nullptr},
    {"gzip",  Gzip,        DetectGzip,   nullptr},
    {"7z",    SevenZip,    Detect7z,     nullptr},
    {"zip",   Zip,         DetectZip,    nullptr},
    {"rar",   Rar,         DetectRar,    nullptr},
    {"cab",   Cab,         DetectCab,    nullptr},
    {"exe",   Exe,         DetectPe,     nullptr},
    {"dll",   Dll,         DetectPe,     nullptr},
    {"sys",   Sys,         DetectPe,     nullptr},
    {"gho",   Gho,         DetectGho,    nullptr},
    {"db",    Sqlite,      DetectSqlite, nullptr},
    {"dbx",   Dbx,         DetectDbx,    nullptr},
    {"pst",   Pst,         DetectPst,    nullptr},
    {"ttf",   Ttf,         DetectTtf,    nullptr},
    {"",      None,        nullptr,      nullptr},
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
