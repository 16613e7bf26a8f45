// Copies what can be read of a failing disk into an image, with a map file beside it: what has to be looked at before, and
// the run, which goes on where an earlier one ended.
#pragma once

#include "session/ImageTask.h"

#include <functional>
#include <string>

class RescueMap;

enum class RescueFault
{
    None,
    Image,           // see image
    BrokenMap,       // the map file cannot be read, or is none
    OtherMap,        // it is of a larger source
    MapWithoutImage  // it tells of data that are not there
};

struct RescueProblem
{
    RescueFault fault = RescueFault::None;
    ImageProblem image;
};

enum class RescueStep
{
    Copying,
    Trimming,
    Scraping,
    Retrying,
    Finished
};

// How far it is. Called after each read, and twice a second while one hangs.
struct RescueProgress
{
    RescueStep step = RescueStep::Copying;
    std::uint32_t pass = 1;  // of copying and retrying
    std::uint64_t totalBytes = 0;
    std::uint64_t rescuedBytes = 0;
    std::uint64_t badBytes = 0;
    std::uint64_t bytesPerSecond = 0;
    std::uint64_t secondsSinceGood = 0;
    std::uint64_t readSeconds = 0;  // that the running read hangs already
    // These two go through the map, so they are asked only when they are shown.
    std::function<std::size_t()> badPlaces;
    // The disk as so many letters, each the worst of its part: + rescued, ? not tried, * / where reading failed, - bad.
    std::function<std::string(std::size_t cells)> strip;
};
using RescueFunction = std::function<Answer(const RescueProgress&)>;

enum class RescueEnd
{
    Complete,  // all that can be read was; bytes may be missing
    Stopped,
    NotChecked,
    SourceNotOpened,
    SourceGone,
    InUse,  // another process writes this image
    Failed  // writing, see why
};

struct RescueOutcome
{
    RescueEnd end = RescueEnd::Complete;
    ResultCode why = ResultSuccess;
    std::uint64_t totalBytes = 0;
    std::uint64_t rescuedBytes = 0;
    std::uint64_t badBytes = 0;
    std::size_t badPlaces = 0;
    bool begun = false;  // the image and its map are there

    std::uint64_t MissingBytes() const { return totalBytes - rescuedBytes; }
};

// One thread at a time uses it.
class RescueTask
{
public:
    RescueTask(const ScanTarget& source, const std::filesystem::path& file);

    // The image begins with so many bytes that have just been copied from the source: they are not read again. What comes
    // after them, or stands in a map of an earlier rescue, does not count. Before NextProblem.
    void TakeCopied(std::uint64_t bytes) { m_copiedBytes = bytes; }
    // As ImageTask::NextProblem. An image with its map beside it is resumed, and no question.
    std::optional<RescueProblem> NextProblem();
    RescueOutcome Run(std::uint32_t retries, const RescueFunction& progress);

    const ImageTask& Image() const { return m_image; }
    std::filesystem::path MapFile() const;
    bool GoesOn() const { return m_goesOn; }

private:
    RescueProblem LookAtMap();
    RescueMap BeginMap() const;
    void Rescue(std::uint32_t retries, const RescueFunction& progress, RescueOutcome& outcome);

    ScanTarget m_source;
    ImageTask m_image;
    bool m_mapLookedAt = false;
    bool m_goesOn = false;
    bool m_checked = false;
    std::optional<std::uint64_t> m_copiedBytes;
    std::uint64_t m_finishedBytes = 0;  // by the map
};
