// Whether writing into a folder would write onto a source that is being recovered.
#pragma once

#include <filesystem>

// True when the folder, or the nearest one above it that exists, lies on the source: on the block device itself or a
// part of it, also through volumes, loop devices and encryption on top of it; for an image file, when the
// folder's file system is mounted from that file. False also when the system does not tell.
bool FolderLiesOnSource(const std::filesystem::path& folder, const std::filesystem::path& source);
