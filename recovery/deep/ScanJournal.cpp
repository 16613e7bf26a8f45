#include "recovery/deep/ScanJournal.h"

#include "platform/ByteView.h"
#include "recovery/CheckpointFile.h"
#include "recovery/carving/CarveContext.h"

#include <algorithm>

// An entry: kind (1 byte), LBA (8), length (4), then so many bytes. Numbers are little-endian.
enum class ScanJournal::Kind : std::uint8_t
{
    DirectoryStart = 1,
    DirectorySector = 2,
    Block = 3,   // what Record entries count from; shown to nobody by itself
    Record = 4,  // the LBA is the sector's place in the block
    WholeRecord = 5,
    TransportStream = 6,  // the LBA of its first sector, then that of its last one
};

namespace {

constexpr std::size_t HeadBytes = 13;
constexpr std::size_t LargestEntry = 65536;
constexpr std::size_t WriteBytes = std::size_t{1} << 20;

void PutNumber(std::vector<std::uint8_t>& bytes, std::uint64_t number, std::size_t width)
{
    for (std::size_t i = 0; i < width; ++i) {
        bytes.push_back(static_cast<std::uint8_t>(number >> (8 * i)));
    }
}

}  // namespace

ResultCode ScanJournal::Open(const std::filesystem::path& logFolder, std::uint64_t keepBytes)
{
    ResultCode result = m_file.OpenOrCreate(logFolder / JournalName);
    if (result == ResultSuccess) {
        result = m_file.Truncate(keepBytes);
    }
    m_written = keepBytes;
    return result;
}

void ScanJournal::Put(Kind kind, std::uint64_t lba, std::span<const std::uint8_t> bytes)
{
    m_block.push_back(static_cast<std::uint8_t>(kind));
    PutNumber(m_block, lba, sizeof(std::uint64_t));
    PutNumber(m_block, bytes.size(), sizeof(std::uint32_t));
    m_block.insert(m_block.end(), bytes.begin(), bytes.end());
}

void ScanJournal::BeginBlock(std::span<const std::uint8_t> block, std::uint64_t firstLba)
{
    m_blockBytes = block;
    m_blockLba = firstLba;
    m_blockPut = false;
}

void ScanJournal::AddDirectoryStart(ByteView sector, std::uint64_t lba)
{
    Put(Kind::DirectoryStart, lba, sector.Span());
}

void ScanJournal::AddDirectorySector(ByteView sector, std::uint64_t lba)
{
    Put(Kind::DirectorySector, lba, sector.Span());
}

// A walk through a record may stray up to the block's end, and later ones see what earlier ones repaired: the whole block
// is kept, once.
void ScanJournal::AddRecord(std::size_t sectorIndex)
{
    if (!m_blockPut) {
        Put(Kind::Block, m_blockLba, m_blockBytes);
        m_blockPut = true;
    }
    Put(Kind::Record, sectorIndex, {});
}

void ScanJournal::AddWholeRecord(std::span<const std::uint8_t> record, std::uint64_t lba)
{
    Put(Kind::WholeRecord, lba, record);
}

void ScanJournal::AddTransportStream(std::uint64_t firstLba, std::uint64_t lastLba)
{
    std::vector<std::uint8_t> last;
    PutNumber(last, lastLba, sizeof lastLba);
    Put(Kind::TransportStream, firstLba, last);
}

void ScanJournal::EndBlock(bool keep)
{
    if (keep) {
        m_kept.insert(m_kept.end(), m_block.begin(), m_block.end());
    }
    m_block.clear();
    if (m_kept.size() >= WriteBytes &&
        m_file.WriteAt(m_written, m_kept.data(), m_kept.size()) == ResultSuccess) {
        m_written += m_kept.size();
        m_kept.clear();
    }
}

ResultCode ScanJournal::Write()
{
    if (const ResultCode result = m_file.WriteAt(m_written, m_kept.data(), m_kept.size())) {
        return result;
    }
    m_written += m_kept.size();
    m_kept.clear();
    return m_file.SyncData();
}

namespace {

// One entry at a time from a file of any content.
class JournalReader
{
public:
    JournalReader(const FileHandle& file, std::uint64_t end) : m_file(file), m_end(end) {}

    // False at the end, and at what is no entry.
    bool Next()
    {
        std::uint8_t head[HeadBytes] = {};
        if (!Read(head, HeadBytes)) {
            return false;
        }
        const ByteView view(head, HeadBytes);
        kind = view.U8(0);
        lba = view.U64(1);
        const std::size_t length = view.U32(9);
        bytes.resize(std::min(length, LargestEntry));
        return length <= LargestEntry && Read(bytes.data(), length);
    }

    std::uint8_t kind = 0;
    std::uint64_t lba = 0;
    std::vector<std::uint8_t> bytes;

private:
    bool Read(std::uint8_t* buffer, std::size_t count)
    {
        std::size_t got = 0;
        if (count > m_end - m_at || m_file.ReadAt(m_at, buffer, count, &got) != ResultSuccess ||
            got != count) {
            return false;
        }
        m_at += count;
        return true;
    }

    const FileHandle& m_file;
    std::uint64_t m_at = 0;
    std::uint64_t m_end;
};

void ShowRecord(const Analysers& analysers,
                std::span<std::uint8_t> block,
                std::uint64_t firstLba,
                std::uint64_t sectorIndex)
{
    const std::uint64_t offset = sectorIndex * static_cast<std::uint64_t>(analysers.sectorSize);
    if (sectorIndex < block.size() && offset < block.size()) {
        (void)analysers.ntfs.AddFileRecord(block.subspan(offset), firstLba + sectorIndex);
    }
}

}  // namespace

ResultCode ReplayJournal(const std::filesystem::path& logFolder,
                         std::uint64_t bytes,
                         const Analysers& analysers,
                         const WorkReport& report)
{
    using Kind = ScanJournal::Kind;
    FileHandle file;
    if (file.OpenForReading(logFolder / JournalName) != ResultSuccess || !file.IsRegularFile()) {
        return ResultSuccess;
    }
    JournalReader entry(file, bytes);
    std::vector<std::uint8_t> block;
    std::uint64_t blockLba = 0;
    while (entry.Next()) {
        if (const ResultCode answer = report()) {
            return answer;
        }
        const ByteView sector{std::span<const std::uint8_t>(entry.bytes)};
        switch (static_cast<Kind>(entry.kind)) {
        case Kind::DirectoryStart:
            analysers.fat.AddDirectoryStart(sector, entry.lba);
            break;
        case Kind::DirectorySector:
            analysers.fat.AddDirectorySector(sector, entry.lba);
            break;
        case Kind::Block:
            block = std::move(entry.bytes);
            blockLba = entry.lba;
            break;
        case Kind::Record:
            ShowRecord(analysers, block, blockLba, entry.lba);
            break;
        case Kind::WholeRecord:
            (void)analysers.ntfs.AddFileRecord(entry.bytes, entry.lba);
            break;
        case Kind::TransportStream:
            CarveContext::Instance().TsRangeList.Add(entry.lba, sector.U64(0));
            break;
        default:
            return ResultSuccess;
        }
    }
    return ResultSuccess;
}
