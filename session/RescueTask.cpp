#include "session/RescueTask.h"

#include "platform/Folders.h"
#include "session/Guard.h"
#include "session/TargetPlace.h"
#include "storage/DriveRegistry.h"
#include "storage/RescueCopier.h"
#include "storage/RescuedImage.h"

#include <algorithm>
#include <utility>

namespace fs = std::filesystem;

namespace {

RescueStep StepOf(RescuePhase phase)
{
    switch (phase) {
    case RescuePhase::Copying:
        return RescueStep::Copying;
    case RescuePhase::Trimming:
        return RescueStep::Trimming;
    case RescuePhase::Scraping:
        return RescueStep::Scraping;
    case RescuePhase::Retrying:
        return RescueStep::Retrying;
    case RescuePhase::Finished:
        break;
    }
    return RescueStep::Finished;
}

RescueProgress ProgressOf(const RescueState& state)
{
    const RescueMap& map = state.map;
    RescueProgress shown;
    shown.step = StepOf(map.phase);
    shown.pass = map.pass;
    shown.totalBytes = map.TotalBytes();
    shown.rescuedBytes = map.BytesOf(RescueStatus::Finished);
    shown.badBytes = map.BytesOf(RescueStatus::Bad);
    shown.bytesPerSecond = state.bytesPerSecond;
    shown.secondsSinceGood = state.secondsSinceGood;
    shown.readSeconds = state.readSeconds;
    shown.badPlaces = [&map] { return map.BadPlaces(); };
    shown.strip = [&map](std::size_t cells) { return map.Strip(cells); };
    return shown;
}

RescueEnd EndOf(ResultCode why)
{
    switch (why) {
    case ResultSuccess:
        return RescueEnd::Complete;
    case ResultCancelled:
        return RescueEnd::Stopped;
    case ResultNotConnected:
        return RescueEnd::SourceGone;
    default:
        return RescueEnd::Failed;
    }
}

}  // namespace

RescueTask::RescueTask(const ScanTarget& source, const fs::path& file)
    : m_source(UpToTheLastSector(source)), m_image(source, file)
{
}

fs::path RescueTask::MapFile() const
{
    return RescueMapFileOf(m_image.File());
}

RescueProblem RescueTask::LookAtMap()
{
    RescueProblem problem;
    if (m_copiedBytes) {
        std::error_code error;
        const std::uintmax_t there = fs::file_size(m_image.File(), error);
        m_copiedBytes = error ? 0 : std::min<std::uint64_t>(*m_copiedBytes, there);
        m_finishedBytes = *m_copiedBytes;
        m_goesOn = m_finishedBytes != 0;
        return problem;
    }
    if (!PathExists(MapFile())) {
        return problem;
    }
    const std::optional<RescueMap> map = ReadRescueMap(MapFile());
    if (!map) {
        problem.fault = RescueFault::BrokenMap;
        return problem;
    }
    if (map->TotalBytes() > m_source.ByteCount()) {
        problem.fault = RescueFault::OtherMap;
        return problem;
    }
    m_finishedBytes = map->BytesOf(RescueStatus::Finished);
    m_goesOn = PathExists(m_image.File());
    std::error_code error;
    const std::uint64_t imageBytes = m_goesOn ? fs::file_size(m_image.File(), error) : 0;
    const auto last = map->FindBackward(RescueStatus::Finished, map->TotalBytes());
    if (last && (error || imageBytes < last->end)) {
        problem.fault = RescueFault::MapWithoutImage;
    }
    return problem;
}

std::optional<RescueProblem> RescueTask::NextProblem()
{
    while (true) {
        RescueProblem problem;
        if (const std::optional<ImageProblem> next = m_image.NextProblem()) {
            problem = {RescueFault::Image, *next};
        }
        // What comes before this one says that a file can be there at all.
        const bool named =
            problem.fault == RescueFault::None || problem.image.fault >= ImageFault::Exists;
        if (named && !m_mapLookedAt) {
            const RescueProblem ofMap = LookAtMap();
            if (ofMap.fault != RescueFault::None) {
                return ofMap;
            }
            m_mapLookedAt = true;
        }
        if (problem.fault == RescueFault::None) {
            m_checked = true;
            return std::nullopt;
        }
        if (m_goesOn && problem.image.fault == ImageFault::Exists) {
            continue;  // asking again answers it
        }
        // What is rescued already takes its room already. This one is the last of the list.
        if (m_goesOn && problem.image.fault == ImageFault::NoRoom &&
            m_source.ByteCount() - m_finishedBytes < problem.image.freeBytes) {
            m_checked = true;
            return std::nullopt;
        }
        return problem;
    }
}

RescueOutcome RescueTask::Run(std::uint32_t retries, const RescueFunction& progress)
{
    RescueOutcome outcome;
    outcome.totalBytes = m_source.ByteCount();
    if (!m_checked) {
        outcome.end = RescueEnd::NotChecked;
        return outcome;
    }
    const ResultCode fault = RunGuarded([&] { Rescue(retries, progress, outcome); });
    if (fault != ResultSuccess) {
        outcome.end = RescueEnd::Failed;
        outcome.why = fault;
    }
    return outcome;
}

RescueMap RescueTask::BeginMap() const
{
    RescueMap map;
    if (m_goesOn && !m_copiedBytes) {
        // Read again, since another process may have had it until now.
        map = ReadRescueMap(MapFile()).value_or(RescueMap());
        map = map.TotalBytes() <= m_source.ByteCount() ? std::move(map) : RescueMap();
    }
    map.GrowTo(m_source.ByteCount());
    map.Set(0, m_copiedBytes.value_or(0), RescueStatus::Finished);
    map.AlignTo(m_source.sectorSize);
    return map;
}

void RescueTask::Rescue(std::uint32_t retries,
                        const RescueFunction& progress,
                        RescueOutcome& outcome)
{
    OpenedSource opened;
    outcome.why = OpenDriveSource(m_source.diskNumber, DriveFlush::Flush, opened);
    if (outcome.why != ResultSuccess) {
        outcome.end = RescueEnd::SourceNotOpened;
        return;
    }
    FileHandle image;
    outcome.why = image.OpenOrCreate(m_image.File());
    if (outcome.why == ResultSuccess && !image.TryLock()) {
        outcome.end = RescueEnd::InUse;
        return;
    }
    RescueMap map = BeginMap();
    // What nobody could read is a hole; nothing of an older file shines through it.
    if (outcome.why == ResultSuccess && (!m_goesOn || m_copiedBytes)) {
        outcome.why = image.Truncate(m_copiedBytes.value_or(0));
    }
    if (outcome.why == ResultSuccess) {
        outcome.why = image.Truncate(m_source.ByteCount());
    }
    if (outcome.why == ResultSuccess) {
        outcome.begun = true;
        const auto isThere = [this] {
            FileHandle handle;
            return DriveRegistry::Instance().Open(m_source.diskNumber, handle) == ResultSuccess;
        };
        RescueCopier copier(
            {opened.reader.get(), m_source.StartByte(), m_source.sectorSize, isThere}, image, map,
            MapFile());
        outcome.why = copier.Run(retries, [&progress](const RescueState& state) {
            return progress && progress(ProgressOf(state)) != Answer::GoOn ? ResultCancelled
                                                                           : ResultSuccess;
        });
    }
    outcome.end = EndOf(outcome.why);
    outcome.rescuedBytes = map.BytesOf(RescueStatus::Finished);
    outcome.badBytes = map.BytesOf(RescueStatus::Bad);
    outcome.badPlaces = map.BadPlaces();
}
