#include "recovery/deep/BlockReader.h"

#include <algorithm>
#include <exception>
#include <utility>

namespace {

using Clock = std::chrono::steady_clock;

}  // namespace

void ReadPace::Add(std::chrono::nanoseconds time, std::uint64_t blocks)
{
    const auto block = std::min<std::chrono::nanoseconds>(time / blocks, LongestBlock);
    m_reads = std::min(m_reads + 1, ReadsSeen);
    m_average += (block - m_average) / m_reads;
}

BlockReader::BlockReader(SectorSource& passSource,
                         SectorSource& secondSource,
                         std::int32_t bytesPerSector,
                         ReadAhead readAhead)
    : m_source(passSource),
      m_aheadSource(secondSource),
      m_sectorSize(bytesPerSector),
      m_blockSectors(BlockBytes / static_cast<std::uint64_t>(bytesPerSector)),
      m_block(BlockBytes),
      m_readAhead(readAhead)
{
}

// Without memory or a thread for it the blocks are read one by one. What the thread needs is taken here: an exception
// there would end the process.
void BlockReader::StartThread()
{
    try {
        for (Slot& slot : m_slots) {
            slot.piece.bytes.resize(PieceBlocks * BlockBytes);
        }
        m_current.bytes.resize(PieceBlocks * BlockBytes);
        m_aheadPace.Clear();
        m_thread = std::thread([this] { RunAhead(); });
    } catch (const std::exception&) {
        m_pace.Clear();  // tried again when it has been slow for a while
    }
}

void BlockReader::StopThread()
{
    if (!m_thread.joinable()) {
        return;
    }
    {
        const std::lock_guard guard(m_lock);
        m_stopping = true;
    }
    m_changed.notify_all();
    m_thread.join();
    m_stopping = false;
    std::unique_lock guard(m_lock);
    StopStream(guard);
}

// Where reading is fast the thread is not worth what it costs.
void BlockReader::ChooseThread()
{
    if (!m_thread.joinable()) {
        if ((m_readAhead == ReadAhead::Always || m_pace.IsSlow()) && m_aheadSource.IsOpen()) {
            StartThread();
        }
        return;
    }
    std::unique_lock guard(m_lock);
    if (m_readAhead == ReadAhead::WhenSlow && m_aheadPace.IsFast()) {
        guard.unlock();
        StopThread();
        m_pace.Clear();
    }
}

void BlockReader::Hold(std::span<const std::uint8_t> bytes)
{
    std::copy_n(bytes.begin(), std::min(bytes.size(), m_block.size()), m_block.begin());
}

BlockReader::~BlockReader()
{
    StopThread();
}

bool BlockReader::CanReadAhead() const
{
    return m_streaming && !m_slots[m_fillSlot].full && PieceSectors(m_streamNext, m_streamEnd) != 0;
}

void BlockReader::RunAhead()
{
    std::unique_lock guard(m_lock);
    for (;;) {
        m_changed.wait(guard, [this] { return m_stopping || CanReadAhead(); });
        if (m_stopping) {
            return;
        }
        Slot& slot = m_slots[m_fillSlot];
        Piece& piece = slot.piece;
        piece.lba = m_streamNext;
        piece.sectors = PieceSectors(m_streamNext, m_streamEnd);
        m_busy = true;
        guard.unlock();
        std::int32_t got = 0;
        const Clock::time_point began = Clock::now();
        piece.whole =
            m_aheadSource.ReadSectors(piece.bytes.data(), static_cast<std::int32_t>(piece.sectors),
                                      piece.lba, m_sectorSize, &got) == ResultSuccess;
        const Clock::duration took = Clock::now() - began;
        guard.lock();
        m_aheadPace.Add(took, piece.sectors / m_blockSectors);
        m_busy = false;
        slot.full = true;
        m_streamNext += piece.sectors;
        m_streaming = m_streaming && piece.whole;
        m_fillSlot ^= 1;
        m_changed.notify_all();
    }
}

// The thread stands still afterwards, and nothing that it read is left.
void BlockReader::StopStream(std::unique_lock<std::mutex>& guard)
{
    m_streaming = false;
    m_changed.wait(guard, [this] { return !m_busy; });
    m_slots[0].full = false;
    m_slots[1].full = false;
    m_fillSlot = 0;
    m_takeSlot = 0;
}

// Whole blocks, inside the range and the source, at most a piece.
std::uint64_t BlockReader::PieceSectors(std::uint64_t lba, std::uint64_t rangeEnd) const
{
    const std::uint64_t end = std::min(rangeEnd, m_source.totalSectors);
    const std::uint64_t left = lba < end ? end - lba : 0;
    return std::min(left / m_blockSectors, std::uint64_t{PieceBlocks}) * m_blockSectors;
}

// Makes current the piece that begins at lba. False when there is none, or it could not be read whole.
bool BlockReader::FetchPiece(std::uint64_t lba, std::uint64_t rangeEnd)
{
    const std::uint64_t sectors = PieceSectors(lba, rangeEnd);
    if (sectors == 0) {
        return false;
    }
    std::unique_lock guard(m_lock);
    const bool isOnTheWay =
        (m_streaming || m_slots[m_takeSlot].full) && m_takeNext == lba && m_streamEnd == rangeEnd;
    if (!isOnTheWay) {
        StopStream(guard);
        m_streamNext = lba;
        m_takeNext = lba;
        m_streamEnd = rangeEnd;
        m_streaming = true;
        m_changed.notify_all();
    }
    m_changed.wait(guard, [this] { return m_slots[m_takeSlot].full; });
    std::swap(m_current, m_slots[m_takeSlot].piece);
    m_slots[m_takeSlot].full = false;
    m_takeSlot ^= 1;
    m_takeNext = m_current.lba + m_current.sectors;
    m_changed.notify_all();
    if (!m_current.whole) {
        m_badUntil = lba + sectors;
    }
    return m_current.whole;
}

// Only what comes counts.
void BlockReader::ReadIntoBlock(std::uint64_t lba, std::uint64_t sectorCount, std::int32_t* outGot)
{
    const auto sectors = static_cast<std::int32_t>(sectorCount);
    if (m_source.Misses(lba, sectorCount)) {
        (void)m_source.ReadAroundMissing(m_block.data(), sectors, lba, m_sectorSize, outGot);
    } else {
        (void)m_source.ReadSectors(m_block.data(), sectors, lba, m_sectorSize, outGot);
    }
}

std::span<std::uint8_t>
BlockReader::ReadPlain(std::uint64_t lba, std::uint64_t sectorCount, std::int32_t* outGot)
{
    if (!m_lastServed.empty()) {
        std::copy(m_lastServed.begin(), m_lastServed.end(), m_block.begin());
        m_lastServed = {};
    }
    *outGot = 0;
    const Clock::time_point began = Clock::now();
    ReadIntoBlock(lba, sectorCount, outGot);
    if (m_leftOut && *outGot < static_cast<std::int32_t>(m_blockSectors)) {
        CatchUp();
        ReadIntoBlock(lba, sectorCount, outGot);
    }
    m_pace.Add(Clock::now() - began, 1);
    m_leftOut.reset();
    return std::span(m_block).first(sectorCount * static_cast<std::size_t>(m_sectorSize));
}

bool BlockReader::LeaveOut(std::uint64_t lba, std::uint64_t sectorCount)
{
    if (!IsWholeBlock(sectorCount)) {
        return false;
    }
    m_leftOut = lba;
    m_nextLba = lba + sectorCount;
    m_run = 0;
    return true;
}

// Brings the block that was left out into the buffer.
void BlockReader::CatchUp()
{
    if (m_leftOut) {
        std::int32_t ignored = 0;
        m_lastServed = {};
        (void)m_source.ReadSectors(m_block.data(), static_cast<std::int32_t>(m_blockSectors),
                                   *m_leftOut, m_sectorSize,
                                   &ignored);  // it could be read before
        m_leftOut.reset();
    }
}

std::span<const std::uint8_t> BlockReader::Held()
{
    CatchUp();
    return m_lastServed.empty() ? std::span<const std::uint8_t>(m_block) : m_lastServed;
}

std::span<std::uint8_t> BlockReader::Read(std::uint64_t lba,
                                          std::uint64_t sectorCount,
                                          std::uint64_t rangeEnd,
                                          std::int32_t* outGot)
{
    const bool isNeighbour = lba == m_nextLba;
    const bool isForward = lba >= m_nextLba;
    m_nextLba = lba + sectorCount;
    m_run = isNeighbour && sectorCount == m_blockSectors ? m_run + 1 : 0;
    if (!isForward) {
        m_current.whole = false;  // these bytes have been worked on: they are read anew
        std::unique_lock guard(m_lock);
        StopStream(guard);
    }
    ChooseThread();
    if (!IsWholeBlock(sectorCount) || !m_thread.joinable() || lba < m_badUntil) {
        return ReadPlain(lba, sectorCount, outGot);
    }
    if (!m_current.Holds(lba, sectorCount)) {
        const bool aheadHolds =
            m_run > 0 && m_current.whole && lba == m_current.lba + m_current.sectors;
        if ((m_run < RunBeforeAhead && !aheadHolds) || !FetchPiece(lba, rangeEnd)) {
            return ReadPlain(lba, sectorCount, outGot);
        }
    }
    const std::size_t offset = (lba - m_current.lba) * static_cast<std::size_t>(m_sectorSize);
    m_lastServed = std::span(m_current.bytes).subspan(offset, BlockBytes);
    m_leftOut.reset();
    *outGot = static_cast<std::int32_t>(sectorCount);
    return m_lastServed;
}
