// The table of known kinds of file by their content. Its order is behaviour: the first row that fires wins.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

// The kinds of carved files. The numbers are kept in no file, but they order nothing either: they are fixed.
enum class FileTypeId : std::int32_t
{
    WordOle = 0,
    WordOoxml = 1,
    OtherOle = 2,
    SheetOle = 3,
    SheetOoxml = 4,
    SlidesOle = 5,
    SlidesOoxml = 6,
    OtherOoxml = 7,  // no detector returns it
    Pdf = 8,
    Gho = 9,
    Jpeg = 10,
    Mp2 = 11,
    Mp3 = 12,
    Midi = 13,
    Mmf = 14,
    Mpeg = 15,
    ThreeGp = 16,
    Mov = 17,
    Mp4 = 18,
    Mkv = 19,
    Ts = 20,
    Wav = 21,
    Avi = 22,
    RealMedia = 23,
    Asf = 24,
    Ape = 25,
    Swf = 26,
    Flv = 27,
    Psd = 28,
    Bmp = 29,
    Png = 30,
    Gif = 31,
    Tiff = 32,
    Cab = 33,
    SevenZip = 34,
    Zip = 35,
    Gzip = 36,
    Rar = 37,
    Pst = 38,
    Sqlite = 39,
    Dbx = 40,
    Exe = 41,
    Dll = 42,
    Sys = 43,
    Fla = 44,
    Ttf = 45,
    Ico = 46,
    Mts = 47,
    Mxf = 48,
    None = 49  // no match; ends the table
};

// buffer is one sector (or resident data) of size bytes. Anything else comes from the CarveContext.
using DetectFunction = FileTypeId (*)(const std::uint8_t* buffer, std::int32_t size);
// Bytes believed to belong to the file, from the head sector's first byte. Never fails.
using LengthFunction = std::int64_t (*)(const std::uint8_t* buffer, std::int32_t size);

// Which sectors a row is asked about at all. A format whose mark does not stand at offset 0 has a cheap test of its own;
// sectors that pass it are asked about besides those of the first bytes.
enum class HeadGate
{
    FirstByte,     // none: the first bytes alone
    PackStart,     // 00 00 01 somewhere in the first 32 bytes
    FileType,      // "ftyp" at 4
    TimedTable,    // a program association table after a time stamp
    ContentTypes,  // "[" at 31
};

// What a length is worth. The pass jumps over a file whose end was seen, by structure or by a boundary; not over a claim,
// which a field of the head makes alone. Rows that measure nothing have one too, and it changes nothing.
enum class LengthEnd
{
    Seen,
    Claimed,
};

// A row is all that the carver knows of a format beside the functions' own file. Rows of one detect function stand together
// and say the same of their heads.
struct SignatureEntry
{
    std::string_view
        extension;      // lower-case ASCII, without the dot; the first row's names the type
    FileTypeId typeId;  // None ends the table
    HeadGate gate;
    std::string_view firstBytes;  // each of them alone makes a sector worth asking about
    DetectFunction detect;
    LengthFunction length;  // null: ends running files and judges heads, but makes no file
    LengthEnd lengthEnd;
};

// All 85 rows and the end row.
std::span<const SignatureEntry> SignatureTable();

// The type of the first row with this extension, ignoring case; None if there is none.
FileTypeId LookupTypeByExtension(std::string_view extension);
