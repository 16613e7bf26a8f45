#include "platform/MountTable.h"

#include "platform/FileHandle.h"
#include "platform/SystemFiles.h"

#include <array>
#include <cerrno>
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

}  // namespace

std::vector<MountEntry> ReadMountTable(const std::filesystem::path& path)
{
    std::vector<MountEntry> mounts;
    for (const std::string& line : LinesOf(path)) {
        // Optional fields of any number stand in front of the hyphen.
        const std::size_t hyphen = line.find(" - ");
        if (hyphen == std::string::npos) {
            continue;
        }
        MountEntry mount;
        std::uint64_t parent = 0;
        std::string rootInside;
        std::istringstream front(line.substr(0, hyphen));
        std::istringstream back(line.substr(hyphen + 3));
        front >> mount.id >> parent >> mount.deviceNumber >> rootInside >> mount.mountPoint;
        back >> mount.type >> mount.source >> mount.superOptions;
        if (mount.mountPoint.empty() || mount.type.empty()) {
            continue;
        }
        mount.mountPoint = Unescape(mount.mountPoint);
        mount.source = Unescape(mount.source);
        mounts.push_back(std::move(mount));
    }
    return mounts;
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
