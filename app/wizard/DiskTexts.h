// The texts of the list of disks and of what stands beside it.
#pragma once

#include "app/tasks/RecoveryState.h"

#include <QString>

#include <array>

// Markup; what comes from a disk is never read as such.
QString DiskHeaderText(const DiskFacts& disk);
QString ImageHeaderText();
QString VolumeNameText(const TargetRow& row);
QString ImagePartNameText(const TargetRow& row);
QString CellText(std::string_view value);

// Of an image; 0 for a file that is not there.
std::uint64_t ImageBytes(const RecoveryTarget& target);

// "Drive: 1 (FAT, 31.94 MB)", plain: among others that were scanned.
QString ScannedName(const RecoveryTarget& target);

// "Label1" to "Label10" for a target, plain: what it is and how full, then where it lies, and what can be found where its file
// system is not understood.
using DetailTexts = std::array<QString, 10>;
DetailTexts DetailsOf(const RecoveryTarget& target);
// All that is known, line by line, for when the mouse rests on the row; with marks that hide or turn texts made visible.
QString ToolTipOf(const RecoveryTarget& target);
QString ToolTipOf(const DiskFacts& disk);
