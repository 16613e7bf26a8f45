#include "platform/Folders.h"

#include "platform/InstallPaths.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr mode_t OpenToAll = 0777;
constexpr mode_t PrivateToUser = 0700;

std::filesystem::path& ChosenDataFolder()
{
    static std::filesystem::path folder;
    return folder;
}

ResultCode MakeWithMode(const std::filesystem::path& path, mode_t mode)
{
    return ::mkdir(path.c_str(), mode) == 0 ? ResultSuccess
                                            : ErrorFromErrno(errno, FileOperation::MakeFolder);
}

ResultCode MakeChain(const std::filesystem::path& path, mode_t mode)
{
    if (PathExists(path)) {
        return IsFolder(path) ? ResultAlreadyExists : ResultFileExists;
    }
    std::filesystem::path partial;
    ResultCode result = ResultSuccess;
    for (const std::filesystem::path& component : path) {
        partial /= component;
        if (component.empty() || IsFolder(partial)) {
            continue;
        }
        result = MakeWithMode(partial, mode);
        if (result != ResultSuccess && result != ResultAlreadyExists) {
            return result;
        }
    }
    return result;
}

ResultCode FromErrorCode(const std::error_code& error, FileOperation operation)
{
    return error ? ErrorFromErrno(error.value(), operation) : ResultSuccess;
}

const char* EnvironmentValue(const char* name)
{
    const char* value =
        std::getenv(name);  // NOLINT(concurrency-mt-unsafe): read before threads start
    return value != nullptr && *value != '\0' ? value : nullptr;
}

ResultCode RenameFailed()
{
    return ErrorFromErrno(errno, FileOperation::Rename);
}

// For file systems that know neither a rename that spares nor second names: an empty file of ours holds the name, and is
// the one that is replaced.
ResultCode RenameOverReservation(const std::filesystem::path& from, const std::filesystem::path& to)
{
    if (::mknod(to.c_str(), S_IFREG | S_IRUSR | S_IWUSR, 0) != 0) {
        return RenameFailed();
    }
    if (::rename(from.c_str(), to.c_str()) == 0) {
        return ResultSuccess;
    }
    const ResultCode result = RenameFailed();
    ::unlink(to.c_str());
    return result;
}

// The folder that a variable names, else one below the user's home.
std::filesystem::path UserFolder(const char* variable, const char* belowHome)
{
    // A relative path in such a variable is to be ignored.
    if (const char* named = EnvironmentValue(variable); named != nullptr && *named == '/') {
        return named;
    }
    if (const char* home = EnvironmentValue("HOME")) {
        return std::filesystem::path(home) / belowHome;
    }
    const passwd* user = ::getpwuid(::geteuid());  // NOLINT(concurrency-mt-unsafe): as above
    return std::filesystem::path(user != nullptr ? user->pw_dir : "/") / belowHome;
}

}  // namespace

ResultCode MakeFolderWithParents(const std::filesystem::path& path)
{
    return MakeChain(path, OpenToAll);
}

ResultCode MakePrivateFolderWithParents(const std::filesystem::path& path)
{
    return MakeChain(path, PrivateToUser);
}

ResultCode MakeFolder(const std::filesystem::path& path)
{
    return MakeWithMode(path, OpenToAll);
}

bool FolderIsThere(ResultCode code)
{
    return code == ResultSuccess || code == ResultFileExists || code == ResultAlreadyExists;
}

bool PathExists(const std::filesystem::path& path)
{
    struct stat status = {};
    return ::lstat(path.c_str(), &status) == 0;
}

bool IsFolder(const std::filesystem::path& path)
{
    std::error_code ignored;
    return std::filesystem::is_directory(path, ignored);
}

std::filesystem::path NearestExisting(const std::filesystem::path& path)
{
    std::error_code ignored;
    std::filesystem::path nearest = std::filesystem::absolute(path, ignored).lexically_normal();
    while (!PathExists(nearest) && nearest.has_relative_path()) {
        nearest = nearest.parent_path();
    }
    return nearest;
}

bool IsRealFolder(const std::filesystem::path& path)
{
    struct stat status = {};
    return ::lstat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

bool IsWritableFolder(const std::filesystem::path& path)
{
    return IsFolder(path) && ::access(path.c_str(), W_OK | X_OK) == 0;
}

ResultCode RemoveFile(const std::filesystem::path& path)
{
    return ::unlink(path.c_str()) == 0 ? ResultSuccess
                                       : ErrorFromErrno(errno, FileOperation::Remove);
}

ResultCode RemoveTree(const std::filesystem::path& path)
{
    std::error_code error;
    std::filesystem::remove_all(path, error);
    return FromErrorCode(error, FileOperation::Remove);
}

ResultCode RenameFile(const std::filesystem::path& from, const std::filesystem::path& to)
{
    std::error_code error;
    std::filesystem::rename(from, to, error);
    return FromErrorCode(error, FileOperation::Rename);
}

ResultCode RenameWithoutReplacing(const std::filesystem::path& from,
                                  const std::filesystem::path& to)
{
    if (::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) {
        return ResultSuccess;
    }
    if (errno != EINVAL && errno != ENOSYS) {
        return RenameFailed();
    }
    if (::link(from.c_str(), to.c_str()) == 0) {
        ::unlink(from.c_str());
        return ResultSuccess;
    }
    return errno == EEXIST ? RenameFailed() : RenameOverReservation(from, to);
}

ResultCode ListFolder(const std::filesystem::path& path, std::vector<std::string>& outNames)
{
    std::error_code error;
    std::filesystem::directory_iterator at(path, error);
    for (; !error && at != std::filesystem::directory_iterator(); at.increment(error)) {
        std::string name = at->path().filename().string();
        if (!name.starts_with('.')) {
            outNames.push_back(std::move(name));
        }
    }
    std::sort(outNames.begin(), outNames.end());
    return FromErrorCode(error, FileOperation::Query);
}

std::filesystem::path ApplicationDataFolder()
{
    return ChosenDataFolder().empty() ? UserFolder("XDG_DATA_HOME", ".local/share")
                                      : ChosenDataFolder();
}

void SetApplicationDataFolder(const std::filesystem::path& path)
{
    ChosenDataFolder() = path;
}

std::filesystem::path ConfigurationFolder()
{
    return UserFolder("XDG_CONFIG_HOME", ".config");
}

std::filesystem::path ProgramFolder()
{
    std::error_code ignored;
    return std::filesystem::read_symlink("/proc/self/exe", ignored).parent_path();
}

std::filesystem::path InstalledPath(std::string_view belowPrefix)
{
    const std::filesystem::path folder = ProgramFolder();
    const std::filesystem::path own = folder.parent_path() / belowPrefix;
    return folder.filename() == ProgramsBelowPrefix && PathExists(own)
               ? own
               : std::filesystem::path(UsualPrefix) / belowPrefix;
}
