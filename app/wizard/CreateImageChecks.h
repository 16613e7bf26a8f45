// What is looked at before a disk or a part of it is copied into an image file.
#pragma once

#include "app/tasks/RecoveryState.h"
#include "session/ImageTask.h"

#include <filesystem>
#include <optional>
#include <string>

// A row of the list of disks as the source of an image: one target, or a whole disk.
struct ImageSource
{
    RecoveryTarget* target = nullptr;  // null for a whole disk
    DiskFacts disk;                    // of a whole disk
};

// Nothing when the row is neither a part of a disk nor a disk.
std::optional<ImageSource> ImageSourceOf(RecoveryTarget* target, const DiskFacts* disk);

ScanTarget TargetOf(const ImageSource& source);

// "3 (FAT32, 1.50 GB)" or "Physical Disk 2": without an ending, and without what a file name cannot hold.
std::string ProposedName(const ImageSource& source);

// Why an image cannot be written there.
struct ImageObjection
{
    std::string text;
    bool isQuestion = false;  // yes goes on
};

// In the order in which they are to be told, one at a time; asked again after a question, the next one comes.
class CreateImageChecks
{
public:
    CreateImageChecks(const ImageSource& source, const std::filesystem::path& file);

    std::optional<ImageObjection> Next();

private:
    ImageTask m_task;
};
