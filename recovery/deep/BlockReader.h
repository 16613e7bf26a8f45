// Brings the deep pass its blocks of 64 KiB. Where a source makes it wait, a thread reads ahead in larger pieces after a long
// run of neighbouring blocks; what arrives, and what fails, is the same as with one read a block.
#pragma once

#include "storage/SectorSource.h"

#include <array>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <optional>
#include <span>
#include <thread>
#include <vector>

// Whether a source is slow, by the last reads. One that stands still now and then is not.
class ReadPace
{
public:
    void Add(std::chrono::nanoseconds time, std::uint64_t blocks);
    // Enough reads have been seen, and a block took that long, or less, on average.
    bool IsSlow() const { return m_reads >= ReadsSeen && m_average > SlowBlock; }
    bool IsFast() const { return m_reads >= ReadsSeen && m_average < FastBlock; }
    void Clear() { *this = {}; }

private:
    static constexpr std::uint32_t ReadsSeen = 32;
    // A thread beside the pass costs as much as it brings where a block takes less than a few of these.
    static constexpr std::chrono::nanoseconds FastBlock{25'000};
    static constexpr std::chrono::nanoseconds SlowBlock{60'000};
    static constexpr std::chrono::nanoseconds LongestBlock{1'000'000};

    std::uint32_t m_reads = 0;
    std::chrono::nanoseconds m_average{0};
};

enum class ReadAhead
{
    WhenSlow,
    Always
};

// One for a pass. Read is called by the pass's thread alone; the thread inside touches nothing but its own source and
// its piece.
class BlockReader
{
public:
    static constexpr std::size_t BlockBytes = 65536;

    // aheadSource is a second opening of the same target; unused when it is not open. Both outlive this.
    BlockReader(SectorSource& source,
                SectorSource& aheadSource,
                std::int32_t sectorSize,
                ReadAhead readAhead = ReadAhead::WhenSlow);
    BlockReader(const BlockReader&) = delete;
    BlockReader& operator=(const BlockReader&) = delete;
    ~BlockReader();

    // The sectors asked for, whole also when fewer came: what could not be read is what the block before had in its
    // place. *outGot is how many came. rangeEnd is where the pass's range ends, so how far it makes sense to read
    // ahead. The bytes may be changed; valid until the next call.
    std::span<std::uint8_t> Read(std::uint64_t lba,
                                 std::uint64_t sectorCount,
                                 std::uint64_t rangeEnd,
                                 std::int32_t* outGot);

    // The same to what comes later as reading it, but nothing is read: its bytes are known to mean nothing. False, and it
    // has to be read, for what is no whole block.
    bool LeaveOut(std::uint64_t lba, std::uint64_t sectorCount);

    // What the buffer holds: a block that can only be read in part keeps the rest of it.
    std::span<const std::uint8_t> Held();
    void Hold(std::span<const std::uint8_t> bytes);

private:
    void StartThread();
    void StopThread();
    void ChooseThread();

    static constexpr std::size_t PieceBlocks = 16;
    static constexpr std::uint32_t RunBeforeAhead =
        4;  // neighbouring blocks before reading ahead pays

    // Several blocks read at once.
    struct Piece
    {
        std::uint64_t lba = 0;
        std::uint64_t sectors = 0;
        std::vector<std::uint8_t> bytes;
        bool whole = false;  // all of it arrived
        bool Holds(std::uint64_t first, std::uint64_t count) const
        {
            return whole && first >= lba && first + count <= lba + sectors;
        }
    };

    // A piece that the thread reads, or has read.
    struct Slot
    {
        Piece piece;
        bool full = false;
    };

    void CatchUp();
    void ReadIntoBlock(std::uint64_t lba, std::uint64_t sectorCount, std::int32_t* outGot);
    bool IsWholeBlock(std::uint64_t sectorCount) const
    {
        return sectorCount == m_blockSectors &&
               m_blockSectors * static_cast<std::uint64_t>(m_sectorSize) == BlockBytes;
    }
    std::span<std::uint8_t>
    ReadPlain(std::uint64_t lba, std::uint64_t sectorCount, std::int32_t* outGot);
    bool FetchPiece(std::uint64_t lba, std::uint64_t rangeEnd);
    std::uint64_t PieceSectors(std::uint64_t lba, std::uint64_t rangeEnd) const;
    void StopStream(std::unique_lock<std::mutex>& guard);
    bool CanReadAhead() const;
    void RunAhead();

    SectorSource& m_source;
    SectorSource& m_aheadSource;
    std::int32_t m_sectorSize;
    std::uint64_t m_blockSectors;
    std::vector<std::uint8_t>
        m_block;  // what a plain read goes into; keeps what it does not replace
    std::span<std::uint8_t> m_lastServed;    // of a piece, when that is newer than block
    std::optional<std::uint64_t> m_leftOut;  // the block in front was, and is not in the buffer
    std::uint64_t m_nextLba = 0;             // after the block served last
    std::uint32_t m_run = 0;                 // neighbouring whole blocks so far
    std::uint64_t m_badUntil = 0;  // a piece before this one failed: block by block up to here
    Piece m_current;

    // The stream: pieces from streamNext on go into the slots by turns, one after the other, until it is stopped, its
    // range ends or a piece cannot be read whole. So the thread need not wait for the pass to take one.
    ReadAhead m_readAhead;
    ReadPace m_pace;       // of the reads without the thread
    ReadPace m_aheadPace;  // of the thread's
    std::thread m_thread;
    std::mutex m_lock;
    std::condition_variable m_changed;
    std::array<Slot, 2> m_slots;
    std::size_t m_fillSlot = 0;
    std::size_t m_takeSlot = 0;
    std::uint64_t m_streamNext = 0;  // LBA of the next piece to be read
    std::uint64_t m_takeNext = 0;    // and of the next one to be taken
    std::uint64_t m_streamEnd = 0;
    bool m_streaming = false;
    bool m_busy = false;  // the thread is reading
    bool m_stopping = false;
};
