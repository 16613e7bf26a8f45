// What the pass has shown to the two analysers, with its bytes, in the order of showing: shown again, they stand where they
// stood, and nothing of it is read from the source a second time.
#pragma once

#include "platform/FileHandle.h"
#include "recovery/WorkReport.h"
#include "recovery/deep/SectorClassifier.h"

#include <cstdint>
#include <filesystem>
#include <span>
#include <vector>

// Written by the pass's thread. What a block brings counts when the block does.
class ScanJournal
{
public:
    // Goes on after so many bytes of the file in a log folder; what follows them is cut off.
    [[nodiscard]] ResultCode Open(const std::filesystem::path& logFolder, std::uint64_t keepBytes);

    void BeginBlock(std::span<const std::uint8_t> block, std::uint64_t firstLba);
    void AddDirectoryStart(ByteView sector, std::uint64_t lba);
    void AddDirectorySector(ByteView sector, std::uint64_t lba);
    // The record that begins in that sector of the block; before it is shown, since an analyser repairs it in place.
    void AddRecord(std::size_t sectorIndex);
    // A record that was read again, over the block's end.
    void AddWholeRecord(std::span<const std::uint8_t> record, std::uint64_t lba);
    void AddTransportStream(std::uint64_t firstLba, std::uint64_t lastLba);
    // Keeps what the block brought, or drops it.
    void EndBlock(bool keep);

    // All that counts, written or not.
    std::uint64_t Bytes() const { return m_written + m_kept.size(); }
    // Brings it to the disk.
    [[nodiscard]] ResultCode Write();

private:
    enum class Kind : std::uint8_t;
    void Put(Kind kind, std::uint64_t lba, std::span<const std::uint8_t> bytes);

    FileHandle m_file;
    std::uint64_t m_written = 0;        // bytes of the file that count
    std::vector<std::uint8_t> m_kept;   // after them
    std::vector<std::uint8_t> m_block;  // of the block that is being classed
    std::span<const std::uint8_t> m_blockBytes;
    std::uint64_t m_blockLba = 0;
    bool m_blockPut = false;

    friend ResultCode ReplayJournal(const std::filesystem::path& logFolder,
                                    std::uint64_t bytes,
                                    const Analysers& analysers,
                                    const WorkReport& report);
};

// Shows the first bytes of a log folder's journal to the analysers. What is no entry ends it: the analysers have seen what
// was there. Otherwise what report answered.
[[nodiscard]] ResultCode ReplayJournal(const std::filesystem::path& logFolder,
                                       std::uint64_t bytes,
                                       const Analysers& analysers,
                                       const WorkReport& report);
