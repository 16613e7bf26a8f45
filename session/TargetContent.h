// What a target holds, as far as it can be recognised, and what a scan can do there.
#pragma once

#include "session/ScanTarget.h"

#include <string>

enum class ContentKind
{
    Unknown,
    Understood,     // its tables are read
    NotUnderstood,  // files come back by their content alone
    Encrypted,      // nothing in it looks like a file
    Swap,
    VolumeGroup,  // a part of one, whose volumes are scanned in its place
    Array         // the same, but of disks
};

struct TargetContent
{
    ContentKind kind = ContentKind::Unknown;
    std::string
        fileSystem;  // by its own name: "NTFS", "exFAT", "ext4", "Btrfs", "LUKS"; empty with Unknown
};

// What a row of the list says by its file system's name, without anything being read.
TargetContent ContentCalled(const std::string& fileSystem);
// Of what cannot be read, Unknown.
TargetContent ContentOf(const ScanTarget& target);
