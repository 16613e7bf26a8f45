// Stands in for the decoder, confined as that is, and does what somebody would who has taken it over: told by the first byte of
// the "picture".
#include "decoder/DecoderProtocol.h"
#include "platform/Confinement.h"
#include "platform/MessageChannel.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sched.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

constexpr std::uint64_t MostMemory = std::uint64_t{64} << 20;

std::uint32_t ErrorOf(long result)
{
    return result < 0 ? static_cast<std::uint32_t>(errno) : 0;
}

// The error of each attempt, as a line of pixels.
DecoderAnswer TryAll(const FileHandle& memory)
{
    const char* const none[] = {nullptr};
    constexpr std::size_t Page = 4096;
    const std::array<std::uint32_t, 10> errors = {
        ErrorOf(::open("/etc/passwd", O_RDONLY)),
        ErrorOf(::open("stand-in.txt", O_WRONLY | O_CREAT, 0600)),
        ErrorOf(::socket(AF_INET, SOCK_STREAM, 0)),
        ErrorOf(::socket(AF_INET6, SOCK_DGRAM, 0)),
        ErrorOf(::socket(AF_UNIX, SOCK_STREAM, 0)),
        ErrorOf(::syscall(SYS_clone, SIGCHLD, 0, 0, 0, 0)),
        ErrorOf(::syscall(SYS_execve, "/bin/true", none, none)),
        ErrorOf(::kill(::getppid(), 0)),
        ErrorOf(::mmap(nullptr, Page, PROT_READ | PROT_EXEC, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0) ==
                        MAP_FAILED
                    ? -1
                    : 0),
        ErrorOf(::ftruncate(memory.Descriptor(), std::int64_t{1} << 40))};
    (void)memory.WriteAt(0, errors.data(), sizeof errors);
    return {DecoderMark, 0, static_cast<std::int32_t>(errors.size()), 1};
}

void EatMemory()
{
    for (std::size_t i = 0; i < 16; ++i) {
        constexpr std::size_t Piece = 16 << 20;
        void* const piece = std::malloc(Piece);
        if (piece == nullptr) {
            std::abort();  // as programs do
        }
        std::memset(piece, 1, Piece);
    }
}

DecoderAnswer Behave(char how, const FileHandle& memory)
{
    switch (how) {
    case 'C':
        std::abort();
    case 'E':
        std::_Exit(0);
    case 'H':
        for (;;) {
            ::pause();  // refused, so that it is busy too
        }
    case 'M':
        EatMemory();
        break;
    case 'L':
        return {DecoderMark, 0, MostPictureSide + 1, 1};
    case 'N':
        return {DecoderMark, 0, -1, 4};
    case 'O':
        return {DecoderMark ^ 1, 0, 5, 4};
    case 'T':
        return TryAll(memory);
    default:
        break;
    }
    return {DecoderMark, 0, 5, 4};
}

}  // namespace

int main()
{
    CloseInheritedDescriptors();
    const FileHandle channel(STDIN_FILENO);
    const DecoderAnswer ready;
    if (ConfineToWhatIsOpen(MostMemory) != ResultSuccess ||
        SendMessage(channel, &ready, sizeof ready) != ResultSuccess) {
        return EXIT_FAILURE;
    }
    while (WaitForMessage(channel, -1) == MessageWait::Came) {
        DecoderRequest request;
        const ReceivedMessage message = ReceiveMessage(channel, &request, sizeof request);
        if (message.descriptors.size() != 2) {
            break;
        }
        char how = 0;
        std::size_t read = 0;
        (void)message.descriptors[0].ReadAt(0, &how, 1, &read);
        DecoderAnswer answer = Behave(how, message.descriptors[1]);
        answer.number = request.number;
        (void)SendMessage(channel, &answer, sizeof answer);
    }
    std::_Exit(EXIT_SUCCESS);
}
