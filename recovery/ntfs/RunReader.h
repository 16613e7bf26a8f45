// Reads a file's data out of an NTFS volume. Trusts the record as it stands: whether the clusters have since been given
// away, or hold compressed or encrypted data, is not asked.
#pragma once

#include "recovery/RecordCopy.h"
#include "recovery/metadata/NtfsRecordCodec.h"
#include "storage/SectorSource.h"

#include <cstdint>
#include <functional>
#include <span>

// Data inside the record is one whole piece of 64 KiB, with zeros after it. Runs that end before FileSize end the file
// early, with success; those past it are read to their end.
class RunReader : public IRecordReader
{
public:
    // How an engine reaches the record's data.
    struct Data
    {
        // Data inside the record, into a zeroed buffer; ResultDataNotResident when it lies in runs.
        std::function<ResultCode(std::span<std::uint8_t> buffer)> readResident;
        std::function<ResultCode(RunList& outRuns)> readRuns;
        bool clearsPreviewPath = false;
    };

    // The source outlives it.
    RunReader(SectorSource& source,
              std::uint32_t bytesPerSector,
              const FileRecord& record,
              Data data);

    CopyManners Manners() const override;
    ResultCode Begin(std::uint64_t wanted, std::size_t* outBufferBytes) override;
    ResultCode
    Next(std::span<std::uint8_t> buffer, std::size_t* outBytes, bool* outIsWhole) override;
    bool FindPlaces(std::uint64_t wanted, BytePlaces& outPlaces) override;

private:
    void BeginRun();

    SectorSource& m_source;
    std::uint32_t m_bytesPerSector;
    std::uint32_t m_clusterBytes;
    std::uint64_t m_partitionStart;
    Data m_data;
    std::vector<std::uint8_t> m_resident;  // empty when the data lies in runs
    RunList m_runs;
    std::size_t m_nextRun = 0;
    std::uint64_t m_lcn = 0;       // where the current run begins
    std::uint64_t m_sector = 0;    // to be read next
    std::uint64_t m_runBytes = 0;  // left of the current run
};
