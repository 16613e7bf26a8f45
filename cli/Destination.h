// Where restored files go: the checks on the folder before a scan, and a path for each file in it.
#pragma once

#include "cli/Command.h"
#include "platform/UniquePath.h"
#include "recovery/FileRecord.h"
#include "recovery/ScanTarget.h"

#include <filesystem>
#include <optional>
#include <string>
#include <unordered_map>

class Destination
{
public:
    // With tree, files lie under the folder path that they had; without, under the name of their category.
    Destination(std::filesystem::path folder, bool tree);

    // Makes the folder. Refuses one that cannot be written; unless force is given also one that lies on the source, and,
    // when nobody says yes to it, one of which the system does not tell whether it does.
    [[nodiscard]] std::optional<Refusal>
    Prepare(const ScanTarget& source, bool force, CommandStreams& streams) const;

    // A path that nothing has, its folder not yet made. Never outside the destination, whatever the names.
    std::filesystem::path PathFor(const FileRecord& record, std::string_view folderPath);

    const std::filesystem::path& Folder() const { return m_folder; }

private:
    std::filesystem::path FolderFor(const std::filesystem::path& relative);

    std::filesystem::path m_folder;
    bool m_tree;
    UniquePaths m_unique;
    std::unordered_map<std::string, std::filesystem::path>
        m_folders;  // relative path to the one in use
};
