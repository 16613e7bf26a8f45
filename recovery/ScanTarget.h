// What a scan reads: a volume of a disk, or an image file. Owns the engine that scans it.
#pragma once

#include "recovery/FileRecoveryParse.h"
#include "storage/VolumeRecord.h"

#include <filesystem>
#include <memory>

struct ScanTarget
{
    static constexpr char16_t FirstImageId = 1001;  // above the numbers that volumes get

    std::unique_ptr<VolumeRecord> Volume;        // null for an image file
    std::unique_ptr<IFileRecoveryParse> Engine;  // null until it is opened for a scan
    std::filesystem::path ImagePath;             // empty for a volume
    char16_t ImageId = 0;                        // in place of a volume's number

    bool IsVolume() const { return ImagePath.empty() && Volume != nullptr; }
    // What the target's records carry, so that they find it again.
    char16_t Letter() const
    {
        const VolumeRecord* volume = Volume.get();
        return volume != nullptr && ImagePath.empty() ? volume->Letter : ImageId;
    }
};
