#include "session/ImageTask.h"

#include "platform/Folders.h"
#include "platform/Ownership.h"
#include "session/Guard.h"
#include "session/TargetPlace.h"
#include "storage/DiskHelpers.h"
#include "storage/RawDiskCopier.h"

#include <algorithm>
#include <array>

namespace fs = std::filesystem;

namespace {

constexpr std::uint64_t GiB = std::uint64_t{1} << 30;

// In the order in which they are looked at.
constexpr std::array Faults = {ImageFault::SourceIsImage,  ImageFault::NoName,
                               ImageFault::NoFolder,       ImageFault::NotPlainFile,
                               ImageFault::Exists,         ImageFault::OnSource,
                               ImageFault::MayBeOnSource,  ImageFault::TooLargeForFat32,
                               ImageFault::TooLargeForFat, ImageFault::NoRoom};

std::string UpperAscii(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(), [](char letter) {
        return letter >= 'a' && letter <= 'z' ? static_cast<char>(letter - 'a' + 'A') : letter;
    });
    return text;
}

ResultCode OnSectors(void* context,
                     std::int32_t percent,
                     std::uint64_t sectorsDone,
                     std::uint64_t sectorsTotal,
                     std::int32_t secondsLeft)
{
    const auto& progress = *static_cast<const ProgressFunction*>(context);
    Progress shown;
    shown.percent = percent;
    shown.secondsLeft = secondsLeft;
    shown.done = sectorsDone;
    shown.total = sectorsTotal;
    return progress && progress(shown) != Answer::GoOn ? ResultCancelled : ResultSuccess;
}

}  // namespace

ImageTask::ImageTask(const ScanTarget& source, const fs::path& file)
    : m_source(UpToTheLastSector(source)), m_named(!file.empty())
{
    std::error_code ignored;
    m_file = fs::absolute(file, ignored).lexically_normal();
}

std::optional<ImageProblem> ImageTask::NextProblem()
{
    for (; m_next < Faults.size(); ++m_next) {
        ImageProblem problem;
        problem.fault = Faults[m_next];
        if (HasFault(problem)) {
            m_next += problem.IsQuestion() ? 1u : 0u;
            return problem;
        }
    }
    return std::nullopt;
}

bool ImageTask::HasFault(ImageProblem& problem) const
{
    std::error_code ignored;
    const fs::file_status status = fs::symlink_status(m_file, ignored);
    switch (problem.fault) {
    case ImageFault::SourceIsImage:
        return m_source.IsImage();
    case ImageFault::NoName:
        return !m_named;
    case ImageFault::NoFolder:
        return !fs::is_directory(m_file.parent_path(), ignored);
    case ImageFault::NotPlainFile:
        return fs::exists(status) && !fs::is_regular_file(status);
    case ImageFault::Exists:
        return fs::exists(status);
    case ImageFault::OnSource:
        return PathTouchesTarget(m_file, m_source) == Touching::Yes;
    case ImageFault::MayBeOnSource:
        return PathTouchesTarget(m_file, m_source) == Touching::Unknown;
    case ImageFault::TooLargeForFat32:
        return IsTooLargeFor("FAT32", 4 * GiB, problem);
    case ImageFault::TooLargeForFat:
        // FAT32 is meant too: larger images than this are not put on any of the family.
        return IsTooLargeFor("FAT", 2 * GiB, problem);
    case ImageFault::NoRoom:
        return GetFreeBytes(m_file.parent_path(), &problem.freeBytes) == ResultSuccess &&
               SourceBytes() >= problem.freeBytes;
    }
    return false;
}

bool ImageTask::IsTooLargeFor(std::string_view family,
                              std::uint64_t mostBytes,
                              ImageProblem& problem) const
{
    problem.fileSystem = UpperAscii(GetFileSystemName(m_file.parent_path()));
    return problem.fileSystem.find(family) != std::string::npos && SourceBytes() > mostBytes;
}

ImageOutcome ImageTask::Run(const ProgressFunction& progress)
{
    ImageOutcome outcome;
    if (m_next < Faults.size()) {
        outcome.end = ImageEnd::NotChecked;
        return outcome;
    }
    const ResultCode fault = RunGuarded([&] { Copy(progress, outcome); });
    if (fault != ResultSuccess) {
        outcome.end = ImageEnd::Failed;
        outcome.why = fault;
    }
    return outcome;
}

void ImageTask::Copy(const ProgressFunction& progress, ImageOutcome& outcome) const
{
    if (GetFileSize(m_file, &outcome.oldBytes) != ResultSuccess) {
        outcome.oldBytes = 0;  // not there yet
    }
    const bool isNew = !PathExists(m_file);
    ProgressFunction call = progress;
    RawDiskCopier copier;
    outcome.why = copier.Copy(m_source.diskNumber, m_source.startSector, m_source.sectorCount,
                              m_file, &OnSectors, &call);
    if (isNew) {
        HandToUser(m_file);
    }
    outcome.sectorSize = copier.SectorSize;
    outcome.writtenSectors = copier.WrittenSectors;
    outcome.failedSector = copier.FailedSector;
    switch (outcome.why) {
    case ResultSuccess:
        break;
    case ResultCancelled:
        outcome.end = ImageEnd::Stopped;
        break;
    case ResultReadFault:
        outcome.end = ImageEnd::ReadFault;
        break;
    default:
        outcome.end = copier.SourceOpened ? ImageEnd::Failed : ImageEnd::SourceNotOpened;
    }
}
