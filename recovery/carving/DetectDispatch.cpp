#include "recovery/carving/DetectDispatch.h"

#include <array>
#include <bit>
#include <cstring>
#include <vector>

namespace {

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

void Enter(Dispatch& dispatch, const SignatureEntry& row, std::uint64_t bit)
{
    for (const char first : row.firstBytes) {
        dispatch.byFirstByte[static_cast<std::uint8_t>(first)] |= bit;
    }
    switch (row.gate) {
    case HeadGate::FirstByte:
        break;
    case HeadGate::PackStart:
        dispatch.packStart |= bit;
        break;
    case HeadGate::FileType:
        dispatch.fileType |= bit;
        break;
    case HeadGate::TimedTable:
        dispatch.timedTable |= bit;
        break;
    case HeadGate::ContentTypes:
        dispatch.contentTypes |= bit;
        break;
    }
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
        Enter(dispatch, row, std::uint64_t{1} << dispatch.rows.size());
        dispatch.rows.push_back(&row);
    }
    return dispatch;
}

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
