#include "recovery/carving/formats/ZipDocument.h"

#include "platform/Text.h"
#include "recovery/carving/ByteSearch.h"
#include "recovery/carving/CarveContext.h"
#include "recovery/carving/formats/Formats.h"

#include <algorithm>
#include <array>
#include <deque>

namespace {

constexpr std::int32_t SmallestSize = 31;
constexpr std::int32_t TurnSectors = 4;
constexpr std::int32_t MostSectors = 20;
constexpr std::size_t CarryBytes = 4;  // a signature that lies across two turns is found

constexpr std::size_t SignatureBytes = 4;
// After "PK".
constexpr std::uint16_t LocalHeader = 0x0403;
constexpr std::uint16_t CentralHeader = 0x0201;
constexpr std::uint16_t EndOfCentral = 0x0605;

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

enum class Signature : std::uint8_t
{
    Local,
    Central,
    End
};

// Where signatures lie on a source, as far as it was looked through. Zips in adjacent sectors are classified over nearly
// the same 20 sectors each; what was looked through for the one is known for the next.
class SignatureMap
{
public:
    struct Place
    {
        std::uint64_t position = 0;  // byte on the source
        Signature signature = Signature::Local;
    };

    // From now on nothing before position is asked for.
    void Begin(std::uint64_t openNumber, std::int32_t size, std::uint64_t position)
    {
        const bool known = m_contents == openNumber && m_sectorSize == size &&
                           position >= m_knownFrom && position <= m_knownTo;
        if (!known) {
            m_places.clear();
            m_contents = openNumber;
            m_sectorSize = size;
            m_knownTo = position;
        }
        while (!m_places.empty() && m_places.front().position < position) {
            m_places.pop_front();
        }
        m_knownFrom = position;
    }

    // Looks through what is new of the bytes that lie at position; carry holds the four bytes before them.
    void Extend(const std::array<std::uint8_t, CarryBytes>& carry,
                ByteView bytes,
                std::uint64_t position)
    {
        if (m_knownTo < position) {
            std::array<std::uint8_t, 2 * CarryBytes> border{};
            std::copy(carry.begin(), carry.end(), border.begin());
            std::copy_n(bytes.Data(), CarryBytes, border.begin() + CarryBytes);
            const ByteView view(border.data(), border.size());
            Search(view.Sub(0, border.size() - 1), position - CarryBytes);
        }
        Search(bytes, position);
    }

    // The places from position on.
    std::size_t IndexOf(std::uint64_t position) const
    {
        const auto first = std::lower_bound(
            m_places.begin(), m_places.end(), position,
            [](const Place& place, std::uint64_t value) { return place.position < value; });
        return static_cast<std::size_t>(first - m_places.begin());
    }
    const Place* At(std::size_t index) const
    {
        return index < m_places.size() ? &m_places[index] : nullptr;
    }

private:
    void Search(ByteView bytes, std::uint64_t position)
    {
        std::size_t at = m_knownTo > position ? static_cast<std::size_t>(m_knownTo - position) : 0;
        while ((at = FindBytes(bytes, "PK", at)) != NotFound && bytes.Covers(at, SignatureBytes)) {
            const std::uint16_t kind = bytes.U16(at + 2);
            if (kind == LocalHeader || kind == CentralHeader || kind == EndOfCentral) {
                m_places.push_back({position + at, kind == LocalHeader     ? Signature::Local
                                                   : kind == CentralHeader ? Signature::Central
                                                                           : Signature::End});
            }
            ++at;
        }
        m_knownTo = std::max(m_knownTo, position + bytes.Size() - (SignatureBytes - 1));
    }

    std::deque<Place> m_places;
    std::uint64_t m_contents = 0;
    std::int32_t m_sectorSize = 0;
    std::uint64_t m_knownFrom = 0;
    std::uint64_t m_knownTo = 0;  // every signature that begins before it is in the list
};

// One turn: the sectors just read and the four bytes before them.
struct Turn
{
    ByteView bytes;
    std::uint64_t position = 0;  // of bytes on the source
    std::uint64_t firstByte =
        0;  // that signatures may begin at: the carried bytes count from the second turn on
    std::uint64_t endByte = 0;
};

// One of the two searches of a turn.
struct HeaderSearch
{
    Signature signature;
    std::size_t nameOffset;
    std::uint64_t guard;  // more bytes than these must be left from the find on
    std::size_t index;    // where it goes on in the map
    bool done = false;
};

// The next place of the kind that lies wholly in the turn; null when there is none.
const SignatureMap::Place*
NextPlace(const SignatureMap& map, const Turn& turn, Signature signature, std::size_t& index)
{
    for (const SignatureMap::Place* place = map.At(index); place != nullptr;
         place = map.At(index)) {
        if (place->position + SignatureBytes > turn.endByte) {
            return nullptr;
        }
        ++index;
        if (place->signature == signature) {
            return place;
        }
    }
    return nullptr;
}

FileTypeId
Step(HeaderSearch& search, const SignatureMap& map, const Turn& turn, std::uint64_t lastByte)
{
    const SignatureMap::Place* place = NextPlace(map, turn, search.signature, search.index);
    if (place == nullptr || place->position > lastByte ||
        turn.endByte - place->position <= search.guard) {
        search.done = true;
        return FileTypeId::None;
    }
    const std::uint64_t name = place->position + search.nameOffset - turn.position;
    return ClassifyMemberName(
        turn.bytes.Sub(static_cast<std::size_t>(name)),
        static_cast<std::size_t>(turn.endByte - place->position - search.guard));
}

// The two searches take turns, local headers first; the first class found wins. Nothing after the first end signature
// is looked at.
FileTypeId ClassifyTurn(const SignatureMap& map, const Turn& turn)
{
    const std::size_t first = map.IndexOf(turn.firstByte);
    std::size_t endIndex = first;
    const SignatureMap::Place* end = NextPlace(map, turn, Signature::End, endIndex);
    const std::uint64_t lastByte = end != nullptr ? end->position : turn.endByte;
    HeaderSearch local = {Signature::Local, 30, 4, first};
    HeaderSearch central = {Signature::Central, 46, 47, first};
    while (!local.done || !central.done) {
        for (HeaderSearch* search : {&local, &central}) {
            const FileTypeId typeId =
                search->done ? FileTypeId::None : Step(*search, map, turn, lastByte);
            if (typeId != FileTypeId::None) {
                return typeId;
            }
        }
    }
    return FileTypeId::None;
}

bool NamesDocument(ByteView bytes, std::size_t at)
{
    if (bytes.U8(at) != 'P' || bytes.U8(at + 1) != 'K') {
        return false;
    }
    const std::uint16_t kind = bytes.U16(at + 2);
    if (kind != LocalHeader && kind != CentralHeader) {
        return false;
    }
    const ByteView name = bytes.Sub(at + (kind == LocalHeader ? 30 : 46));
    return ClassifyMemberName(name, name.Size() + CarryBytes) != FileTypeId::None;
}

// The stretch of a source in which no header names a document, whatever the rules of turns and ends would make of it.
// What lies all in it is a plain zip; images full of zips are mostly that.
class QuietStretch
{
public:
    bool IsNear(std::uint64_t openNumber, std::int32_t size, std::uint64_t start) const
    {
        return m_contents == openNumber && m_sectorSize == size && start >= m_from &&
               start - m_from <=
                   static_cast<std::uint64_t>(MostSectors) * static_cast<std::uint64_t>(size);
    }
    void BeginAt(std::uint64_t openNumber, std::int32_t size, std::uint64_t start)
    {
        if (m_contents != openNumber || m_sectorSize != size || start < m_from || start > m_to) {
            m_to = start;
        }
        m_contents = openNumber;
        m_sectorSize = size;
        m_from = start;
    }
    // bytes lie at start; nothing before it is asked for again.
    bool Holds(ByteView bytes, std::uint64_t start)
    {
        m_from = start;
        m_to = std::max(m_to, start);
        auto at = static_cast<std::size_t>(m_to - start);
        while ((at = FindBytes(bytes, "PK", at)) != NotFound) {
            // Signatures come in crowds where they come at all.
            for (const std::size_t end = std::min(at + CrowdBytes, bytes.Size()); at < end; ++at) {
                if (NamesDocument(bytes, at)) {
                    m_to = start + at;
                    return false;
                }
            }
        }
        // A name that runs out of the bytes may be whole for the next head.
        m_to = start + (bytes.Size() > LongestHeader ? bytes.Size() - LongestHeader : 0);
        return true;
    }

private:
    static constexpr std::size_t CrowdBytes = 64;
    static constexpr std::size_t LongestHeader = 64;

    std::uint64_t m_contents = 0;
    std::int32_t m_sectorSize = 0;
    std::uint64_t m_from = 0;
    std::uint64_t m_to = 0;
};

}  // namespace

FileTypeId DetectOoxml(const std::uint8_t* buffer, std::int32_t size)
{
    const ByteView sector(buffer, size);
    if (size < SmallestSize) {
        return FileTypeId::None;
    }
    // The name of a first member stands at 30, but 31 is asked for: a head without its mark at 0 is not known by it.
    const bool zip = sector.Matches(0, "PK\3\4") || sector.Matches(31, "[Content_Types].xml");
    return zip ? ClassifyOoxml() : FileTypeId::None;
}

FileTypeId ClassifyOoxml()
{
    static SignatureMap map;
    static QuietStretch quiet;
    CarveContext& context = CarveContext::Instance();
    if (context.source == nullptr || context.sectorSize <= 0) {
        return FileTypeId::None;
    }
    const auto sectorBytes = static_cast<std::uint64_t>(context.sectorSize);
    const std::uint64_t start = context.currentLba * sectorBytes;
    const std::uint64_t openNumber = context.source->OpenNumber();
    if (quiet.IsNear(openNumber, context.sectorSize, start)) {
        // Fails near the source's end, where there may be enough for a turn all the same.
        const ByteView all = context.ReadSectors(context.currentLba, MostSectors);
        if (!all.Empty() && quiet.Holds(all, start)) {
            return FileTypeId::None;
        }
    }
    quiet.BeginAt(openNumber, context.sectorSize, start);
    map.Begin(openNumber, context.sectorSize, start);
    std::array<std::uint8_t, CarryBytes> carry{};
    for (std::uint64_t sector = 0; sector < MostSectors; sector += TurnSectors) {
        Turn turn;
        turn.bytes = context.ReadSectors(context.currentLba + sector, TurnSectors);
        if (turn.bytes.Size() < CarryBytes) {
            break;
        }
        turn.position = start + sector * sectorBytes;
        turn.firstByte = sector == 0 ? start : turn.position - CarryBytes;
        turn.endByte = turn.position + turn.bytes.Size();
        map.Extend(carry, turn.bytes, turn.position);
        const FileTypeId typeId = ClassifyTurn(map, turn);
        if (typeId != FileTypeId::None) {
            return typeId;
        }
        const ByteView last = turn.bytes.Sub(turn.bytes.Size() - CarryBytes);
        std::copy_n(last.Data(), CarryBytes, carry.begin());
    }
    return FileTypeId::None;
}
