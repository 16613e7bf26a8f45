#include "session/DoubleRows.h"

#include "recovery/FileTypeCatalogue.h"
#include "recovery/carving/SignatureTable.h"

#include <algorithm>
#include <string>
#include <tuple>
#include <vector>

namespace {

// The engines by how much they know of a file: quick ones its folder, deep ones its name, the carver its content.
enum class Rank
{
    Quick,
    Deep,
    Carved
};

Rank RankOf(const FoundRow& row)
{
    switch (row.record.EngineKind) {
    case EngineKindFastNtfs:
    case EngineKindFastFat:
        return Rank::Quick;
    case EngineKindCarved:
        return Rank::Carved;
    default:
        return Rank::Deep;
    }
}

struct SameContent
{
    std::string_view extension;
    FileTypeId kind;
};

// Extensions that carving has no word for: their content is that of another kind.
constexpr SameContent OtherWords[] = {
    {"thm", FileTypeId::Jpeg},     {"m4v", FileTypeId::Mp4},     {"m4a", FileTypeId::Mp4},
    {"m4b", FileTypeId::Mp4},      {"m4p", FileTypeId::Mp4},     {"m4r", FileTypeId::Mp4},
    {"f4v", FileTypeId::Mp4},      {"3g2", FileTypeId::ThreeGp}, {"mod", FileTypeId::Mpeg},
    {"ra", FileTypeId::RealMedia}, {"midi", FileTypeId::Midi},   {"m2t", FileTypeId::Ts},
    {"m2ts", FileTypeId::Mts},     {"divx", FileTypeId::Avi},    {"lrv", FileTypeId::Mp4},
    {"nef", FileTypeId::Tiff},     {"nrw", FileTypeId::Tiff},    {"cr2", FileTypeId::Tiff},
    {"arw", FileTypeId::Tiff},     {"sr2", FileTypeId::Tiff},    {"srf", FileTypeId::Tiff},
    {"dng", FileTypeId::Tiff},     {"pef", FileTypeId::Tiff},    {"erf", FileTypeId::Tiff},
    {"kdc", FileTypeId::Tiff},     {"dcr", FileTypeId::Tiff},    {"mef", FileTypeId::Tiff},
    {"msg", FileTypeId::Fla},      {"mpp", FileTypeId::Fla},
};

// What carving calls a file: all documents of the one compound format are "fla" to it.
FileTypeId KindOf(std::string_view extension)
{
    const auto* const other =
        std::find_if(std::begin(OtherWords), std::end(OtherWords),
                     [&](const SameContent& row) { return row.extension == extension; });
    const FileTypeId kind =
        other != std::end(OtherWords) ? other->kind : LookupTypeByExtension(extension);
    switch (kind) {
    case FileTypeId::WordOle:
    case FileTypeId::SheetOle:
    case FileTypeId::SlidesOle:
    case FileTypeId::OtherOle:
        return FileTypeId::Fla;
    default:
        return kind;
    }
}

bool AreOfOneKind(const FoundRow& left, const FoundRow& right)
{
    const std::string one = LowerExtensionOf(left.record.NameText());
    const std::string other = LowerExtensionOf(right.record.NameText());
    if (one == other) {
        return true;
    }
    const FileTypeId kind = KindOf(one);
    return kind != FileTypeId::None && kind == KindOf(other);
}

class DoubleFinder
{
public:
    DoubleFinder(std::span<FoundRow> rows,
                 ITellsDataPlaces& engine,
                 const std::function<bool()>& goesOn)
        : m_rows(rows), m_engine(engine), m_goesOn(goesOn)
    {
    }
    void Run();

private:
    // The rows stay where they are: there can be many.
    struct Begin
    {
        std::uint64_t byte = 0;
        std::uint32_t row = 0;
        Rank rank = Rank::Quick;
    };

    bool MakeIndex();
    void MarkWithin(std::span<const Begin> begins);
    bool IsDoubleOf(const FoundRow& row, const FoundRow& shown);
    bool HasSameBytes(const FoundRow& row, const FoundRow& shown);
    bool Afford(const FileRecord& record);

    std::span<FoundRow> m_rows;
    ITellsDataPlaces& m_engine;
    const std::function<bool()>& m_goesOn;
    std::vector<Begin> m_index;
    // Clusters that chains are followed for. More than all doubles of four terabytes need is made up.
    std::uint64_t m_clustersLeft = std::uint64_t{1} << 27;
};

bool DoubleFinder::MakeIndex()
{
    m_index.reserve(m_rows.size());
    for (std::size_t i = 0; i < m_rows.size(); ++i) {
        if (!m_goesOn()) {
            return false;
        }
        const FileRecord& record = m_rows[i].record;
        if (record.IsFolder != 0) {
            continue;
        }
        // What is empty has no data: the entry stands for it.
        const std::optional<std::uint64_t> byte = record.FileSize != 0
                                                      ? m_engine.FirstDataByte(record)
                                                      : std::uint64_t{record.EntrySector};
        if (byte) {
            m_index.push_back({*byte, static_cast<std::uint32_t>(i), RankOf(m_rows[i])});
        }
    }
    std::sort(m_index.begin(), m_index.end(), [](const Begin& left, const Begin& right) {
        return std::tie(left.byte, left.rank, left.row) <
               std::tie(right.byte, right.rank, right.row);
    });
    return true;
}

void DoubleFinder::Run()
{
    const auto isOther = [this](const FoundRow& row) {
        return RankOf(row) != RankOf(m_rows.front());
    };
    if (std::none_of(m_rows.begin(), m_rows.end(), isOther) || !MakeIndex()) {
        return;
    }
    const std::span<const Begin> index(m_index);
    for (std::size_t first = 0; first < index.size();) {
        std::size_t end = first + 1;
        while (end < index.size() && index[end].byte == index[first].byte) {
            ++end;
        }
        MarkWithin(index.subspan(first, end - first));
        first = end;
    }
}

// Rows that begin in one place, those that know most in front.
void DoubleFinder::MarkWithin(std::span<const Begin> begins)
{
    constexpr std::size_t MostShown = 16;  // true sources have two or three
    std::vector<const FoundRow*> shown;
    for (const Begin& begin : begins) {
        if (begins.size() > 1 && !m_goesOn()) {
            return;
        }
        FoundRow& row = m_rows[begin.row];
        const auto same = std::find_if(shown.begin(), shown.end(), [&](const FoundRow* other) {
            return IsDoubleOf(row, *other);
        });
        if (same != shown.end()) {
            row.doubleOf = (*same)->at;
        } else if (shown.size() < MostShown) {
            shown.push_back(&row);
        }
    }
}

bool DoubleFinder::IsDoubleOf(const FoundRow& row, const FoundRow& shown)
{
    if (RankOf(row) == RankOf(shown)) {
        return false;
    }
    const std::uint64_t size = row.record.FileSize;
    const std::uint64_t shownSize = shown.record.FileSize;
    const bool mayBe = RankOf(row) == Rank::Carved
                           ? shownSize != 0 && size >= shownSize && AreOfOneKind(row, shown)
                           : size == shownSize && row.record.NameText() == shown.record.NameText();
    return mayBe && HasSameBytes(row, shown);
}

bool DoubleFinder::Afford(const FileRecord& record)
{
    constexpr std::uint32_t ForARead = 16;
    const std::uint64_t clusters =
        record.ClusterBytes != 0 ? record.FileSize / record.ClusterBytes + ForARead : ForARead;
    const bool can = clusters <= m_clustersLeft;
    m_clustersLeft -= can ? clusters : 0;
    return can;
}

bool DoubleFinder::HasSameBytes(const FoundRow& row, const FoundRow& shown)
{
    const std::uint64_t bytes = shown.record.FileSize;
    if (!Afford(shown.record) || !Afford(row.record)) {
        return false;
    }
    const std::optional<BytePlaces> one = m_engine.PlacesOf(shown.record, bytes);
    const std::optional<BytePlaces> other =
        one ? m_engine.PlacesOf(row.record, bytes) : std::nullopt;
    return other && BeginAlike(*one, *other, bytes);
}

}  // namespace

void MarkDoubles(std::span<FoundRow> rows,
                 ITellsDataPlaces& engine,
                 const std::function<bool()>& goesOn)
{
    DoubleFinder(rows, engine, goesOn).Run();
}
