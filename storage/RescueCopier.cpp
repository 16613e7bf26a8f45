#include "storage/RescueCopier.h"

#include "platform/FileTime.h"
#include "platform/Folders.h"

#include <algorithm>
#include <utility>

namespace {

constexpr std::uint64_t PieceBytes = 262144;
// After an error, doubled as long as errors follow one another.
constexpr std::uint64_t FirstJump = 65536;
constexpr std::uint64_t LargestJump = std::uint64_t{1} << 30;
constexpr std::uint64_t SaveMilliseconds = 10000;
constexpr std::uint64_t RateMilliseconds = 2000;
constexpr std::uint32_t Passes = 3;  // forwards, backwards, and forwards without a jump

}  // namespace

RescueCopier::RescueCopier(RescueSource source,
                           FileHandle& target,
                           RescueMap& map,
                           std::filesystem::path mapFile)
    : m_source(std::move(source)),
      m_target(target),
      m_map(map),
      m_mapFile(std::move(mapFile)),
      m_reader(*m_source.reader)
{
}

ResultCode RescueCopier::Run(std::uint32_t retries, const Report& report)
{
    m_report = report;
    m_lastSave = m_lastGood = m_rateStart = TickMilliseconds();
    const ResultCode result = RunPhases(retries);
    const ResultCode saved = Save();
    return result != ResultSuccess ? result : saved;
}

ResultCode RescueCopier::RunPhases(std::uint32_t retries)
{
    // Where an earlier run was in the middle of a pass, it goes on there; what it had skipped is for the next one.
    const bool goesOn = m_map.phase == RescuePhase::Copying && m_map.pass == 1;
    const std::uint64_t from = goesOn ? m_map.position : 0;
    ResultCode result = ResultSuccess;
    for (std::uint32_t pass = goesOn ? 1 : 2; result == ResultSuccess && pass <= Passes; ++pass) {
        if (!m_map.FindForward(RescueStatus::NonTried, 0)) {
            break;
        }
        result = Enter(RescuePhase::Copying, pass);
        if (result == ResultSuccess) {
            result = pass == 2 ? CopyBackward() : CopyForward(pass == 1 ? from : 0, pass == 1);
        }
    }
    if (result == ResultSuccess) {
        result = Enter(RescuePhase::Trimming, 1);
    }
    if (result == ResultSuccess) {
        result = Trim();
    }
    if (result == ResultSuccess) {
        result = Enter(RescuePhase::Scraping, 1);
    }
    if (result == ResultSuccess) {
        result = ReadSectors(RescueStatus::NonScraped);
    }
    for (std::uint32_t retry = 1; result == ResultSuccess && retry <= retries; ++retry) {
        result = Enter(RescuePhase::Retrying, retry);
        if (result == ResultSuccess) {
            result = ReadSectors(RescueStatus::Bad);
        }
    }
    return result == ResultSuccess ? Enter(RescuePhase::Finished, 1) : result;
}

ResultCode RescueCopier::Enter(RescuePhase phase, std::uint32_t pass)
{
    m_map.phase = phase;
    m_map.pass = pass;
    return Save();
}

std::uint64_t RescueCopier::NextJump(std::uint64_t jump) const
{
    // On a small medium a jump of the usual size would leave nothing before the end.
    const std::uint64_t most = std::clamp(m_map.TotalBytes() / 100, FirstJump, LargestJump);
    const std::uint64_t next = std::min(jump == 0 ? FirstJump : jump * 2, most);
    return next / m_source.sectorSize * m_source.sectorSize;
}

ResultCode RescueCopier::CopyForward(std::uint64_t from, bool jumps)
{
    std::uint64_t jump = 0;
    while (const auto block = m_map.FindForward(RescueStatus::NonTried, from)) {
        Piece piece;
        const std::uint64_t end = std::min(block->end, block->begin + PieceBytes);
        if (const ResultCode result = ReadPiece(block->begin, end, piece)) {
            return result;
        }
        from = end;
        if (piece.Failed()) {
            m_map.Set(piece.good, end, RescueStatus::NonTrimmed);
            jump = jumps ? NextJump(jump) : 0;
            from += jump;
        } else {
            jump = 0;
        }
        m_map.position = from;
        if (const ResultCode result = Tell(0)) {
            return result;
        }
    }
    return ResultSuccess;
}

ResultCode RescueCopier::CopyBackward()
{
    std::uint64_t jump = 0;
    std::uint64_t until = m_map.TotalBytes();
    while (const auto block = m_map.FindBackward(RescueStatus::NonTried, until)) {
        Piece piece;
        const std::uint64_t begin = block->end - std::min(block->Size(), PieceBytes);
        if (const ResultCode result = ReadPiece(begin, block->end, piece)) {
            return result;
        }
        until = begin;
        if (piece.Failed()) {
            m_map.Set(piece.good, block->end, RescueStatus::NonTrimmed);
            jump = NextJump(jump);
            until -= std::min(until, jump);
        } else {
            jump = 0;
        }
        m_map.position = until;
        if (const ResultCode result = Tell(0)) {
            return result;
        }
    }
    return ResultSuccess;
}

ResultCode RescueCopier::Trim()
{
    while (const auto block = m_map.FindForward(RescueStatus::NonTrimmed, 0)) {
        bool failed = false;
        if (const ResultCode result = TrimEdge(*block, false, &failed)) {
            return result;
        }
        const auto rest = m_map.FindForward(RescueStatus::NonTrimmed, block->begin);
        if (!failed || !rest || rest->begin >= block->end) {
            continue;
        }
        if (const ResultCode result = TrimEdge(*rest, true, &failed)) {
            return result;
        }
        const auto middle = m_map.FindForward(RescueStatus::NonTrimmed, rest->begin);
        if (middle && middle->begin < rest->end) {
            m_map.Set(middle->begin, middle->end, RescueStatus::NonScraped);
        }
    }
    return ResultSuccess;
}

// From one end to the first bad sector.
ResultCode RescueCopier::TrimEdge(const RescueBlock& block, bool atEnd, bool* outFailed)
{
    *outFailed = false;
    for (std::uint64_t done = 0; done < block.Size() && !*outFailed; done += m_source.sectorSize) {
        const std::uint64_t begin =
            atEnd ? block.end - done - m_source.sectorSize : block.begin + done;
        Piece piece;
        if (const ResultCode result = ReadPiece(begin, begin + m_source.sectorSize, piece)) {
            return result;
        }
        if (piece.Failed()) {
            m_map.Set(begin, piece.end, RescueStatus::Bad);
            *outFailed = true;
        }
        m_map.position = begin;
        if (const ResultCode result = Tell(0)) {
            return result;
        }
    }
    return ResultSuccess;
}

ResultCode RescueCopier::ReadSectors(RescueStatus status)
{
    std::uint64_t from = 0;
    while (const auto block = m_map.FindForward(status, from)) {
        Piece piece;
        from = block->begin + m_source.sectorSize;
        if (const ResultCode result = ReadPiece(block->begin, from, piece)) {
            return result;
        }
        if (piece.Failed()) {
            m_map.Set(block->begin, from, RescueStatus::Bad);
        }
        m_map.position = from;
        if (const ResultCode result = Tell(0)) {
            return result;
        }
    }
    return ResultSuccess;
}

ResultCode RescueCopier::ReadPiece(std::uint64_t begin, std::uint64_t end, Piece& outPiece)
{
    m_map.position = begin;
    std::size_t got = 0;
    // Through the system's cache only as long as all is well: it reads pages, and fails the good sectors of one with the bad.
    const bool exactly = m_failedOnce || m_map.phase != RescuePhase::Copying || m_map.pass > 1;
    const ResultCode result = m_reader.Read(
        m_source.startByte + begin, static_cast<std::size_t>(end - begin), exactly,
        [this](std::uint64_t milliseconds) {
            const ResultCode answer = Tell(milliseconds);
            m_answer = m_answer != ResultSuccess ? m_answer : answer;
        },
        &got);
    const std::uint64_t good = got / m_source.sectorSize * m_source.sectorSize;
    outPiece = {begin, end, begin + good};
    if (good != 0) {
        if (const ResultCode written =
                m_target.WriteAt(begin, m_reader.Data(), static_cast<std::size_t>(good))) {
            return written;
        }
        m_map.Set(begin, outPiece.good, RescueStatus::Finished);
        CountGood(good);
    }
    if (outPiece.Failed()) {
        m_failedOnce = true;
        if (result == ResultNotConnected || (m_source.isThere && !m_source.isThere())) {
            return ResultNotConnected;
        }
    }
    return ResultSuccess;
}

void RescueCopier::CountGood(std::uint64_t bytes)
{
    m_lastGood = TickMilliseconds();
    m_rateBytes += bytes;
}

ResultCode RescueCopier::Tell(std::uint64_t readMilliseconds)
{
    const std::uint64_t now = TickMilliseconds();
    if (now - m_rateStart >= RateMilliseconds) {
        m_rate = m_rateBytes * 1000 / (now - m_rateStart);
        m_rateStart = now;
        m_rateBytes = 0;
    }
    if (m_answer == ResultSuccess && m_report) {
        m_answer = m_report({m_map, m_rate, (now - m_lastGood) / 1000, readMilliseconds / 1000});
        if (m_answer != ResultSuccess) {
            (void)
                Save();  // who loses patience with a read that hangs loses nothing else; the end saves again
        }
    }
    if (m_answer == ResultSuccess && now - m_lastSave >= SaveMilliseconds) {
        return Save();
    }
    return m_answer;
}

// The image first: of what the map calls finished nothing may be on its way still.
ResultCode RescueCopier::Save()
{
    m_lastSave = TickMilliseconds();
    if (const ResultCode result = m_target.SyncData()) {
        return result;
    }
    const std::string text = m_map.Text();
    std::filesystem::path fresh = m_mapFile;
    fresh += ".new";
    if (const ResultCode result = WriteWholeFile(fresh, text.data(), text.size())) {
        return result;
    }
    return RenameFile(fresh, m_mapFile);
}
