#include "platform/SharedMemory.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/mman.h>
#include <utility>

namespace {

constexpr char Name[] = "lumivault";
constexpr int SizeSeals = F_SEAL_GROW | F_SEAL_SHRINK;

ResultCode Make(FileHandle& outMemory)
{
    FileHandle memory(::memfd_create(Name, MFD_CLOEXEC | MFD_ALLOW_SEALING));
    if (!memory.IsOpen()) {
        return ErrorFromErrno(errno, FileOperation::Open);
    }
    outMemory = std::move(memory);
    return ResultSuccess;
}

ResultCode Seal(const FileHandle& memory, int seals)
{
    return ::fcntl(memory.Descriptor(), F_ADD_SEALS, seals | F_SEAL_SEAL) == 0
               ? ResultSuccess
               : ErrorFromErrno(errno, FileOperation::Write);
}

}  // namespace

ResultCode MakeSharedMemory(std::uint64_t sizeBytes, FileHandle& outMemory)
{
    FileHandle memory;
    ResultCode result = Make(memory);
    result = result == ResultSuccess ? memory.Truncate(sizeBytes) : result;
    result = result == ResultSuccess ? Seal(memory, SizeSeals) : result;
    if (result == ResultSuccess) {
        outMemory = std::move(memory);
    }
    return result;
}

ResultCode ShareBytes(std::span<const std::uint8_t> bytes, FileHandle& outMemory)
{
    FileHandle memory;
    ResultCode result = Make(memory);
    result = result == ResultSuccess ? memory.WriteAt(0, bytes.data(), bytes.size()) : result;
    result = result == ResultSuccess ? Seal(memory, SizeSeals | F_SEAL_WRITE) : result;
    if (result == ResultSuccess) {
        outMemory = std::move(memory);
    }
    return result;
}
