#include "recovery/carving/DetectDispatch.h"

#include "platform/ByteView.h"
#include "recovery/carving/formats/Formats.h"

#include <array>
#include <bit>
#include <cstring>
#include <string_view>
#include <vector>

namespace {

using namespace std::string_view_literals;

// A format whose mark does not stand at offset 0 is asked for any first byte, behind a cheap test of its own.
enum class Gate
{
    FirstByte,
    PackStart,     // 00 00 01 somewhere in the first 32 bytes
    FileType,      // "ftyp" at 4
    TimedTable,    // a program association table behind a time stamp
    ContentTypes,  // "[" at 31
};

struct HeadRule
{
    DetectFunction detect;
    Gate gate;
    std::string_view firstBytes;
};

// Any of the first bytes, or the gate, makes a row a candidate. A detect function that is missing here is asked for
// every sector.
// clang-format off
constexpr HeadRule HeadRules[] = {
    {DetectMpeg,   Gate::PackStart,    ""sv},
    {DetectMp4,    Gate::FileType,     ""sv},
    {DetectRm,     Gate::FirstByte,    "."sv},
    {DetectAsf,    Gate::FirstByte,    "0"sv},
    {DetectSwf,    Gate::FirstByte,    "CF"sv},
    {DetectAvi,    Gate::FirstByte,    "R"sv},
    {DetectFlv,    Gate::FirstByte,    "F"sv},
    {Detect3gp,    Gate::FileType,     ""sv},
    {DetectMkv,    Gate::FirstByte,    "\x1A"sv},
    {DetectTs,     Gate::FirstByte,    "G"sv},
    {DetectMts,    Gate::TimedTable,   ""sv},
    {DetectMxf,    Gate::FirstByte,    "\x06"sv},
    {DetectMp3,    Gate::FirstByte,    "I"sv},
    {DetectMidi,   Gate::FirstByte,    "M"sv},
    {DetectApe,    Gate::FirstByte,    "M"sv},
    {DetectWav,    Gate::FirstByte,    "R"sv},
    {DetectMov,    Gate::FileType,     "m"sv},
    {DetectMp2,    Gate::FirstByte,    "\xFF"sv},
    {DetectMmf,    Gate::FirstByte,    "M"sv},
    {DetectFla,    Gate::FirstByte,    "\xD0"sv},
    {DetectGif,    Gate::FirstByte,    "G"sv},
    {DetectBmp,    Gate::FirstByte,    "B"sv},
    {DetectJpeg,   Gate::FirstByte,    "\xFF"sv},
    {DetectPng,    Gate::FirstByte,    "\x89"sv},
    {DetectPsd,    Gate::FirstByte,    "8"sv},
    {DetectTiff,   Gate::FirstByte,    "MI"sv},
    {DetectIco,    Gate::FirstByte,    "\0"sv},
    {DetectOle2,   Gate::FirstByte,    "\xD0"sv},
    {DetectOoxml,  Gate::ContentTypes, "P"sv},
    {DetectPdf,    Gate::FirstByte,    "%"sv},
    {DetectGzip,   Gate::FirstByte,    "\x1F"sv},
    {Detect7z,     Gate::FirstByte,    "7"sv},
    {DetectZip,    Gate::FirstByte,    "P"sv},
    {DetectRar,    Gate::FirstByte,    "R"sv},
    {DetectCab,    Gate::FirstByte,    "M"sv},
    {DetectPe,     Gate::FirstByte,    "M"sv},
    {DetectGho,    Gate::FirstByte,    "\xFE"sv},
    {DetectSqlite, Gate::FirstByte,    "S"sv},
    {DetectDbx,    Gate::FirstByte,    "\xCF"sv},
    {DetectPst,    Gate::FirstByte,    "!"sv},
    {DetectTtf,    Gate::FirstByte,    "\0"sv},
};
// clang-format on

constexpr std::int32_t GateBytes = 32;

// The distinct detect functions in table order, a bit for each: no detect function changes what a later one sees,
// so each is asked once, at its first row.
struct Dispatch
{
    std::array<std::uint64_t, 256> byFirstByte{};
    std::uint64_t packStart = 0;
    std::uint64_t fileType = 0;
    std::uint64_t timedTable = 0;
    std::uint64_t contentTypes = 0;
    std::vector<const SignatureEntry*> rows;
};

void Enter(Dispatch& dispatch, const HeadRule* rule, std::uint64_t bit)
{
    if (rule == nullptr) {
        for (std::uint64_t& mask : dispatch.byFirstByte) {
            mask |= bit;
        }
        return;
    }
    for (const char first : rule->firstBytes) {
        dispatch.byFirstByte[static_cast<std::uint8_t>(first)] |= bit;
    }
    switch (rule->gate) {
    case Gate::FirstByte:
        break;
    case Gate::PackStart:
        dispatch.packStart |= bit;
        break;
    case Gate::FileType:
        dispatch.fileType |= bit;
        break;
    case Gate::TimedTable:
        dispatch.timedTable |= bit;
        break;
    case Gate::ContentTypes:
        dispatch.contentTypes |= bit;
        break;
    }
}

const HeadRule* RuleOf(DetectFunction detect)
{
    for (const HeadRule& rule : HeadRules) {
        if (rule.detect == detect) {
            return &rule;
        }
    }
    return nullptr;
}

Dispatch MakeDispatch()
{
    Dispatch dispatch;
    DetectFunction before = nullptr;
    for (const SignatureEntry& row : SignatureTable()) {
        // Rows of one function stand together in the table.
        if (row.detect == nullptr || row.detect == before) {
            continue;
        }
        before = row.detect;
        Enter(dispatch, RuleOf(row.detect), std::uint64_t{1} << dispatch.rows.size());
        dispatch.rows.push_back(&row);
    }
    return dispatch;
}

static_assert(std::size(HeadRules) <= 64);

std::uint64_t Word(const std::uint8_t* at)
{
    std::uint64_t word = 0;
    std::memcpy(&word, at, sizeof word);
    return word;
}

// False means that no 00 00 01 begins in the 32 bytes: of its two zeros one stands at an odd offset.
bool MayHoldPackStart(const std::uint8_t* sector)
{
    constexpr std::uint64_t EvenBytes = 0x00FF00FF00FF00FF;
    constexpr std::uint64_t Ones = 0x0101010101010101;
    constexpr std::uint64_t Highs = 0x8080808080808080;
    std::uint64_t zeros = 0;
    std::uint64_t any = 0;
    for (std::size_t offset = 0; offset < GateBytes; offset += sizeof(std::uint64_t)) {
        const std::uint64_t word = Word(sector + offset);
        const std::uint64_t odd = word | EvenBytes;
        zeros |= (odd - Ones) & ~odd & Highs;
        any |= word;
    }
    return zeros != 0 && any != 0;
}

std::uint64_t Gates(const Dispatch& dispatch, const std::uint8_t* sector)
{
    constexpr std::uint64_t ProgramTable = 0x00C1'0000'11B0'0000;  // 00 00 B0 11 00 00 C1 00
    std::uint64_t candidates = 0;
    if (MayHoldPackStart(sector)) {
        candidates |= dispatch.packStart;
    }
    if (std::memcmp(sector + 4, "ftyp", 4) == 0) {
        candidates |= dispatch.fileType;
    }
    if (Word(sector + 8) == ProgramTable) {
        candidates |= dispatch.timedTable;
    }
    if (sector[31] == '[') {
        candidates |= dispatch.contentTypes;
    }
    return candidates;
}

}  // namespace

TableHit FindHead(const std::uint8_t* sector, std::int32_t size)
{
    static const Dispatch dispatch = MakeDispatch();
    if (sector == nullptr || size <= 0) {
        return {};
    }
    std::uint64_t candidates = dispatch.byFirstByte[sector[0]];
    if (size >= GateBytes) {
        candidates |= Gates(dispatch, sector);
    } else {
        candidates |=
            dispatch.packStart | dispatch.fileType | dispatch.timedTable | dispatch.contentTypes;
    }
    for (; candidates != 0; candidates &= candidates - 1) {
        const SignatureEntry* row =
            dispatch.rows[static_cast<std::size_t>(std::countr_zero(candidates))];
        const FileTypeId typeId = row->detect(sector, size);
        if (typeId != FileTypeId::None) {
            return {typeId, row};
        }
    }
    return {};
}

FileTypeId DetectAny(const std::uint8_t* sector, std::int32_t size)
{
    return FindHead(sector, size).typeId;
}
