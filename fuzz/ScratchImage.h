// An input as an image, and what is asked of an engine that has scanned it.
#pragma once

#include "fuzz/MemorySource.h"
#include "platform/FileHandle.h"
#include "recovery/FileRecoveryParse.h"
#include "recovery/ScanLogDirectory.h"
#include "tests/support/TempFolder.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <filesystem>

// An image in memory with a name: at least as long as a target must be, at most 256 KB. What the engines write lies in one
// folder for the whole process, in memory too where the system has such a place, and is emptied for every input, so that
// none sees what an earlier one left.
class ScratchImage
{
public:
    ScratchImage(const std::uint8_t* data, std::size_t size)
        : m_memory(Sized({data, data + std::min<std::size_t>(size, 256 * 1024)}))
    {
        std::error_code ignored;
        for (const std::filesystem::path& top : {Folder().Path(), DataTop()}) {
            for (const auto& entry : std::filesystem::directory_iterator(top, ignored)) {
                if (entry.path() != Path()) {
                    std::filesystem::remove_all(entry.path(), ignored);
                }
            }
        }
        // A hole: who opens it learns the size from it.
        FileHandle file;
        if (file.OpenOrCreate(Path()) != ResultSuccess ||
            file.Truncate(m_memory.Bytes().size()) != ResultSuccess) {
            std::abort();
        }
    }
    static std::filesystem::path Path() { return Folder() / "scratch.img"; }
    static const TempFolder& Folder()
    {
        static const TempFolder folder;
        return folder;
    }

private:
    static const std::filesystem::path& DataTop()
    {
        static const DataFolder folder;
        return folder.Path();
    }
    static ByteVector Sized(ByteVector bytes)
    {
        bytes.resize(std::max<std::size_t>(bytes.size(), 16384));
        return bytes;
    }

    MemoryBytes m_memory;
};

// Stops a copy that a forged size makes endless.
inline ResultCode
StopLongCopies(void* context, std::int32_t, std::int32_t, ResultCode, const std::filesystem::path&)
{
    return ++*static_cast<int*>(context) > 50 ? ResultCancelled : ResultSuccess;
}
inline ResultCode StopLongPreviews(void* context, std::int32_t, ResultCode)
{
    return ++*static_cast<int*>(context) > 50 ? ResultCancelled : ResultSuccess;
}

// Searches, lists, and restores and previews the first few files.
inline void AskAndRestore(IFileRecoveryParse& engine)
{
    FileRecordList found;
    (void)engine.SearchRecords(AllFilesPattern, found);
    FileRecordList children;
    (void)engine.ListChildren(nullptr, 0, children);
    std::uint32_t count = 0;
    (void)engine.CountChildren(nullptr, 0, count);
    for (std::size_t i = 0; i < std::min<std::size_t>(found.size(), 8); ++i) {
        std::string path;
        (void)engine.GetRecordPath(&found[i], path);
        int calls = 0;
        engine.SetCallbacks(nullptr, &StopLongCopies, &calls, 100);
        (void)engine.RestoreRecord(&found[i], ScratchImage::Folder() / "restored", 0);
        std::array<std::uint8_t, 512> buffer = {};
        std::uint32_t size = buffer.size();
        std::filesystem::path temporary;
        (void)engine.ReadRecordData(&found[i], temporary, buffer.data(), size, &StopLongPreviews,
                                    &calls);
    }
}
