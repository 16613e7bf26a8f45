#include "storage/SectorSource.h"

#include <algorithm>
#include <atomic>
#include <utility>
#include <vector>

namespace {

// A failing disk returns control at a known point.
constexpr std::size_t LargestPiece = 65536;

std::uint64_t NextOpenNumber()
{
    static std::atomic<std::uint64_t> last = 0;
    return ++last;
}

}  // namespace

void SectorSource::Open(std::shared_ptr<ScanSource> source)
{
    m_source = std::move(source);
    totalSectors = m_source->TotalSectors();
    totalBytes = m_source->SizeBytes();
    m_openNumber = NextOpenNumber();
}

ResultCode SectorSource::OpenDrive(std::uint32_t diskNumber)
{
    std::shared_ptr<ScanSource> source;
    const ResultCode result = ScanSource::OpenDriveRange(diskNumber, 0, 0, &source);
    if (result == ResultSuccess) {
        Open(std::move(source));
    }
    return result;
}

ResultCode SectorSource::OpenImage(const std::filesystem::path& filePath)
{
    std::shared_ptr<ScanSource> source;
    const ResultCode result = ScanSource::OpenImage(filePath, &source);
    if (result == ResultSuccess) {
        Open(std::move(source));
    }
    return result;
}

ResultCode SectorSource::ReadSectors(std::uint8_t* buffer,
                                     std::int32_t sectorCount,
                                     std::uint64_t lba,
                                     std::int32_t sectorSize,
                                     std::int32_t* outSectorsRead)
{
    if (sectorCount < 0 || sectorSize <= 0 || m_source == nullptr) {
        return ResultInvalidParameter;
    }
    // Sector 2^64 - 1 wraps to an end of 0: a detector asks for it before sector 0.
    const std::uint64_t end = lba + static_cast<std::uint64_t>(sectorCount);
    if (end > totalSectors || end < lba) {
        return ResultInvalidParameter;
    }
    const std::uint64_t unit = static_cast<std::uint64_t>(sectorSize);
    const std::size_t wanted = static_cast<std::size_t>(sectorCount) * unit;
    std::size_t done = 0;
    ResultCode result = ResultSuccess;
    while (done < wanted && result == ResultSuccess) {
        const std::size_t piece = std::min(LargestPiece, wanted - done);
        std::size_t got = 0;
        result = m_source->Reader().ReadAt(lba * unit + done, buffer + done, piece, &got);
        done += got;
        if (result != ResultSuccess || got == 0) {
            m_source->NoteUnread(lba * unit + done, piece - got, result);
            NoteWhatElseFails(lba * unit + done + piece - got, wanted - done - (piece - got));
            result = ResultReadFault;
        }
    }
    m_source->Marks()->NoteRead(lba * unit, done);
    *outSectorsRead = static_cast<std::int32_t>(done / unit);
    return result;
}

// A long read ends at the first fault, and its caller gets nothing of the rest; what of that cannot be read is told exactly all
// the same. Of a disk that fails all over, the rest counts without being tried.
void SectorSource::NoteWhatElseFails(std::uint64_t position, std::uint64_t count)
{
    constexpr int MostFaults = 8;
    std::vector<std::uint8_t> piece(std::min<std::uint64_t>(LargestPiece, count));
    int faults = 0;
    while (count > 0 && faults < MostFaults && !m_source->IsGone()) {
        const std::size_t wanted = std::min<std::uint64_t>(piece.size(), count);
        std::size_t got = 0;
        const ResultCode result = m_source->Reader().ReadAt(position, piece.data(), wanted, &got);
        std::size_t passed = got;
        if (result != ResultSuccess || got == 0) {
            m_source->NoteUnread(position + got, wanted - got, result);
            ++faults;
            passed = wanted;
        }
        position += passed;
        count -= passed;
    }
    if (count > 0) {
        m_source->NoteUnread(position, count, ResultReadFault);
    }
}

bool SectorSource::Misses(std::uint64_t lba, std::uint64_t sectorCount) const
{
    const SectorRanges* const missing = m_source != nullptr ? m_source->Missing() : nullptr;
    const auto hole = missing != nullptr ? missing->NextFrom(lba) : std::nullopt;
    return hole && hole->first < lba + sectorCount;
}

ResultCode SectorSource::ReadAroundMissing(std::uint8_t* buffer,
                                           std::int32_t sectorCount,
                                           std::uint64_t lba,
                                           std::int32_t sectorSize,
                                           std::int32_t* outSectorsRead)
{
    const auto unit = static_cast<std::size_t>(sectorSize);
    *outSectorsRead = 0;
    bool cameAny = false;
    for (std::int32_t done = 0; done < sectorCount;) {
        // Piece by piece: from one border of what is missing to the next.
        const std::uint64_t at = lba + static_cast<std::uint64_t>(done);
        const auto left = static_cast<std::uint64_t>(sectorCount - done);
        const auto hole = m_source->Missing()->NextFrom(at);
        const bool inHole = hole && hole->first <= at;
        const std::uint64_t border = !hole ? UINT64_MAX : inHole ? hole->second : hole->first;
        const auto piece = static_cast<std::int32_t>(std::min(left, border - at));
        std::uint8_t* const place = buffer + static_cast<std::size_t>(done) * unit;
        std::int32_t got = 0;
        // A read of what is missing fails, and is noted as one.
        const ResultCode result = ReadSectors(place, piece, at, sectorSize, &got);
        if (result != ResultSuccess && !(inHole && result == ResultReadFault)) {
            return result;
        }
        cameAny = cameAny || !inHole;
        if (inHole) {
            std::fill_n(place, static_cast<std::size_t>(piece) * unit, std::uint8_t{0});
        }
        done += piece;
    }
    *outSectorsRead = cameAny ? sectorCount : 0;
    return cameAny ? ResultSuccess : ResultReadFault;
}
