#include "recovery/deep/BlockReader.h"

#include <algorithm>
#include <utility>

BlockReader::BlockReader(SectorSource& passSource,
                         SectorSource& secondSource,
                         std::int32_t bytesPerSector)
    : source(passSource),
      aheadSource(secondSource),
      sectorSize(bytesPerSector),
      blockSectors(BlockBytes / static_cast<std::uint64_t>(bytesPerSector)),
      block(BlockBytes)
{
    if (aheadSource.IsOpen()) {
        thread = std::thread([this] { RunAhead(); });
    }
}

BlockReader::~BlockReader()
{
    if (thread.joinable()) {
        {
            const std::lock_guard guard(lock);
            stopping = true;
        }
        changed.notify_all();
        thread.join();
    }
}

bool BlockReader::CanReadAhead() const
{
    return streaming && !slots[fillSlot].full && PieceSectors(streamNext, streamEnd) != 0;
}

void BlockReader::RunAhead()
{
    std::unique_lock guard(lock);
    for (;;) {
        changed.wait(guard, [this] { return stopping || CanReadAhead(); });
        if (stopping) {
            return;
        }
        Slot& slot = slots[fillSlot];
        Piece& piece = slot.piece;
        piece.lba = streamNext;
        piece.sectors = PieceSectors(streamNext, streamEnd);
        busy = true;
        guard.unlock();
        std::int32_t got = 0;
        piece.bytes.resize(PieceBlocks * BlockBytes);
        piece.whole =
            aheadSource.ReadSectors(piece.bytes.data(), static_cast<std::int32_t>(piece.sectors),
                                    piece.lba, sectorSize, &got) == ResultSuccess;
        guard.lock();
        busy = false;
        slot.full = true;
        streamNext += piece.sectors;
        streaming = streaming && piece.whole;
        fillSlot ^= 1;
        changed.notify_all();
    }
}

// The thread stands still afterwards, and nothing that it read is left.
void BlockReader::StopStream(std::unique_lock<std::mutex>& guard)
{
    streaming = false;
    changed.wait(guard, [this] { return !busy; });
    slots[0].full = false;
    slots[1].full = false;
    fillSlot = 0;
    takeSlot = 0;
}

// Whole blocks, inside the range and the source, at most a piece.
std::uint64_t BlockReader::PieceSectors(std::uint64_t lba, std::uint64_t rangeEnd) const
{
    const std::uint64_t end = std::min(rangeEnd, source.totalSectors);
    const std::uint64_t left = lba < end ? end - lba : 0;
    return std::min(left / blockSectors, std::uint64_t{PieceBlocks}) * blockSectors;
}

// Makes current the piece that begins at lba. False when there is none, or it could not be read whole.
bool BlockReader::FetchPiece(std::uint64_t lba, std::uint64_t rangeEnd)
{
    const std::uint64_t sectors = PieceSectors(lba, rangeEnd);
    if (sectors == 0) {
        return false;
    }
    std::unique_lock guard(lock);
    const bool isOnTheWay =
        (streaming || slots[takeSlot].full) && takeNext == lba && streamEnd == rangeEnd;
    if (!isOnTheWay) {
        StopStream(guard);
        streamNext = lba;
        takeNext = lba;
        streamEnd = rangeEnd;
        streaming = true;
        changed.notify_all();
    }
    changed.wait(guard, [this] { return slots[takeSlot].full; });
    std::swap(current, slots[takeSlot].piece);
    slots[takeSlot].full = false;
    takeSlot ^= 1;
    takeNext = current.lba + current.sectors;
    changed.notify_all();
    if (!current.whole) {
        badUntil = lba + sectors;
    }
    return current.whole;
}

std::span<std::uint8_t>
BlockReader::ReadPlain(std::uint64_t lba, std::uint64_t sectorCount, std::int32_t* outGot)
{
    if (!lastServed.empty()) {
        std::copy(lastServed.begin(), lastServed.end(), block.begin());
        lastServed = {};
    }
    *outGot = 0;
    (void)source.ReadSectors(block.data(), static_cast<std::int32_t>(sectorCount), lba, sectorSize,
                             outGot);  // only what came counts
    return std::span(block).first(sectorCount * static_cast<std::size_t>(sectorSize));
}

std::span<std::uint8_t> BlockReader::Read(std::uint64_t lba,
                                          std::uint64_t sectorCount,
                                          std::uint64_t rangeEnd,
                                          std::int32_t* outGot)
{
    const bool isNeighbour = lba == nextLba;
    const bool isForward = lba >= nextLba;
    nextLba = lba + sectorCount;
    run = isNeighbour && sectorCount == blockSectors ? run + 1 : 0;
    if (!isForward) {
        current.whole = false;  // these bytes have been worked on: they are read anew
        std::unique_lock guard(lock);
        StopStream(guard);
    }
    const bool isWhole = sectorCount == blockSectors &&
                         blockSectors * static_cast<std::uint64_t>(sectorSize) == BlockBytes;
    if (!isWhole || !thread.joinable() || lba < badUntil) {
        return ReadPlain(lba, sectorCount, outGot);
    }
    if (!current.Holds(lba, sectorCount)) {
        const bool aheadHolds = run > 0 && current.whole && lba == current.lba + current.sectors;
        if ((run < RunBeforeAhead && !aheadHolds) || !FetchPiece(lba, rangeEnd)) {
            return ReadPlain(lba, sectorCount, outGot);
        }
    }
    const std::size_t offset = (lba - current.lba) * static_cast<std::size_t>(sectorSize);
    lastServed = std::span(current.bytes).subspan(offset, BlockBytes);
    *outGot = static_cast<std::int32_t>(sectorCount);
    return lastServed;
}
