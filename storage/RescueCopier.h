// Copies what can be read of a failing source into an image: good areas first, then inwards from their edges, then sector by
// sector. What it knows stands in a map, and in the map's file, all the time.
#pragma once

#include "storage/ByteReader.h"
#include "storage/RescueMap.h"
#include "storage/WaitingReader.h"

#include <cstdint>
#include <filesystem>
#include <functional>

struct RescueState
{
    const RescueMap& map;
    std::uint64_t bytesPerSecond = 0;    // read well, of late
    std::uint64_t secondsSinceGood = 0;  // since a read came back with anything
    std::uint64_t readSeconds = 0;  // that the running read has taken so far; 0 when none hangs
};

struct RescueSource
{
    IByteReader* reader = nullptr;
    std::uint64_t startByte = 0;  // of the range
    std::uint32_t sectorSize = 512;
    // The device is there, asked after a read that failed: one that was pulled out has no bad sectors.
    std::function<bool()> isThere;
};

// One use is one run, on one thread.
class RescueCopier
{
public:
    // Called after each read, and while one hangs. 0 goes on; anything else ends the run with it when that read has come back.
    using Report = std::function<ResultCode(const RescueState&)>;

    // The target is open and locked; the map fits the source and stands on whole sectors.
    RescueCopier(RescueSource source,
                 FileHandle& target,
                 RescueMap& map,
                 std::filesystem::path mapFile);

    // Until all is read or known to be bad, and each bad sector was tried so many times more. 0, what the report gave,
    // ResultNotConnected when the source went away, or what a write failed with. The map is saved at every end.
    [[nodiscard]] ResultCode Run(std::uint32_t retries, const Report& report);

private:
    struct Piece
    {
        std::uint64_t begin = 0;
        std::uint64_t end = 0;
        std::uint64_t good = 0;  // what came, up to here
        bool Failed() const { return good < end; }
    };

    [[nodiscard]] ResultCode RunPhases(std::uint32_t retries);
    [[nodiscard]] ResultCode CopyForward(std::uint64_t from, bool jumps);
    [[nodiscard]] ResultCode CopyBackward();
    [[nodiscard]] ResultCode Trim();
    [[nodiscard]] ResultCode TrimEdge(const RescueBlock& block, bool atEnd, bool* outFailed);
    // Sector by sector over all of that status.
    [[nodiscard]] ResultCode ReadSectors(RescueStatus status);
    // Reads, writes what came and marks it as finished. The rest keeps its status.
    [[nodiscard]] ResultCode ReadPiece(std::uint64_t begin, std::uint64_t end, Piece& outPiece);
    [[nodiscard]] ResultCode Enter(RescuePhase phase, std::uint32_t pass);
    [[nodiscard]] ResultCode Tell(std::uint64_t readMilliseconds);
    [[nodiscard]] ResultCode Save();
    void CountGood(std::uint64_t bytes);
    std::uint64_t NextJump(std::uint64_t jump) const;

    RescueSource m_source;
    FileHandle& m_target;
    RescueMap& m_map;
    std::filesystem::path m_mapFile;
    WaitingReader m_reader;
    Report m_report;
    bool m_failedOnce = false;  // in this run
    ResultCode m_answer = ResultSuccess;
    std::uint64_t m_lastSave = 0;  // milliseconds, as the others
    std::uint64_t m_lastGood = 0;
    std::uint64_t m_rateStart = 0;
    std::uint64_t m_rateBytes = 0;
    std::uint64_t m_rate = 0;
};
