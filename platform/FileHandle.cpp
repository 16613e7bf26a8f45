#include "platform/FileHandle.h"

#include "platform/FileTime.h"

#include <cerrno>
#include <fcntl.h>
#include <linux/fs.h>
#include <string>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace {

constexpr mode_t PrivateFile = S_IRUSR | S_IWUSR;

// A missing file and a missing folder on the way to it are two different sentences to the user.
ResultCode OpenError(int errorNumber, const std::filesystem::path& path)
{
    std::error_code ignored;
    if (errorNumber == ENOENT && path.has_parent_path() &&
        !std::filesystem::is_directory(path.parent_path(), ignored)) {
        return ResultPathNotFound;
    }
    return ErrorFromErrno(errorNumber, FileOperation::Open);
}

int OpenRetrying(const std::filesystem::path& path, int flags)
{
    int descriptor = -1;
    do {
        descriptor = ::open(path.c_str(), flags | O_CLOEXEC, PrivateFile);
    } while (descriptor < 0 && errno == EINTR);
    return descriptor;
}

mode_t ModeOf(int descriptor)
{
    struct stat status = {};
    return ::fstat(descriptor, &status) == 0 ? status.st_mode : 0;
}

}  // namespace

FileHandle::FileHandle(FileHandle&& other) noexcept
    : m_descriptor(std::exchange(other.m_descriptor, -1))
{
}

FileHandle& FileHandle::operator=(FileHandle&& other) noexcept
{
    if (this != &other) {
        Close();
        m_descriptor = std::exchange(other.m_descriptor, -1);
    }
    return *this;
}

FileHandle::~FileHandle()
{
    Close();
}

void FileHandle::Close()
{
    if (m_descriptor >= 0) {
        ::close(m_descriptor);
        m_descriptor = -1;
    }
}

ResultCode FileHandle::OpenForReading(const std::filesystem::path& path)
{
    // Without O_NONBLOCK the opening of a pipe would wait for a writer for ever.
    const int descriptor = OpenRetrying(path, O_RDONLY | O_NONBLOCK);
    if (descriptor < 0) {
        return OpenError(errno, path);
    }
    *this = FileHandle(descriptor);
    return ResultSuccess;
}

ResultCode FileHandle::OpenOrCreate(const std::filesystem::path& path)
{
    // Asked before the opening too: a device that was only opened for writing is taken for changed by the system.
    struct stat status = {};
    if (::lstat(path.c_str(), &status) == 0 && !S_ISREG(status.st_mode)) {
        return ResultAccessDenied;
    }
    FileHandle opened(OpenRetrying(path, O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK));
    if (!opened.IsOpen()) {
        return OpenError(errno, path);
    }
    if (!opened.IsRegularFile()) {
        return ResultAccessDenied;
    }
    *this = std::move(opened);
    return ResultSuccess;
}

ResultCode FileHandle::OpenDirect(FileHandle& outHandle) const
{
    if (!IsBlockDevice()) {
        return ResultNotSupported;
    }
    const std::string self = "/proc/self/fd/" + std::to_string(m_descriptor);
    FileHandle opened(OpenRetrying(self, O_RDONLY | O_DIRECT));
    if (!opened.IsOpen()) {
        return ErrorFromErrno(errno, FileOperation::Open);
    }
    outHandle = std::move(opened);
    return ResultSuccess;
}

bool FileHandle::SetDirect(bool direct) const
{
    const int flags = IsBlockDevice() ? ::fcntl(m_descriptor, F_GETFL) : -1;
    return flags >= 0 &&
           ::fcntl(m_descriptor, F_SETFL, direct ? flags | O_DIRECT : flags & ~O_DIRECT) == 0;
}

ResultCode FileHandle::Duplicate(FileHandle& outHandle) const
{
    const int descriptor = ::fcntl(m_descriptor, F_DUPFD_CLOEXEC, 0);
    if (descriptor < 0) {
        return ErrorFromErrno(errno, FileOperation::Open);
    }
    outHandle = FileHandle(descriptor);
    return ResultSuccess;
}

ResultCode FileHandle::ReadAt(std::uint64_t position,
                              void* buffer,
                              std::size_t count,
                              std::size_t* outRead) const
{
    *outRead = 0;
    while (*outRead < count) {
        const ssize_t got = ::pread(m_descriptor, static_cast<std::uint8_t*>(buffer) + *outRead,
                                    count - *outRead, static_cast<off_t>(position + *outRead));
        if (got < 0 && errno == EINTR) {
            continue;
        }
        if (got < 0) {
            return ErrorFromErrno(errno, FileOperation::Read);
        }
        if (got == 0) {
            break;
        }
        *outRead += static_cast<std::size_t>(got);
    }
    return ResultSuccess;
}

ResultCode FileHandle::WriteAt(std::uint64_t position,
                               const void* bytes,
                               std::size_t count,
                               std::size_t* outWritten) const
{
    std::size_t done = 0;
    ResultCode result = ResultSuccess;
    while (done < count) {
        const ssize_t put = ::pwrite(m_descriptor, static_cast<const std::uint8_t*>(bytes) + done,
                                     count - done, static_cast<off_t>(position + done));
        if (put < 0 && errno == EINTR) {
            continue;
        }
        if (put <= 0) {
            result = put < 0 ? ErrorFromErrno(errno, FileOperation::Write) : ResultWriteFault;
            break;
        }
        done += static_cast<std::size_t>(put);
    }
    if (outWritten != nullptr) {
        *outWritten = done;
    }
    return result;
}

ResultCode FileHandle::Truncate(std::uint64_t sizeBytes) const
{
    return ::ftruncate(m_descriptor, static_cast<off_t>(sizeBytes)) == 0
               ? ResultSuccess
               : ErrorFromErrno(errno, FileOperation::Write);
}

ResultCode FileHandle::SyncData() const
{
    return ::fdatasync(m_descriptor) == 0 ? ResultSuccess
                                          : ErrorFromErrno(errno, FileOperation::Write);
}

ResultCode FileHandle::Size(std::uint64_t* outBytes) const
{
    struct stat status = {};
    if (::fstat(m_descriptor, &status) != 0) {
        return ErrorFromErrno(errno, FileOperation::Query);
    }
    if (S_ISBLK(status.st_mode)) {
        return ::ioctl(m_descriptor, BLKGETSIZE64, outBytes) == 0
                   ? ResultSuccess
                   : ErrorFromErrno(errno, FileOperation::Query);
    }
    *outBytes = static_cast<std::uint64_t>(status.st_size);
    return ResultSuccess;
}

ResultCode FileHandle::WriteTime(std::uint64_t* outFileTime) const
{
    struct stat status = {};
    if (::fstat(m_descriptor, &status) != 0) {
        return ErrorFromErrno(errno, FileOperation::Query);
    }
    *outFileTime = FileTimeFromUnix(status.st_mtim.tv_sec, status.st_mtim.tv_nsec);
    return ResultSuccess;
}

std::uint32_t FileHandle::DeviceSectorSize() const
{
    int size = 0;
    return ::ioctl(m_descriptor, BLKSSZGET, &size) == 0 && size > 0
               ? static_cast<std::uint32_t>(size)
               : 0;
}

bool FileHandle::IsBlockDevice() const
{
    return S_ISBLK(ModeOf(m_descriptor));
}

bool FileHandle::IsRegularFile() const
{
    return S_ISREG(ModeOf(m_descriptor));
}

bool FileHandle::TryLock() const
{
    return ::flock(m_descriptor, LOCK_EX | LOCK_NB) == 0;
}

void FileHandle::StopReadingAhead() const
{
    (void)::posix_fadvise(m_descriptor, 0, 0, POSIX_FADV_RANDOM);  // a hint
}

void FileHandle::DropCache() const
{
    (void)::posix_fadvise(m_descriptor, 0, 0, POSIX_FADV_DONTNEED);  // a hint
}

void FileHandle::FlushDevice() const
{
    if (IsBlockDevice()) {
        (void)::ioctl(m_descriptor, BLKFLSBUF,
                      0);  // without the right to it, dropping the cache has to do
    }
}

ResultCode WriteWholeFile(const std::filesystem::path& path, const void* bytes, std::size_t count)
{
    FileHandle file;
    if (const ResultCode result = file.OpenOrCreate(path)) {
        return result;
    }
    if (const ResultCode result = file.Truncate(0)) {
        return result;
    }
    return file.WriteAt(0, bytes, count);
}
