#include "recovery/carving/formats/ZipDocument.h"

#include "platform/Text.h"
#include "recovery/carving/ByteSearch.h"
#include "recovery/carving/CarveContext.h"
#include "recovery/carving/formats/Formats.h"

#include <cstring>
#include <memory>
#include <new>

namespace {

using namespace std::string_view_literals;

constexpr std::int32_t SmallestSize = 31;
constexpr std::int32_t TurnSectors = 4;
constexpr std::uint64_t MostSectors = 20;
constexpr std::size_t CarryBytes = 4;  // a signature that lies across two turns is found

constexpr std::string_view LocalHeader = "PK\3\4";
constexpr std::string_view CentralHeader = "PK\1\2";
constexpr std::string_view EndOfCentral = "PK\5\6";

bool BeginsWith(ByteView name, std::string_view text)
{
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (!name.Covers(i, 1) || LowerAscii(static_cast<char>(name.U8(i))) != text[i]) {
            return false;
        }
    }
    return true;
}

// left is what the headers' rules leave of the buffer; a name that runs out of the view matches nothing.
FileTypeId ClassifyMemberName(ByteView name, std::size_t left)
{
    if (left > 4 && BeginsWith(name, "word")) {
        return FileTypeId::WordOoxml;
    }
    if (left > 3 && BeginsWith(name, "ppt")) {
        return FileTypeId::SlidesOoxml;
    }
    // A member "xlabel.txt" counts as well.
    return left > 2 && BeginsWith(name, "xl") ? FileTypeId::SheetOoxml : FileTypeId::None;
}

// One of the two searches of a turn.
struct HeaderSearch
{
    std::string_view signature;
    std::size_t nameOffset;
    std::size_t guard;  // more bytes than these must be left from the find on
    std::size_t at = 0;
    bool done = false;
};

FileTypeId Step(HeaderSearch& search, ByteView buffer, std::size_t endSignature)
{
    const std::size_t found = FindBytes(buffer, search.signature, search.at);
    if (found == NotFound || found > endSignature || buffer.Size() - found <= search.guard) {
        search.done = true;
        return FileTypeId::None;
    }
    search.at = found + search.signature.size();
    return ClassifyMemberName(buffer.Sub(found + search.nameOffset),
                              buffer.Size() - found - search.guard);
}

// The two searches take turns, local headers first; the first class found wins.
FileTypeId ClassifyTurn(ByteView buffer)
{
    const std::size_t endSignature = FindBytes(buffer, EndOfCentral);
    HeaderSearch local = {LocalHeader, 30, 4};
    HeaderSearch central = {CentralHeader, 46, 47};
    while (!local.done || !central.done) {
        for (HeaderSearch* search : {&local, &central}) {
            if (search->done) {
                continue;
            }
            const FileTypeId typeId = Step(*search, buffer, endSignature);
            if (typeId != FileTypeId::None) {
                return typeId;
            }
        }
    }
    return FileTypeId::None;
}

}  // namespace

FileTypeId DetectOoxml(const std::uint8_t* buffer, std::int32_t size)
{
    const ByteView sector(buffer, size);
    if (size < SmallestSize) {
        return FileTypeId::None;
    }
    // The name of a first member stands at 30; 31 is what is asked for, and stays.
    const bool zip = sector.Matches(0, LocalHeader) || sector.Matches(31, "[Content_Types].xml");
    return zip ? ClassifyOoxml() : FileTypeId::None;
}

FileTypeId ClassifyOoxml()
{
    CarveContext& context = CarveContext::Instance();
    if (context.sectorSize <= 0) {
        return FileTypeId::None;
    }
    const std::size_t span = static_cast<std::size_t>(context.sectorSize) * TurnSectors;
    const std::unique_ptr<std::uint8_t[]> buffer(new (std::nothrow)
                                                     std::uint8_t[span + CarryBytes]);
    if (buffer == nullptr) {
        return FileTypeId::None;
    }
    std::memset(buffer.get(), 0, CarryBytes);
    for (std::uint64_t sector = 0; sector < MostSectors; sector += TurnSectors) {
        const ByteView read = context.ReadSectors(context.currentLba + sector, TurnSectors);
        if (read.Size() != span) {
            break;
        }
        std::memcpy(buffer.get() + CarryBytes, read.Data(), span);
        const FileTypeId typeId = ClassifyTurn(ByteView(buffer.get(), span + CarryBytes));
        if (typeId != FileTypeId::None) {
            return typeId;
        }
        std::memcpy(buffer.get(), buffer.get() + span, CarryBytes);
    }
    return FileTypeId::None;
}
