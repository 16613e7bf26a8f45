// The files that this process has open.
#pragma once

#include <filesystem>

// Closes every descriptor of the process on that path, whoever holds it: for what a piece of work had open that was ended by
// force. Nothing else may use the path meanwhile.
void CloseFilesOf(const std::filesystem::path& path);
