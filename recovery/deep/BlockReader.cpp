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

void BlockReader::RunAhead()
{
    std::unique_lock guard(lock);
    for (;;) {
        changed.wait(guard, [this] { return ordered || stopping; });
        if (stopping) {
            return;
        }
        guard.unlock();
        std::int32_t got = 0;
        ahead.bytes.resize(PieceBlocks * BlockBytes);
        ahead.whole =
            aheadSource.ReadSectors(ahead.bytes.data(), static_cast<std::int32_t>(ahead.sectors),
                                    ahead.lba, sectorSize, &got) == ResultSuccess;
        guard.lock();
        ordered = false;
        changed.notify_all();
    }
}

void BlockReader::WaitForAhead()
{
    std::unique_lock guard(lock);
    changed.wait(guard, [this] { return !ordered; });
}

// Whole blocks, inside the range and the source, at most a piece.
std::uint64_t BlockReader::PieceSectors(std::uint64_t lba, std::uint64_t rangeEnd) const
{
    const std::uint64_t end = std::min(rangeEnd, source.totalSectors);
    const std::uint64_t left = lba < end ? end - lba : 0;
    return std::min(left / blockSectors, std::uint64_t{PieceBlocks}) * blockSectors;
}

void BlockReader::OrderAhead(std::uint64_t lba, std::uint64_t rangeEnd)
{
    const std::uint64_t sectors = PieceSectors(lba, rangeEnd);
    if (sectors == 0) {
        ahead.whole = false;
        return;
    }
    {
        const std::lock_guard guard(lock);
        ahead.lba = lba;
        ahead.sectors = sectors;
        ahead.whole = false;
        ordered = true;
    }
    changed.notify_all();
}

// Makes current the piece that begins at lba, and has the one behind it read. False when it could not be read whole.
bool BlockReader::FetchPiece(std::uint64_t lba, std::uint64_t rangeEnd)
{
    WaitForAhead();
    if (!ahead.Holds(lba, blockSectors) || ahead.lba != lba) {
        OrderAhead(lba, rangeEnd);
        WaitForAhead();
    }
    if (!ahead.Holds(lba, blockSectors)) {
        badUntil = lba + std::max(PieceSectors(lba, rangeEnd), blockSectors);
        return false;
    }
    std::swap(current, ahead);
    OrderAhead(current.lba + current.sectors, rangeEnd);
    return true;
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
        WaitForAhead();
        ahead.whole = false;
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
