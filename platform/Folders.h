// Making, testing and removing folders, and the per-user folder that the program keeps its data in.
#pragma once

#include "platform/ResultCode.h"

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

// Makes a folder with all its parents, mode 0777 less the umask. ResultFileExists (80) when something
// that is no folder has the name, ResultAlreadyExists (183) when the folder is there already.
[[nodiscard]] ResultCode MakeFolderWithParents(const std::filesystem::path& path);
// The same, but what is made is open to this user alone: names and previews of private files lie there.
[[nodiscard]] ResultCode MakePrivateFolderWithParents(const std::filesystem::path& path);
// Makes one folder; its parent must exist.
[[nodiscard]] ResultCode MakeFolder(const std::filesystem::path& path);

// Whether MakeFolder... left a folder there: success, or one of the two codes for "already exists".
bool FolderIsThere(ResultCode code);

// Something of that name exists, a dangling symbolic link included.
bool PathExists(const std::filesystem::path& path);
bool IsFolder(const std::filesystem::path& path);
// The path itself, or the nearest folder above it that exists; absolute.
std::filesystem::path NearestExisting(const std::filesystem::path& path);
// A folder itself, not a link to one.
bool IsRealFolder(const std::filesystem::path& path);
// A folder that this user may make files in.
bool IsWritableFolder(const std::filesystem::path& path);

[[nodiscard]] ResultCode RemoveFile(const std::filesystem::path& path);
// Removes a folder with all it holds; links are removed, not followed.
[[nodiscard]] ResultCode RemoveTree(const std::filesystem::path& path);
[[nodiscard]] ResultCode RenameFile(const std::filesystem::path& from,
                                    const std::filesystem::path& to);
// The same, but never over anything: ResultAlreadyExists when something has the name, whoever made it and however late.
[[nodiscard]] ResultCode RenameWithoutReplacing(const std::filesystem::path& from,
                                                const std::filesystem::path& to);

// Names in a folder, sorted by their bytes, without those that begin with a full stop.
[[nodiscard]] ResultCode ListFolder(const std::filesystem::path& path,
                                    std::vector<std::string>& outNames);

// XDG_DATA_HOME, else ~/.local/share, else the home folder of the user database; or what was set below.
std::filesystem::path ApplicationDataFolder();
// Puts another folder in its place for the rest of the process (a command-line option, tests), before threads start:
// reading it takes no lock, and the environment behind it is not to change either.
void SetApplicationDataFolder(const std::filesystem::path& path);

// XDG_CONFIG_HOME, else ~/.config, else the same in the home folder of the user database.
std::filesystem::path ConfigurationFolder();
// The folder that the running program stands in; empty when the system does not tell.
std::filesystem::path ProgramFolder();
// What is installed below that part of a prefix: of the one that this program is installed below, else of the usual one. A
// program in a build tree has what the build has put there.
std::filesystem::path InstalledPath(std::string_view belowPrefix);
