#include "recovery/metadata/SectorValidators.h"

#include "recovery/metadata/FatDateTime.h"

#include <cstring>

namespace {

constexpr std::size_t NameBytes = 8;
constexpr std::size_t ShortNameBytes = 11;
constexpr std::uint8_t LastPieceMark = 0x40;
// The format allows 20 pieces; two fewer are accepted: a sector with a longer name may not be found to be a folder's.
constexpr std::uint8_t MostLongNamePieces = 18;

constexpr std::uint64_t EarliestTime = 0x01B41E2A18D64000;  // 1990-01-01
constexpr std::uint64_t LatestTime = 0x01F7630BE39D8000;    // 2050-01-01

bool IsPlausibleTime(std::uint16_t date, std::uint16_t time)
{
    const std::uint64_t fileTime = FileTimeFromFat(date, time);
    return fileTime >= EarliestTime && fileTime <= LatestTime;
}

bool HasPlausibleTimes(ByteView entry)
{
    return IsPlausibleTime(entry.U16(16), entry.U16(14)) && IsPlausibleTime(entry.U16(18), 0) &&
           IsPlausibleTime(entry.U16(24), entry.U16(22));
}

// Attribute bytes that no entry may have, whatever else stands in it.
bool IsImpossibleAttribute(std::uint8_t attributes)
{
    if (attributes == AttributeVolumeLabel || attributes == AttributeLongName) {
        return false;
    }
    if ((attributes & (AttributeVolumeLabel | 0xC0)) != 0) {
        return true;
    }
    if ((attributes & AttributeFolder) != 0) {
        return (attributes & 0x01) != 0;
    }
    // A plain file must have its archive bit set.
    return (attributes & AttributeArchive) == 0;
}

// A blank may be followed only by blanks.
bool HasInnerBlank(const std::uint8_t* text, std::size_t count)
{
    bool blank = false;
    for (std::size_t i = 0; i < count; ++i) {
        if (text[i] == ' ') {
            blank = true;
        } else if (blank) {
            return true;
        }
    }
    return false;
}

// In bytes 0 to 9 a byte above 127 opens a pair, which the next byte must close with another; so the eleventh
// byte can close a pair and not open one.
bool HasBrokenPair(const std::uint8_t* name)
{
    std::size_t i = name[0] == DeletedMark ? 1 : 0;
    while (i < ShortNameBytes - 1) {
        if (name[i] <= 127) {
            ++i;
            continue;
        }
        if (name[i + 1] <= 127) {
            return true;
        }
        i += 2;
    }
    return false;
}

bool IsSoundShortEntry(ByteView entry)
{
    const std::uint8_t* name = entry.Data();
    for (std::size_t i = 0; i < ShortNameBytes; ++i) {
        if (name[i] < 32 || name[i] == '.') {
            return false;
        }
    }
    if (HasInnerBlank(name, NameBytes) ||
        HasInnerBlank(name + NameBytes, ShortNameBytes - NameBytes) || HasBrokenPair(name)) {
        return false;
    }
    return entry.U8(EntryAttributes) == AttributeVolumeLabel ||
           FileTimeFromFat(entry.U16(16), entry.U16(14)) != 0;
}

// From a long-name piece to the short entry that it belongs to: same checksum all the way.
bool IsSoundLongName(ByteView fromPiece)
{
    const std::uint8_t checksum = fromPiece.U8(13);
    for (std::size_t i = 1; i <= MostLongNamePieces; ++i) {
        const ByteView next = fromPiece.Sub(i * DirEntryBytes);
        if (next.Size() < DirEntryBytes) {
            return true;
        }
        if (!IsValidDirEntry(next)) {
            return false;
        }
        if (next.U8(EntryAttributes) != AttributeLongName) {
            return next.U8(0) == DeletedMark || ShortNameChecksum(next) == checksum;
        }
        if (next.U8(13) != checksum) {
            return false;
        }
    }
    return true;
}

}  // namespace

bool IsMftRecord(ByteView sector, std::uint32_t recordBytes)
{
    return sector.Matches(0, "FILE") && sector.Covers(510, 2) && sector.U32(24) <= recordBytes &&
           sector.U32(28) == recordBytes && sector.U16(48) == sector.U16(510);
}

bool IsDotPair(ByteView entries)
{
    if (entries.U8(0) != '.' || !entries.Covers(0, 2 * DirEntryBytes)) {
        return false;
    }
    const ByteView second = entries.Sub(DirEntryBytes);
    return (entries.U8(EntryAttributes) & AttributeFolder) != 0 && entries.U32(EntrySize) == 0 &&
           second.Matches(0, "..") && (second.U8(EntryAttributes) & AttributeFolder) != 0 &&
           second.U32(EntrySize) == 0;
}

bool IsFatDotEntries(ByteView sector)
{
    return IsDotPair(sector);
}

bool IsValidDirEntry(ByteView entries)
{
    if (!entries.Covers(0, DirEntryBytes)) {
        return false;
    }
    if (IsDotPair(entries)) {
        return true;
    }
    const std::uint8_t attributes = entries.U8(EntryAttributes);
    if (IsImpossibleAttribute(attributes)) {
        return false;
    }
    const bool deleted = entries.U8(0) == DeletedMark;
    const bool folder = (attributes & AttributeFolder) != 0;
    const std::uint32_t size = entries.U32(EntrySize);
    const std::uint16_t high = entries.U16(EntryHighWord);
    const std::uint16_t low = entries.U16(EntryLowWord);
    // Long-name pieces are met by this too: one that is padded with zeros in place of FFFF is refused.
    if (size == 0 && !folder && (high != 0 || low != 0)) {
        return false;
    }
    if (attributes == AttributeLongName) {
        const bool tooLong =
            !deleted &&
            (entries.U8(0) & static_cast<std::uint8_t>(~LastPieceMark)) > MostLongNamePieces;
        return !tooLong && low == 0;
    }
    if (attributes == AttributeVolumeLabel && (size != 0 || high != 0 || low != 0)) {
        return false;
    }
    if (!deleted && folder && size != 0) {
        return false;
    }
    if (attributes != AttributeVolumeLabel && IsBadShortName(entries)) {
        return false;
    }
    // Live labels are asked for all three times as well, though most carry the write time only.
    return deleted || folder || HasPlausibleTimes(entries);
}

bool IsBadShortName(ByteView entry)
{
    constexpr std::string_view Forbidden = "\\:*?\"<>|.";
    for (std::size_t i = 0; i < ShortNameBytes; ++i) {
        const std::uint8_t letter = entry.U8(i);
        if (letter < 32 || (letter >= 'a' && letter <= 'z') ||
            Forbidden.find(static_cast<char>(letter)) != std::string_view::npos) {
            return true;
        }
    }
    return false;
}

bool IsFatDirectorySector(ByteView sector)
{
    // Nearly all other data ends here. "." and ".." have an attribute byte that passes.
    if (sector.U8(0) == 0 || (sector.U8(EntryAttributes) & 0xC0) != 0) {
        return false;
    }
    const std::size_t count = sector.Size() / DirEntryBytes;
    for (std::size_t i = 0; i < count; ++i) {
        const ByteView entry = sector.Sub(i * DirEntryBytes);
        if (entry.U8(0) == 0) {
            return entry.AllZero();
        }
        if (!IsValidDirEntry(entry) || std::memcmp(entry.Data() + 1, entry.Data() + 17, 14) == 0) {
            return false;
        }
        const bool piece = entry.U8(EntryAttributes) == AttributeLongName;
        if (piece ? !IsSoundLongName(entry) : !IsSoundShortEntry(entry)) {
            return false;
        }
    }
    return count > 0;
}

std::uint8_t ShortNameChecksum(ByteView entry)
{
    std::uint32_t sum = 0;
    for (std::size_t i = 0; i < ShortNameBytes; ++i) {
        sum = (((sum & 1) << 7) + (sum >> 1) + entry.U8(i)) & 0xFF;
    }
    return static_cast<std::uint8_t>(sum);
}
