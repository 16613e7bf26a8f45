// What the restoring sides of all engines share: the output file, the folder that holds it, the walk through a
// folder's tree, and where a preview goes.
#pragma once

#include "platform/FileHandle.h"
#include "recovery/FileRecoveryParse.h"

#include <cstdint>
#include <filesystem>
#include <functional>

// A file being written from its start. An existing one is written over and not cut. The caller chose the path.
class OutputFile
{
public:
    [[nodiscard]] ResultCode Open(const std::filesystem::path& path);
    // Appends all bytes, or fails; *outWritten, when given, tells how many went out.
    [[nodiscard]] ResultCode
    Write(const std::uint8_t* bytes, std::size_t count, std::size_t* outWritten = nullptr);
    bool IsOpen() const { return m_file.IsOpen(); }
    void Close() { m_file.Close(); }

private:
    FileHandle m_file;
    std::uint64_t m_position = 0;
};

// Makes the folder that destPath lies in, with its parents, when it is not there.
[[nodiscard]] ResultCode MakeFolderOf(const std::filesystem::path& destPath);

// Restores one file to a path; an engine's own.
using RestoreFileFunction =
    std::function<ResultCode(const FileRecord& record, const std::filesystem::path& path)>;

// Restores a folder record and everything below it into destPath, breadth first; folders are made as they are met,
// files go through restoreFile. Names are made safe for use as path components. A failed file does not stop the
// others; a cancel stops at once. The last result.
[[nodiscard]] ResultCode RestoreFolderTree(IFileRecoveryParse& engine,
                                           const FileRecord& folder,
                                           const std::filesystem::path& destPath,
                                           std::uint32_t baseDepth,
                                           const RestoreFileFunction& restoreFile);

// Separators in a path, its last character not counted; what baseDepth counts.
std::uint32_t CountSeparators(const std::filesystem::path& path);

// Whether a preview of this name goes to a temporary file: pictures, sounds and clips do.
bool PreviewNeedsFile(std::string_view name);
inline constexpr std::string_view PreviewClipName = "tmp.avi";
inline constexpr std::string_view PreviewPictureName = "tmp.jpg";
// Makes the temporary file of a preview in a folder, of one of these names, removing the one before, and stores its path.
// Only for names that PreviewNeedsFile.
[[nodiscard]] ResultCode OpenPreviewFile(const std::filesystem::path& root,
                                         std::string_view name,
                                         std::filesystem::path& outPath,
                                         OutputFile& outFile);
