#include "session/Destination.h"

#include "platform/Folders.h"
#include "platform/SafeName.h"
#include "recovery/FileTypeCatalogue.h"
#include "session/TargetPlace.h"

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

DestinationCheck Destination::Make() const
{
    const ResultCode made = MakeFolderWithParents(m_folder);
    if (!FolderIsThere(made) || !IsFolder(m_folder)) {
        return {DestinationFault::CannotBeMade, FolderIsThere(made) ? ResultFileExists : made};
    }
    return {IsWritableFolder(m_folder) ? DestinationFault::None : DestinationFault::NotWritable,
            ResultSuccess};
}

std::filesystem::path Destination::PathFor(const FileRecord& record, std::string_view folderPath)
{
    const std::string name = SafeFileName(record.NameText());
    const std::filesystem::path relative =
        KeepsTree() ? SafeFolderPath(folderPath)
                    : std::filesystem::path(CategoryFolderName(record.NameText()));
    return m_unique.Next(FolderFor(relative) / name);
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
        }
    }
    return known->second = folder;
}
