#include "session/Destination.h"

#include "platform/Folders.h"
#include "platform/Ownership.h"
#include "platform/StorageMap.h"
#include "recovery/FileTypeCatalogue.h"
#include "session/PartFile.h"
#include "session/TargetPlace.h"
#include "storage/DiskHelpers.h"

#include <algorithm>
#include <array>

namespace {

// By the mount's type. What a program mounts from a device is one of them nearly always, and their rules do no harm.
NameRules RulesOf(const std::filesystem::path& folder)
{
    constexpr std::array<std::string_view, 8> Types = {"vfat", "msdos", "exfat",   "fuse.exfat",
                                                       "ntfs", "ntfs3", "fuseblk", "fuse.ntfs-3g"};
    const StorageMap map;
    const MountEntry* const mount = map.MountHolding(folder);
    return mount != nullptr && std::find(Types.begin(), Types.end(), mount->type) != Types.end()
               ? NameRules::Windows
               : NameRules::Plain;
}

// The folder, and those above it, down from the given one that was there before.
void HandOverBelow(const std::filesystem::path& before, std::filesystem::path folder)
{
    for (; folder != before && folder.has_relative_path(); folder = folder.parent_path()) {
        HandToUser(folder);
    }
}

}  // namespace

Destination::Destination(std::filesystem::path folder, Layout layout)
    : m_folder(std::move(folder)), m_layout(layout)
{
    std::error_code ignored;
    m_folder = std::filesystem::absolute(m_folder, ignored).lexically_normal();
    if (!m_folder.has_filename()) {
        m_folder = m_folder.parent_path();  // a separator at the end
    }
}

DestinationFault Destination::CheckPlace(const ScanTarget& source) const
{
    const Touching touching = PathTouchesTarget(m_folder, source);
    if (touching == Touching::Yes) {
        return DestinationFault::OnSource;
    }
    return touching == Touching::Unknown && !source.IsImage() ? DestinationFault::MayBeOnSource
                                                              : DestinationFault::None;
}

DestinationCheck Destination::Make()
{
    const std::filesystem::path before = NearestExisting(m_folder);
    const ResultCode made = MakeFolderWithParents(m_folder);
    if (!FolderIsThere(made) || !IsFolder(m_folder)) {
        return {DestinationFault::CannotBeMade, FolderIsThere(made) ? ResultFileExists : made};
    }
    HandOverBelow(before, m_folder);
    m_rules = RulesOf(m_folder);
    return {IsWritableFolder(m_folder) ? DestinationFault::None : DestinationFault::NotWritable,
            ResultSuccess};
}

std::optional<std::uint64_t> Destination::FreeBytes() const
{
    std::uint64_t bytes = 0;
    return GetFreeBytes(m_folder, &bytes) == ResultSuccess ? std::optional(bytes) : std::nullopt;
}

std::filesystem::path Destination::RelativeFolder(const FileRecord& record,
                                                  std::string_view folderPath) const
{
    return KeepsTree() ? SafeFolderPath(folderPath, m_rules)
                       : std::filesystem::path(CategoryFolderName(record.NameText()));
}

bool Destination::HasAlready(const FileRecord& record, std::string_view folderPath) const
{
    std::error_code error;
    const std::uintmax_t size = std::filesystem::file_size(
        m_folder / RelativeFolder(record, folderPath) / SafeFileName(record.NameText(), m_rules),
        error);
    return !error && size == record.FileSize;
}

std::filesystem::path Destination::WantedPath(const FileRecord& record, std::string_view folderPath)
{
    return FolderFor(RelativeFolder(record, folderPath)) / SafeFileName(record.NameText(), m_rules);
}

ResultCode Destination::Place(const std::filesystem::path& file,
                              const std::filesystem::path& wanted,
                              std::filesystem::path& outPath)
{
    // Each further try has lost a race with another process, or the file system contradicts itself.
    constexpr int MostTries = 1000;
    ResultCode result = ResultAlreadyExists;
    for (int i = 0; i < MostTries && result == ResultAlreadyExists; ++i) {
        outPath = FreePath(wanted);
        result = RenameWithoutReplacing(file, outPath);
    }
    return result;
}

// A file, or a link that leads elsewhere, can have the name that a folder needs: the folder gets another.
std::filesystem::path Destination::FolderFor(const std::filesystem::path& relative)
{
    const auto [known, isNew] = m_folders.try_emplace(relative.string());
    if (!isNew) {
        return known->second;
    }
    std::filesystem::path folder = m_folder;
    for (const std::filesystem::path& component : relative) {
        folder /= component;
        if (!IsRealFolder(folder)) {
            folder = m_unique.Next(folder);
            (void)MakeFolder(folder);  // the restoring of its files tells what is wrong
            HandToUser(folder);
        }
    }
    RemoveLeftParts(folder);
    return known->second = folder;
}
