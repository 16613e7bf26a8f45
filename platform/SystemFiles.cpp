#include "platform/SystemFiles.h"

#include <cerrno>
#include <charconv>
#include <fcntl.h>
#include <fstream>
#include <sys/stat.h>
#include <sys/sysmacros.h>

namespace {

// More lines than any table of the system has.
constexpr std::size_t LargestLineCount = 65536;

std::string NumberText(std::uint32_t majorNumber, std::uint32_t minorNumber)
{
    return std::to_string(majorNumber) + ":" + std::to_string(minorNumber);
}

std::filesystem::path& SystemRoot()
{
    static std::filesystem::path root;
    return root;
}

}  // namespace

std::filesystem::path SystemPath(std::string_view absolutePath)
{
    return SystemRoot().empty()
               ? std::filesystem::path(absolutePath)
               : SystemRoot() / std::filesystem::path(absolutePath).relative_path();
}

void SetSystemRoot(const std::filesystem::path& root)
{
    SystemRoot() = root;
}

std::string FirstLineOf(const std::filesystem::path& path)
{
    std::ifstream stream(path);
    std::string line;
    std::getline(stream, line);
    return line;
}

std::optional<std::uint64_t> NumberIn(const std::filesystem::path& path)
{
    const std::string line = FirstLineOf(path);
    std::uint64_t number = 0;
    const auto [end, error] = std::from_chars(line.data(), line.data() + line.size(), number);
    return error == std::errc() ? std::optional(number) : std::nullopt;
}

std::vector<std::string> LinesOf(const std::filesystem::path& path)
{
    std::vector<std::string> lines;
    std::ifstream stream(path);
    for (std::string line; lines.size() < LargestLineCount && std::getline(stream, line);) {
        lines.push_back(line);
    }
    return lines;
}

ResultCode IdentifyPath(const std::filesystem::path& path, FileIdentity& outIdentity)
{
    struct statx status = {};
    if (::statx(AT_FDCWD, path.c_str(), 0, STATX_TYPE | STATX_INO | STATX_MNT_ID, &status) != 0) {
        return ErrorFromErrno(errno, FileOperation::Query);
    }
    outIdentity = {};
    outIdentity.deviceNumber = NumberText(status.stx_dev_major, status.stx_dev_minor);
    outIdentity.inode = status.stx_ino;
    outIdentity.isRegularFile = S_ISREG(status.stx_mode);
    if (S_ISBLK(status.stx_mode)) {
        outIdentity.ownDeviceNumber = NumberText(status.stx_rdev_major, status.stx_rdev_minor);
    }
    if ((status.stx_mask & STATX_MNT_ID) != 0) {
        outIdentity.mountId = status.stx_mnt_id;
    }
    return ResultSuccess;
}

std::string DeviceNumberOf(const std::filesystem::path& node)
{
    FileIdentity identity;
    return IdentifyPath(node, identity) == ResultSuccess ? identity.ownDeviceNumber : std::string();
}
