#include "recovery/ntfs/RunReader.h"

#include "recovery/CopyScope.h"
#include "recovery/metadata/NtfsVolume.h"

#include <algorithm>
#include <utility>

namespace {

constexpr std::size_t CopyBufferBytes = 65536;

}  // namespace

RunReader::RunReader(SectorSource& source,
                     std::uint32_t bytesPerSector,
                     const FileRecord& record,
                     Data data)
    : m_source(source),
      m_bytesPerSector(bytesPerSector),
      m_clusterBytes(record.ClusterBytes),
      m_partitionStart(record.PartitionStart),
      m_data(std::move(data))
{
}

CopyManners RunReader::Manners() const
{
    CopyManners manners;
    manners.tellsOpenFailure = true;
    manners.readsToItsEnd = true;
    manners.clearsPreviewPath = m_data.clearsPreviewPath;
    return manners;
}

ResultCode RunReader::Begin(std::uint64_t wanted, std::size_t* outBufferBytes)
{
    *outBufferBytes = CopyBufferBytes;
    m_resident.resize(CopyBufferBytes);
    const ResultCode result = m_data.readResident(m_resident);
    if (result != ResultDataNotResident) {
        return result;
    }
    m_resident.clear();
    if (const ResultCode read = m_data.readRuns(m_runs)) {
        return read;
    }
    if (wanted == 0) {
        m_runs.clear();  // of an empty file nothing is read
    }
    return ResultSuccess;
}

// A sparse run has the offset 0: what lies where the run before began is copied again.
void RunReader::BeginRun()
{
    const NtfsRun& run = m_runs[m_nextRun++];
    m_runBytes = run.Length * m_clusterBytes;
    m_lcn += static_cast<std::uint64_t>(run.Offset);
    m_sector = SectorOfCluster(m_lcn, m_clusterBytes, m_bytesPerSector) + m_partitionStart;
}

ResultCode RunReader::Next(std::span<std::uint8_t> buffer, std::size_t* outBytes, bool* outIsWhole)
{
    if (!m_resident.empty()) {
        std::copy(m_resident.begin(), m_resident.end(), buffer.begin());
        *outBytes = m_resident.size();
        *outIsWhole = true;
        return ResultSuccess;
    }
    while (m_runBytes == 0 && m_nextRun < m_runs.size()) {
        BeginRun();
    }
    if (m_runBytes == 0) {
        return ResultSuccess;
    }
    const std::uint64_t chunk = std::min<std::uint64_t>(m_runBytes, buffer.size());
    std::int32_t sectorsRead = 0;
    const ResultCode result =
        ReadForCopy(m_source, buffer.data(), static_cast<std::int32_t>(chunk / m_bytesPerSector),
                    m_sector, static_cast<std::int32_t>(m_bytesPerSector), &sectorsRead);
    if (sectorsRead == 0 || result != ResultSuccess) {
        return sectorsRead == 0 ? ResultReadFault : result;
    }
    const auto sectors = static_cast<std::uint64_t>(sectorsRead);
    m_runBytes -= sectors * m_bytesPerSector;
    m_sector += sectors;
    *outBytes = static_cast<std::size_t>(sectors * m_bytesPerSector);
    return ResultSuccess;
}

bool RunReader::FindPlaces(std::uint64_t wanted, BytePlaces& outPlaces)
{
    std::size_t bufferBytes = 0;
    if (Begin(wanted, &bufferBytes) != ResultSuccess || !m_resident.empty()) {
        return false;
    }
    std::uint64_t found = 0;
    while (found < wanted && m_nextRun < m_runs.size()) {
        BeginRun();
        if (m_runBytes % m_bytesPerSector != 0 ||
            !AddPlace(outPlaces, m_sector, m_runBytes / m_bytesPerSector, m_bytesPerSector)) {
            return false;
        }
        found += m_runBytes;
    }
    return found >= wanted;
}
