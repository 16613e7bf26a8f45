#include "cli/Destination.h"

#include "cli/TargetResolver.h"
#include "cli/TextForms.h"
#include "platform/Folders.h"
#include "platform/SafeName.h"
#include "recovery/FileTypeCatalogue.h"

Destination::Destination(std::filesystem::path folder, bool tree)
    : m_folder(std::move(folder)), m_tree(tree)
{
    std::error_code ignored;
    m_folder = std::filesystem::absolute(m_folder, ignored).lexically_normal();
    if (!m_folder.has_filename()) {
        m_folder = m_folder.parent_path();  // a separator at the end
    }
}

std::optional<Refusal>
Destination::Prepare(const ScanTarget& source, bool force, CommandStreams& streams) const
{
    const std::string name = Printable(m_folder.string());
    const Touching touching = force ? Touching::No : PathTouchesTarget(m_folder, source);
    if (touching == Touching::Yes) {
        return Refusal{
            ExitStatus::WrongUse,
            name + " lies on the source itself, where restored files would overwrite deleted ones; "
                   "choose a folder on another disk, or give --force if that is wanted."};
    }
    // An image is no device that a file system could lie on unseen.
    if (touching == Touching::Unknown && source.IsVolume() &&
        !Ask("The system does not tell whether " + name +
                 " lies on the source itself. Restore there all the same?",
             streams)) {
        return Refusal{ExitStatus::WrongUse,
                       "the system does not tell whether " + name +
                           " lies on the source itself; choose a folder on another disk, or give "
                           "--force if you know that it does not."};
    }
    const ResultCode made = MakeFolderWithParents(m_folder);
    if (!FolderIsThere(made) || !IsFolder(m_folder)) {
        return Refusal{
            ExitStatus::WrongUse,
            name + " cannot be made: " + ErrorText(FolderIsThere(made) ? ResultFileExists : made) +
                " Choose another folder."};
    }
    if (!IsWritableFolder(m_folder)) {
        return Refusal{ExitStatus::WrongUse,
                       name + " cannot be written; choose a folder that you may write to."};
    }
    return std::nullopt;
}

std::filesystem::path Destination::PathFor(const FileRecord& record, std::string_view folderPath)
{
    const std::string name = SafeFileName(record.NameText());
    const std::filesystem::path relative =
        m_tree ? SafeFolderPath(folderPath)
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
