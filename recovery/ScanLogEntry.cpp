#include "recovery/ScanLogEntry.h"

#include "platform/Text.h"

#include <cstring>

namespace {

// The field is not aligned for its units, so it is moved as bytes.
std::filesystem::path PathIn(const ScanLogEntry& entry, std::size_t offset)
{
    std::u16string text(ScanLogEntry::PathUnits, u'\0');
    std::array<std::uint8_t, sizeof(ScanLogEntry)> bytes = {};
    std::memcpy(bytes.data(), &entry, sizeof entry);
    std::memcpy(text.data(), bytes.data() + offset, text.size() * sizeof(char16_t));
    return Utf16ToUtf8(UntilZero(text));
}

bool PutPath(ScanLogEntry& entry, std::size_t offset, const std::filesystem::path& path)
{
    std::u16string text = Utf8ToUtf16(path.string());
    if (text.size() >= ScanLogEntry::PathUnits || Utf16ToUtf8(text) != path.string()) {
        return false;
    }
    text.resize(ScanLogEntry::PathUnits, u'\0');
    std::array<std::uint8_t, sizeof(ScanLogEntry)> bytes = {};
    std::memcpy(bytes.data(), &entry, sizeof entry);
    std::memcpy(bytes.data() + offset, text.data(), text.size() * sizeof(char16_t));
    std::memcpy(&entry, bytes.data(), sizeof entry);
    return true;
}

}  // namespace

std::filesystem::path ImagePathOf(const ScanLogEntry& entry)
{
    return PathIn(entry, offsetof(ScanLogEntry, imagePath));
}

std::filesystem::path LogFolderOf(const ScanLogEntry& entry)
{
    return PathIn(entry, offsetof(ScanLogEntry, logFolder));
}

bool IsOfSource(const ScanLogEntry& entry, const ScanIdentity& target)
{
    return target.imagePath.empty() ? entry.diskNumber == target.diskNumber
                                    : ImagePathOf(entry) == target.imagePath;
}

bool SetImagePath(ScanLogEntry& entry, const std::filesystem::path& path)
{
    return PutPath(entry, offsetof(ScanLogEntry, imagePath), path);
}

bool SetLogFolder(ScanLogEntry& entry, const std::filesystem::path& folder)
{
    return PutPath(entry, offsetof(ScanLogEntry, logFolder), folder);
}
