#include "platform/MountTable.h"

#include "platform/FileHandle.h"
#include "platform/SystemFiles.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <sstream>
#include <string_view>
#include <sys/statvfs.h>
#include <unistd.h>
#include <utility>

namespace {

// The kernel writes blanks and backslashes as three octal digits.
std::string Unescape(std::string_view text)
{
    const auto digit = [&text](std::size_t at) {
        return at < text.size() && text[at] >= '0' && text[at] <= '7' ? text[at] - '0' : -1;
    };
    std::string out;
    for (std::size_t at = 0; at < text.size(); ++at) {
        const bool escaped =
            text[at] == '\\' && digit(at + 1) >= 0 && digit(at + 2) >= 0 && digit(at + 3) >= 0;
        if (!escaped) {
            out.push_back(text[at]);
            continue;
        }
        out.push_back(static_cast<char>(digit(at + 1) * 64 + digit(at + 2) * 8 + digit(at + 3)));
        at += 3;
    }
    return out;
}

// One blank stands between two fields, and a field may be empty. All other white space is a part of a name.
std::vector<std::string> FieldsOf(std::string_view text)
{
    std::vector<std::string> fields;
    while (true) {
        const std::size_t blank = std::min(text.find(' '), text.size());
        fields.emplace_back(text.substr(0, blank));
        if (blank == text.size()) {
            return fields;
        }
        text.remove_prefix(blank + 1);
    }
}

std::uint64_t NumberOf(std::string_view text)
{
    std::uint64_t number = 0;
    (void)std::from_chars(text.data(), text.data() + text.size(), number);  // else it stays 0
    return number;
}

const MountEntry* MountWithId(const std::vector<MountEntry>& mounts, std::uint64_t id)
{
    const auto found = std::find_if(mounts.begin(), mounts.end(),
                                    [id](const MountEntry& mount) { return mount.id == id; });
    return found != mounts.end() ? &*found : nullptr;
}

// The folder itself, or one somewhere above it.
bool IsAtOrAbove(std::string_view folder, std::string_view path)
{
    return path.starts_with(folder) &&
           (path.size() == folder.size() || folder.ends_with('/') || path[folder.size()] == '/');
}

}  // namespace

std::vector<MountEntry> ReadMountTable(const std::filesystem::path& path)
{
    std::vector<MountEntry> mounts;
    for (const std::string& line : LinesOf(path)) {
        // Optional fields of any number stand before the hyphen.
        const std::string_view text = line;
        const std::size_t hyphen = text.find(" - ");
        if (hyphen == text.npos) {
            continue;
        }
        // Before it: number, parent's number, device, folder inside of it, mount point. After it: type, source, options.
        const std::vector<std::string> front = FieldsOf(text.substr(0, hyphen));
        const std::vector<std::string> back = FieldsOf(text.substr(hyphen + 3));
        if (front.size() < 5 || front[4].empty() || back[0].empty()) {
            continue;
        }
        MountEntry mount;
        mount.id = NumberOf(front[0]);
        mount.parentId = NumberOf(front[1]);
        mount.deviceNumber = front[2];
        mount.mountPoint = Unescape(front[4]);
        mount.type = back[0];
        mount.source = back.size() > 1 ? Unescape(back[1]) : std::string();
        mount.superOptions = back.size() > 2 ? back[2] : std::string();
        mounts.push_back(std::move(mount));
    }
    return mounts;
}

bool IsCovered(const MountEntry& mount, const std::vector<MountEntry>& mounts)
{
    // The way from the mount up to the root; a table that leads in a ring has no more steps than lines.
    std::vector<std::uint64_t> way;
    const MountEntry* step = &mount;
    while (step != nullptr && way.size() < mounts.size()) {
        way.push_back(step->id);
        step = step->parentId != step->id ? MountWithId(mounts, step->parentId) : nullptr;
    }
    const auto isOnWay = [&way](std::uint64_t id) {
        return std::find(way.begin(), way.end(), id) != way.end();
    };
    return std::any_of(mounts.begin(), mounts.end(), [&](const MountEntry& other) {
        return !isOnWay(other.id) && isOnWay(other.parentId) &&
               IsAtOrAbove(other.mountPoint, mount.mountPoint);
    });
}

std::string MountedFileSystemName(const MountEntry& mount)
{
    constexpr std::array<std::pair<std::string_view, std::string_view>, 7> Names = {{
        {"vfat", "FAT32"},
        {"msdos", "FAT"},
        {"exfat", "exFAT"},
        {"fuse.exfat", "exFAT"},
        {"ntfs", "NTFS"},
        {"ntfs3", "NTFS"},
        {"fuseblk", "NTFS"},
    }};
    for (const auto& [type, name] : Names) {
        if (type == mount.type) {
            return std::string(name);
        }
    }
    return mount.type;
}

std::string MountOption(const MountEntry& mount, std::string_view name)
{
    std::istringstream options(mount.superOptions);
    for (std::string option; std::getline(options, option, ',');) {
        const std::size_t equals = option.find('=');
        if (equals == name.size() && option.starts_with(name)) {
            return Unescape(option.substr(equals + 1));
        }
    }
    return {};
}

ResultCode FileSystemSpace(const std::filesystem::path& path,
                           std::uint64_t* outTotalBytes,
                           std::uint64_t* outFreeBytes)
{
    struct statvfs status = {};
    while (::statvfs(path.c_str(), &status) != 0) {
        if (errno != EINTR) {
            return ErrorFromErrno(errno, FileOperation::Query);
        }
    }
    *outTotalBytes = std::uint64_t{status.f_blocks} * status.f_frsize;
    *outFreeBytes = std::uint64_t{status.f_bavail} * status.f_frsize;
    return ResultSuccess;
}

ResultCode SyncFileSystem(const std::filesystem::path& path)
{
    FileHandle handle;
    if (const ResultCode result = handle.OpenForReading(path)) {
        return result;
    }
    return ::syncfs(handle.Descriptor()) == 0 ? ResultSuccess
                                              : ErrorFromErrno(errno, FileOperation::Write);
}
