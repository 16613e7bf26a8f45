// Where restored files go: the checks on the folder before a scan, and a path for each file in it.
#pragma once

#include "platform/ResultCode.h"
#include "platform/UniquePath.h"
#include "recovery/FileRecord.h"
#include "session/ScanTarget.h"

#include <filesystem>
#include <string>
#include <string_view>
#include <unordered_map>

enum class Layout
{
    ByCategory,  // below "photo", "audio" and so on
    ByTree       // below the folders that the files had
};

enum class DestinationFault
{
    None,
    OnSource,       // restored files would overwrite deleted ones
    MayBeOnSource,  // the system does not tell; a question, not a refusal
    CannotBeMade,   // see why
    NotWritable
};

struct DestinationCheck
{
    DestinationFault fault = DestinationFault::None;
    ResultCode why = ResultSuccess;
};

class Destination
{
public:
    Destination(std::filesystem::path folder, Layout layout);

    // OnSource, MayBeOnSource or none. An image is no device that a file system could lie on unseen: there is no MayBe.
    DestinationFault CheckPlace(const ScanTarget& source) const;
    // Makes the folder.
    DestinationCheck Make() const;

    // A path that nothing has, its folder made. Never outside the destination, whatever the names. folderPath counts with
    // ByTree: each folder followed by "\".
    std::filesystem::path PathFor(const FileRecord& record, std::string_view folderPath);

    const std::filesystem::path& Folder() const { return m_folder; }
    bool KeepsTree() const { return m_layout == Layout::ByTree; }

private:
    std::filesystem::path FolderFor(const std::filesystem::path& relative);

    std::filesystem::path m_folder;
    Layout m_layout;
    UniquePaths m_unique;
    std::unordered_map<std::string, std::filesystem::path>
        m_folders;  // relative path to the one in use
};
