#include "recovery/metadata/FatEntryNames.h"

#include "platform/Text.h"
#include "recovery/metadata/SectorValidators.h"

namespace {

struct PiecePart
{
    std::size_t offset;  // in the entry
    std::size_t units;
};

constexpr PiecePart PieceParts[] = {{1, 5}, {14, 6}, {28, 2}};

std::string TrimmedText(ByteView bytes)
{
    std::string text(bytes.Span().begin(), bytes.Span().end());
    text.erase(text.find_last_not_of(' ') + 1);
    return text;
}

// The mark is replaced before the conversion: in UTF-8 that byte can begin a character.
std::string ConvertShortName(ByteView entry, std::string raw)
{
    if (entry.U8(0) == DeletedMark && !raw.empty()) {
        raw.front() = '!';
    }
    return CodePage437ToUtf8(LowerAscii(raw.substr(0, raw.find('\0'))));
}

}  // namespace

bool LongNameGatherer::AddPiece(ByteView entry)
{
    if (m_position < PieceUnits + 1) {
        return false;
    }
    m_position -= PieceUnits;
    std::size_t at = m_position;
    for (const PiecePart& part : PieceParts) {
        for (std::size_t i = 0; i < part.units; ++i) {
            m_units[at++] = entry.U16(part.offset + i * 2);
        }
    }
    m_hasPieces = true;
    return true;
}

void LongNameGatherer::Reset()
{
    m_position = Capacity;
    m_hasPieces = false;
}

std::string LongNameGatherer::Take()
{
    const std::u16string_view all(m_units.data(), Capacity);
    std::string name = Utf16ToUtf8(UntilZero(all.substr(m_position)));
    Reset();
    return name;
}

std::string ShortFolderName(ByteView entry)
{
    return ConvertShortName(entry, TrimmedText(entry.Sub(0, 8)));
}

std::string ShortFileName(ByteView entry)
{
    std::string raw = TrimmedText(entry.Sub(0, 8));
    if (entry.U8(8) != ' ') {
        raw += '.' + TrimmedText(entry.Sub(8, 3));
    }
    return ConvertShortName(entry, std::move(raw));
}

std::uint32_t FirstClusterOf(ByteView entry)
{
    return std::uint32_t{entry.U16(EntryHighWord)} << 16 | entry.U16(EntryLowWord);
}

bool StartsWithDotEntries(ByteView unit)
{
    return unit.Matches(0, ". ") && unit.Matches(DirEntryBytes, "..");
}
