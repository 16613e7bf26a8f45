// The texts of the list of disks and of what stands beside it.
#pragma once

#include "app/tasks/RecoveryState.h"

#include <QString>

#include <array>

// Markup; what comes from a disk is never read as such.
QString DiskHeaderText(const DiskFacts& disk);
QString ImageHeaderText();
QString VolumeNameText(const TargetRow& row);
QString CellText(std::string_view value);

// Of an image; 0 for a file that is not there.
std::uint64_t ImageBytes(const RecoveryTarget& target);

// "Drive: 1 (FAT, 31.94 MB)", plain: among others that were scanned.
QString ScannedName(const RecoveryTarget& target);

// "Label1" to "Label6" for a target.
using DetailTexts = std::array<QString, 6>;
DetailTexts DetailsOf(const RecoveryTarget& target);
