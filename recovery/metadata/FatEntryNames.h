// Names of FAT directory entries: long ones gathered from their pieces, short ones from their 11 bytes.
#pragma once

#include "platform/ByteView.h"

#include <array>
#include <cstdint>
#include <string>

// Gathers the pieces of a long name. They stack up backwards, each before what came earlier; neither their ordinal nor
// their checksum is looked at.
class LongNameGatherer
{
public:
    static constexpr std::size_t Capacity = 260;  // UTF-16 units; a zero unit follows
    static constexpr std::size_t PieceUnits = 13;

    // False when the piece does not fit any more: the twentieth ends the directory.
    bool AddPiece(ByteView entry);
    bool HasPieces() const { return m_hasPieces; }
    // Drops what was gathered.
    void Reset();
    // Forgets that there are pieces but keeps their place, so that the next ones are put before them.
    void Release() { m_hasPieces = false; }
    // The name in UTF-8, and a fresh start.
    std::string Take();

private:
    std::array<char16_t, Capacity + 1> m_units = {};
    std::size_t m_position = Capacity;
    bool m_hasPieces = false;
};

// The 8 name bytes without trailing blanks, lower case, "!" for the mark of a deleted entry; never the extension.
std::string ShortFolderName(ByteView entry);
// The same with "." and the extension where there is one.
std::string ShortFileName(ByteView entry);

// The high word at 20 and the low word at 26.
std::uint32_t FirstClusterOf(ByteView entry);

// ". " at the start and ".." one entry after it: the first sector of a folder.
bool StartsWithDotEntries(ByteView unit);
