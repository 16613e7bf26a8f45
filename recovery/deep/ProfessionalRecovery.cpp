#include "recovery/deep/ProfessionalRecovery.h"

#include "platform/FileTime.h"
#include "recovery/Heartbeat.h"
#include "recovery/deep/CarvedDoubles.h"
#include "recovery/metadata/FatClusters.h"
#include "recovery/ntfs/FastNtfsRecovery.h"

#include <algorithm>
#include <utility>

namespace {

constexpr std::int32_t FastRange = 9;
constexpr std::int32_t PassRange = 90;

// The scan went over the whole target, or is on its way over it.
bool ReadsAllSectors(const ScanLogEntry& entry)
{
    const bool complete = entry.rangeLength == 0 && entry.position >= entry.sectorCount;
    return entry.rangeStart == 0 && (complete || entry.rangeLength == entry.sectorCount);
}

template <typename Item>
void Append(std::vector<Item>& items, const std::vector<Item>& more)
{
    items.insert(items.end(), more.begin(), more.end());
}

}  // namespace

CProfessionalRecovery::CProfessionalRecovery(std::shared_ptr<ScanLogDirectory> log,
                                             FastEngineMaker maker,
                                             PassOver passOver)
    : m_log(std::move(log)),
      m_makeFast(std::move(maker)),
      m_passOver(passOver),
      m_fat(m_log),
      m_ntfs(m_log),
      m_carver(m_log)
{
}

ResultCode CProfessionalRecovery::Open(std::shared_ptr<ScanSource> source, char16_t driveLetter)
{
    m_scanSource = std::move(source);
    m_driveLetter = driveLetter;
    m_sectorSize = static_cast<std::int32_t>(m_scanSource->SectorSize());
    m_target = m_scanSource->Identity();
    m_source.Open(m_scanSource);
    std::shared_ptr<ScanSource> ahead;
    if (m_scanSource->OpenAgain(&ahead) == ResultSuccess) {
        m_aheadSource.Open(std::move(ahead));  // without it nothing is read ahead
    }
    m_resumeEntry = {};
    m_resumeValid = m_log->FindScan(*m_scanSource, m_resumeEntry);
    if (m_resumeValid && m_passOver == PassOver::AllSectors && !ReadsAllSectors(m_resumeEntry)) {
        DiscardResumableScan();  // it passed over what its file system uses
    }
    (void)m_fat.Open(m_scanSource, driveLetter);
    const ResultCode result = m_ntfs.Open(m_scanSource, driveLetter);
    m_fast = m_makeFast ? m_makeFast(m_scanSource, driveLetter) : nullptr;
    return result;
}

void CProfessionalRecovery::DiscardResumableScan()
{
    m_resumeValid = false;
    m_dropped = LogFolderOf(m_resumeEntry);
}

SectorRanges CProfessionalRecovery::Unread() const
{
    return m_scanSource != nullptr ? m_scanSource->Unread() : SectorRanges();
}

LostRecords CProfessionalRecovery::Lost() const
{
    LostRecords sum = m_fat.Lost();
    const auto* const quick = dynamic_cast<const CStoreEngine*>(m_fast.get());
    for (const LostRecords& lost :
         {quick != nullptr ? quick->Lost() : LostRecords(), m_ntfs.Lost(), m_carver.Lost()}) {
        sum.records += lost.records;
        sum.why = sum.why != ResultSuccess ? sum.why : lost.why;
    }
    return sum;
}

ResultCode CProfessionalRecovery::SetCallbacks(ProgressCallback scan,
                                               FileProgressCallback file,
                                               void* context,
                                               std::int32_t /*progressRange*/)
{
    m_scanCallback = scan;
    m_callbackContext = context;
    if (m_fast != nullptr) {
        m_fast->SetCallbacks(scan, file, context, FastRange);
    }
    m_fat.SetCallbacks(scan, file, context, PassRange);
    m_ntfs.SetCallbacks(scan, file, context, PassRange);
    m_carver.SetCallbacks(scan, file, context, PassRange);
    return ResultSuccess;
}

// The engine that wrote a record; null when there is none such.
IFileRecoveryParse* CProfessionalRecovery::EngineOf(const FileRecord& record)
{
    switch (record.EngineKind) {
    case EngineKindFastNtfs:
    case EngineKindFastFat:
        return m_fast.get();
    case EngineKindProfessionalNtfs:
        return &m_ntfs;
    case EngineKindProfessionalFat:
        return &m_fat;
    case EngineKindCarved:
        return &m_carver;
    default:
        return nullptr;
    }
}

std::array<IFileRecoveryParse*, 4> CProfessionalRecovery::Engines()
{
    return {m_fast.get(), &m_fat, &m_ntfs, &m_carver};
}

ResultCode CProfessionalRecovery::ListChildren(const FileRecord* parentRecord,
                                               std::uint32_t depth,
                                               FileRecordList& outRecords)
{
    ResultCode result = ResultSuccess;
    if (parentRecord != nullptr) {
        IFileRecoveryParse* engine = EngineOf(*parentRecord);
        result = engine != nullptr ? engine->ListChildren(parentRecord, depth, outRecords)
                                   : ResultSuccess;
    } else if (depth != 0) {
        return ResultInvalidParameter;
    } else {
        for (IFileRecoveryParse* engine : Engines()) {
            FileRecordList records;
            const ResultCode listed =
                engine != nullptr ? engine->ListChildren(nullptr, 0, records) : ResultSuccess;
            result = listed != ResultSuccess ? listed : result;
            Append(outRecords, records);
        }
    }
    SortRecords(outRecords);
    return result;
}

ResultCode CProfessionalRecovery::CountChildren(const FileRecord* parentRecord,
                                                std::uint32_t depth,
                                                std::uint32_t& outCount)
{
    outCount = 0;
    if (parentRecord != nullptr) {
        IFileRecoveryParse* engine = EngineOf(*parentRecord);
        return engine != nullptr ? engine->CountChildren(parentRecord, depth, outCount)
                                 : ResultSuccess;
    }
    if (depth != 0) {
        return ResultInvalidParameter;
    }
    ResultCode result = ResultSuccess;
    for (IFileRecoveryParse* engine : Engines()) {
        std::uint32_t count = 0;
        const ResultCode counted =
            engine != nullptr ? engine->CountChildren(nullptr, 0, count) : ResultSuccess;
        result = counted != ResultSuccess ? counted : result;
        outCount += count;
    }
    return result;
}

std::uint64_t CProfessionalRecovery::GetRecordCount() const
{
    const std::uint64_t quick = m_fast != nullptr ? m_fast->GetRecordCount() : 0;
    return quick + m_fat.GetRecordCount() + m_ntfs.GetRecordCount() + m_carver.GetRecordCount();
}

ResultCode CProfessionalRecovery::GetRecordPath(const FileRecord* record, std::string& outPath)
{
    if (record == nullptr) {
        return ResultInvalidParameter;
    }
    IFileRecoveryParse* engine = EngineOf(*record);
    return engine != nullptr ? engine->GetRecordPath(record, outPath) : ResultSuccess;
}

ResultCode CProfessionalRecovery::RestoreRecord(const FileRecord* record,
                                                const std::filesystem::path& destPath,
                                                std::uint32_t baseDepth)
{
    IFileRecoveryParse* engine = record != nullptr ? EngineOf(*record) : nullptr;
    return engine != nullptr ? engine->RestoreRecord(record, destPath, baseDepth)
                             : ResultInvalidParameter;
}

ResultCode CProfessionalRecovery::SetSearchCallback(SearchProgressCallback callback, void* context)
{
    m_searchCallback = callback;
    m_searchContext = context;
    if (m_fast != nullptr) {
        m_fast->SetSearchCallback(callback, context);
    }
    m_fat.SetSearchCallback(callback, context);
    m_ntfs.SetSearchCallback(callback, context);
    m_carver.SetSearchCallback(callback, context);
    return ResultSuccess;
}

std::optional<std::uint64_t> CProfessionalRecovery::FindFirstDataSector(const FileRecord& record)
{
    if (record.EngineKind == EngineKindProfessionalNtfs) {
        return m_ntfs.FirstDataSector(record);
    }
    if (record.EngineKind == EngineKindFastNtfs) {
        auto* quick = dynamic_cast<CFastNtfsRecovery*>(m_fast.get());
        return quick != nullptr
                   ? quick->FirstDataSector(record, static_cast<std::uint32_t>(m_sectorSize))
                   : std::nullopt;
    }
    const std::uint64_t dataSector = record.PartitionStart + record.DataStart;
    const std::uint32_t sectorsPerCluster =
        record.ClusterBytes / static_cast<std::uint32_t>(m_sectorSize);
    return SectorOfFatCluster({dataSector, 0, sectorsPerCluster}, record.NodeId);
}

std::optional<std::uint64_t> CProfessionalRecovery::FirstDataSector(const FileRecord& record)
{
    if (record.EngineKind != EngineKindProfessionalNtfs &&
        record.EngineKind != EngineKindFastNtfs) {
        return FindFirstDataSector(record);  // by arithmetic alone
    }
    return m_firstSectors.Of(
        record, [this](const FileRecord& asked) { return FindFirstDataSector(asked); });
}

// The quick engines count in sectors of their volume, which may be others than the source's: of FAT they tell it themselves.
std::optional<std::uint64_t> CProfessionalRecovery::FirstDataByte(const FileRecord& record)
{
    if (record.EngineKind == EngineKindProfessionalNtfs ||
        record.EngineKind == EngineKindFastNtfs) {
        const std::optional<std::uint64_t> sector = FirstDataSector(record);
        return sector ? std::optional(*sector * static_cast<std::uint64_t>(m_sectorSize))
                      : std::nullopt;
    }
    auto* const engine = dynamic_cast<CStoreEngine*>(EngineOf(record));
    const std::optional<BytePlaces> places =
        engine != nullptr ? engine->PlacesOf(record, 1) : std::nullopt;
    return places && !places->empty() ? std::optional(places->front().position) : std::nullopt;
}

bool CProfessionalRecovery::CanBeRead(const BytePlaces& places)
{
    const ScanSource& source = *m_scanSource;
    if (m_unread.Sectors() != source.UnreadSectors()) {
        m_unread = source.Unread();
    }
    const auto touches = [](const SectorRanges& ranges, std::uint64_t first, std::uint64_t end) {
        const auto range = ranges.NextFrom(first);
        return range && range->first < end;
    };
    return std::all_of(places.begin(), places.end(), [&](const BytePlace& place) {
        const std::uint64_t end = place.position + place.length;
        const std::uint64_t first = place.position / source.SectorSize();
        const std::uint64_t behind = (end - 1) / source.SectorSize() + 1;
        return end <= source.TotalSectors() * source.SectorSize() &&
               !touches(m_unread, first, behind) &&
               (source.Missing() == nullptr || !touches(*source.Missing(), first, behind));
    });
}

// Of what cannot be read the engines bring different parts, so the places say nothing then.
std::optional<BytePlaces> CProfessionalRecovery::PlacesOf(const FileRecord& record,
                                                          std::uint64_t bytes)
{
    auto* const engine = dynamic_cast<CStoreEngine*>(EngineOf(record));
    std::optional<BytePlaces> places =
        engine != nullptr ? engine->PlacesOf(record, bytes) : std::nullopt;
    return places && CanBeRead(*places) ? places : std::nullopt;
}

// What each engine finds comes after what those before it have found; append asks one, and answers 1 when it could.
template <typename Item, typename AppendOf>
std::int32_t CProfessionalRecovery::GatherSearch(const AppendOf& append,
                                                 std::vector<Item>& outItems)
{
    std::int32_t result = 0;
    // Room for all at once: growing would hold them twice. What is not used of it costs nothing.
    auto* const quick = dynamic_cast<CStoreEngine*>(m_fast.get());
    std::vector<Item> items;
    items.reserve((quick != nullptr ? quick->CountStored() : 0) + m_fat.CountStored() +
                  m_ntfs.CountStored() + m_carver.CountStored());
    const auto gather = [&](IFileRecoveryParse* engine) {
        if (engine != nullptr && append(*engine, items) != 0) {
            result = 1;
        }
        return items.size();
    };
    Heartbeat heartbeat;
    const FirstDataSectorFunction firstSector = [this](const FileRecord& record) {
        return FirstDataSector(record);
    };
    const KeepLooking keepLooking = [&] {
        return m_searchCallback != nullptr && heartbeat.IsDue()
                   ? m_searchCallback(m_searchContext, 100, 0)
                   : ResultSuccess;
    };
    const std::size_t quickCount = gather(m_fast.get());
    (void)gather(&m_fat);
    (void)gather(&m_ntfs);
    if (m_passOver == PassOver::AllSectors) {
        DropAnalysedDoubles(items, quickCount, firstSector, keepLooking);
    }
    const std::size_t knownCount = items.size();
    (void)gather(&m_carver);
    DropCarvedDoubles(items, knownCount, firstSector, keepLooking);
    if (outItems.empty()) {
        outItems = std::move(items);
    } else {
        Append(outItems, items);
    }
    return result;
}

std::int32_t CProfessionalRecovery::SearchRecords(std::string_view extensionPattern,
                                                  FileRecordList& outRecords)
{
    const std::int32_t result = GatherSearch(
        [extensionPattern](IFileRecoveryParse& engine, FileRecordList& records) {
            if (auto* const store = dynamic_cast<CStoreEngine*>(&engine)) {
                return store->AppendRecords(extensionPattern, records);
            }
            FileRecordList more;
            const std::int32_t could = engine.SearchRecords(extensionPattern, more);
            Append(records, more);
            return could;
        },
        outRecords);
    SortRecords(outRecords);
    return result;
}

std::int32_t CProfessionalRecovery::SearchRows(std::string_view extensionPattern,
                                               FoundRowList& outRows)
{
    const std::int32_t result = GatherSearch(
        [extensionPattern](IFileRecoveryParse& engine, FoundRowList& rows) {
            auto* const store = dynamic_cast<CStoreEngine*>(&engine);
            return store != nullptr ? store->AppendRows(extensionPattern, rows) : 0;
        },
        outRows);
    SortRows(outRows);
    return result;
}

ResultCode CProfessionalRecovery::ReadRecordData(const FileRecord* record,
                                                 std::filesystem::path& tempPathInOut,
                                                 std::uint8_t* buffer,
                                                 std::uint32_t& inOutSize,
                                                 PreviewProgressCallback progressFn,
                                                 void* context)
{
    IFileRecoveryParse* engine = record != nullptr ? EngineOf(*record) : nullptr;
    return engine != nullptr ? engine->ReadRecordData(record, tempPathInOut, buffer, inOutSize,
                                                      progressFn, context)
                             : ResultInvalidParameter;
}
