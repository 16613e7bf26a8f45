// Where restored files go: the checks on the folder before a scan, and a path for each file in it.
#pragma once

#include "platform/ResultCode.h"
#include "platform/SafeName.h"
#include "platform/UniquePath.h"
#include "recovery/FileRecord.h"
#include "session/ScanTarget.h"

#include <filesystem>
#include <optional>
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
    // Makes the folder, and looks by whose rules its file system names files.
    DestinationCheck Make();

    // The bytes that this user may still write there; nothing when the system does not tell.
    std::optional<std::uint64_t> FreeBytes() const;
    // A file of that name and size stands where the record's would go.
    bool HasAlready(const FileRecord& record, std::string_view folderPath) const;

    // The path that a file would have if it were alone, its folder made. Never outside the destination, whatever the names.
    // folderPath counts with ByTree: each folder followed by "\".
    std::filesystem::path WantedPath(const FileRecord& record, std::string_view folderPath);
    // The same with a number where something has that name now.
    std::filesystem::path FreePath(const std::filesystem::path& wanted)
    {
        return m_unique.Next(wanted);
    }
    // Gives a file of ours in the wanted path's folder that name, or the next number of it that is free then, and stores the
    // path. Nothing is ever replaced, also not what another process puts there at this moment.
    [[nodiscard]] ResultCode Place(const std::filesystem::path& file,
                                   const std::filesystem::path& wanted,
                                   std::filesystem::path& outPath);

    const std::filesystem::path& Folder() const { return m_folder; }
    bool KeepsTree() const { return m_layout == Layout::ByTree; }
    NameRules Rules() const { return m_rules; }

private:
    std::filesystem::path RelativeFolder(const FileRecord& record,
                                         std::string_view folderPath) const;
    std::filesystem::path FolderFor(const std::filesystem::path& relative);

    std::filesystem::path m_folder;
    Layout m_layout;
    NameRules m_rules = NameRules::Plain;
    UniquePaths m_unique;
    std::unordered_map<std::string, std::filesystem::path>
        m_folders;  // relative path to the one in use
};
