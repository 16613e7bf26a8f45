// Copies a range of a disk into an image file: what has to be looked at before, and the copy.
#pragma once

#include "session/Progress.h"
#include "session/ScanTarget.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

enum class ImageFault
{
    SourceIsImage,  // it can be scanned as it is
    NoName,
    NoFolder,      // the file's folder does not exist
    NotPlainFile,  // an image is never written to a device, a link or a folder
    Exists,        // a question: write over it?
    OnSource,
    MayBeOnSource,     // a question: the system does not tell
    TooLargeForFat32,  // larger than 4 GB
    TooLargeForFat,    // larger than 2 GB
    NoRoom
};

struct ImageProblem
{
    ImageFault fault = ImageFault::NoName;
    std::string fileSystem;       // with the two about FAT
    std::uint64_t freeBytes = 0;  // with NoRoom

    bool IsQuestion() const
    {
        return fault == ImageFault::Exists || fault == ImageFault::MayBeOnSource;
    }
};

enum class ImageEnd
{
    Complete,
    Stopped,
    NotChecked,  // problems are left, so nothing was begun
    SourceNotOpened,
    ReadFault,  // at failedSector, where the copy ends
    Failed      // writing it, see why
};

struct ImageOutcome
{
    ImageEnd end = ImageEnd::Complete;
    ResultCode why = ResultSuccess;
    std::uint32_t sectorSize = 512;
    std::uint64_t writtenSectors = 0;
    std::uint64_t failedSector = 0;  // of the disk
    std::uint64_t oldBytes =
        0;  // that the file had before; what lies after the written ones is still there

    std::uint64_t WrittenBytes() const { return writtenSectors * sectorSize; }
};

// One thread at a time uses it.
class ImageTask
{
public:
    ImageTask(const ScanTarget& source, const std::filesystem::path& file);

    // The next thing that speaks against it, in the order of the list above; nothing when all have been looked at. Calling it
    // again answers a question with yes. After a problem that is no question there is no next one: it comes again.
    std::optional<ImageProblem> NextProblem();
    // Copies, once NextProblem has given nothing. Progress counts sectors.
    ImageOutcome Run(const ProgressFunction& progress);

    // Absolute.
    const std::filesystem::path& File() const { return m_file; }
    std::uint64_t SourceBytes() const { return m_source.ByteCount(); }

private:
    bool HasFault(ImageProblem& problem) const;
    bool
    IsTooLargeFor(std::string_view family, std::uint64_t mostBytes, ImageProblem& problem) const;
    void Copy(const ProgressFunction& progress, ImageOutcome& outcome) const;

    ScanTarget m_source;
    bool m_named = false;
    std::filesystem::path m_file;
    std::size_t m_next = 0;  // of the list of faults
};
