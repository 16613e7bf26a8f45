#include "recovery/RestoreSupport.h"

#include "platform/Folders.h"
#include "platform/SafeName.h"
#include "platform/Text.h"
#include "recovery/FileTypeCatalogue.h"

#include <queue>

#include <algorithm>

namespace {

struct RestoreItem
{
    FileRecord record;
    std::filesystem::path path;  // where its children go
};

bool IsClip(const std::string& extension)
{
    return InFamily(FamilyAudio, extension) || InFamily(FamilyVideo, extension);
}

}  // namespace

ResultCode OutputFile::Open(const std::filesystem::path& path)
{
    m_position = 0;
    return m_file.OpenOrCreate(path);
}

ResultCode OutputFile::Write(const std::uint8_t* bytes, std::size_t count, std::size_t* outWritten)
{
    std::size_t written = 0;
    const ResultCode result = m_file.WriteAt(m_position, bytes, count, &written);
    m_position += written;
    if (outWritten != nullptr) {
        *outWritten = written;
    }
    return result;
}

ResultCode MakeFolderOf(const std::filesystem::path& destPath)
{
    const std::filesystem::path folder = destPath.parent_path();
    if (folder.empty() || PathExists(folder)) {
        return ResultSuccess;
    }
    const ResultCode made = MakeFolderWithParents(folder);
    return FolderIsThere(made) ? ResultSuccess : made;
}

std::uint32_t CountSeparators(const std::filesystem::path& path)
{
    const std::string text = path.string();
    if (text.empty()) {
        return 0;
    }
    return static_cast<std::uint32_t>(std::count(text.begin(), text.end() - 1, '/'));
}

ResultCode RestoreFolderTree(IFileRecoveryParse& engine,
                             const FileRecord& folder,
                             const std::filesystem::path& destPath,
                             std::uint32_t baseDepth,
                             const RestoreFileFunction& restoreFile)
{
    if (const ResultCode made = MakeFolderWithParents(destPath); !FolderIsThere(made)) {
        return made;
    }
    std::queue<RestoreItem> waiting;
    waiting.push({folder, destPath});
    ResultCode result = ResultSuccess;
    while (!waiting.empty()) {
        const RestoreItem item = std::move(waiting.front());
        waiting.pop();
        FileRecordList children;
        result =
            engine.ListChildren(&item.record, CountSeparators(item.path) - baseDepth, children);
        if (result != ResultSuccess) {
            continue;
        }
        for (const FileRecord& child : children) {
            const std::filesystem::path path = item.path / SafeFileName(child.NameText());
            if (child.IsFolder != 0) {
                (void)MakeFolder(path);  // its files fail one by one where it could not be made
                waiting.push({child, path});
                result = ResultSuccess;
                continue;
            }
            result = restoreFile(child, path);
            if (IsStop(result)) {
                return result;
            }
        }
    }
    return result;
}

bool PreviewNeedsFile(std::string_view name)
{
    std::string extension;
    if (ExtensionOf(name, extension) != ResultSuccess) {
        return false;
    }
    extension = LowerAscii(extension);
    return IsClip(extension) || InFamily(FamilyPhoto, extension);
}

ResultCode OpenPreviewFile(const std::filesystem::path& root,
                           std::string_view name,
                           std::filesystem::path& outPath,
                           OutputFile& outFile)
{
    (void)MakePrivateFolderWithParents(root);  // the opening below tells what went wrong
    outPath = root / (IsClip(LowerExtensionOf(name)) ? PreviewClipName : PreviewPictureName);
    (void)RemoveFile(outPath);
    return outFile.Open(outPath);
}
