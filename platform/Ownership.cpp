#include "platform/Ownership.h"

#include "platform/FileHandle.h"
#include "platform/SystemFiles.h"

#include <charconv>
#include <cstdlib>
#include <fcntl.h>
#include <optional>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr mode_t FileMode = 0666;
constexpr mode_t FolderMode = 0777;

struct UserIds
{
    uid_t user = 0;
    gid_t group = 0;
};

std::optional<std::uint32_t> NumberInEnvironment(const char* name)
{
    const char* const text = std::getenv(name);  // NOLINT(concurrency-mt-unsafe): never written
    if (text == nullptr) {
        return std::nullopt;
    }
    const std::string_view digits = text;
    std::uint32_t number = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    return error == std::errc() && end == digits.data() + digits.size() ? std::optional(number)
                                                                        : std::nullopt;
}

// Who called sudo.
std::optional<UserIds> SudoUser()
{
    const auto user = NumberInEnvironment("SUDO_UID");
    const auto group = NumberInEnvironment("SUDO_GID");
    if (::geteuid() != 0 || !user || !group) {
        return std::nullopt;
    }
    return UserIds{*user, *group};
}

// Asking the system for it changes it for a moment, so its own table is read.
mode_t ReadUmask()
{
    constexpr std::string_view Key = "Umask:";
    for (const std::string& line : LinesOf("/proc/self/status")) {
        if (line.starts_with(Key)) {
            return static_cast<mode_t>(std::strtoul(line.c_str() + Key.size(), nullptr, 8)) & 0777;
        }
    }
    return 0077;
}

mode_t Umask()
{
    static const mode_t mask = ReadUmask();
    return mask;
}

}  // namespace

void HandToUser(const std::filesystem::path& path)
{
    const FileHandle file(::open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    struct stat status = {};
    if (!file.IsOpen() || ::fstat(file.Descriptor(), &status) != 0 ||
        status.st_uid != ::geteuid()) {
        return;
    }
    const bool isFolder = S_ISDIR(status.st_mode);
    if (!isFolder && (!S_ISREG(status.st_mode) || status.st_nlink != 1)) {
        return;
    }
    (void)::fchmod(file.Descriptor(), (isFolder ? FolderMode : FileMode) & ~Umask());
    const std::optional<UserIds> user = SudoUser();
    if (user && ::fchown(file.Descriptor(), user->user, user->group) != 0) {
        return;  // a file system without owners
    }
}
