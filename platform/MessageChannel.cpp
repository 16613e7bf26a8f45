#include "platform/MessageChannel.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <poll.h>
#include <sys/socket.h>
#include <sys/uio.h>

namespace {

// More than any message of ours has, so that surplus ones are seen and closed; the system closes any beyond.
constexpr std::size_t MostDescriptors = 8;

struct ControlRoom
{
    alignas(
        cmsghdr) std::array<unsigned char, CMSG_SPACE(MostDescriptors * sizeof(int))> bytes = {};
};

void TakeDescriptors(msghdr& message, std::vector<FileHandle>& outDescriptors)
{
    for (cmsghdr* header = CMSG_FIRSTHDR(&message); header != nullptr;
         header = CMSG_NXTHDR(&message, header)) {
        if (header->cmsg_level != SOL_SOCKET || header->cmsg_type != SCM_RIGHTS) {
            continue;
        }
        const std::size_t held = (header->cmsg_len - CMSG_LEN(0)) / sizeof(int);
        for (std::size_t index = 0; index < held; ++index) {
            int descriptor = -1;
            std::memcpy(&descriptor, CMSG_DATA(header) + index * sizeof descriptor,
                        sizeof descriptor);
            outDescriptors.emplace_back(descriptor);
        }
    }
}

}  // namespace

ResultCode MakeChannel(FileHandle& outOurs, FileHandle& outTheirs)
{
    std::array<int, 2> ends = {};
    if (::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends.data()) != 0) {
        return ErrorFromErrno(errno, FileOperation::Open);
    }
    outOurs = FileHandle(ends[0]);
    outTheirs = FileHandle(ends[1]);
    return ResultSuccess;
}

ResultCode SendMessage(const FileHandle& channel,
                       const void* bytes,
                       std::size_t count,
                       std::initializer_list<int> descriptors)
{
    // The call takes what is only read through a pointer to what is not.
    iovec data = {const_cast<void*>(bytes), count};
    ControlRoom control;
    msghdr message = {};
    message.msg_iov = &data;
    message.msg_iovlen = 1;
    if (descriptors.size() != 0) {
        const std::size_t held = std::min(descriptors.size(), MostDescriptors) * sizeof(int);
        message.msg_control = control.bytes.data();
        message.msg_controllen = CMSG_SPACE(held);
        cmsghdr* const header = CMSG_FIRSTHDR(&message);
        header->cmsg_level = SOL_SOCKET;
        header->cmsg_type = SCM_RIGHTS;
        header->cmsg_len = CMSG_LEN(held);
        std::memcpy(CMSG_DATA(header), descriptors.begin(), held);
    }
    ssize_t sent = 0;
    do {
        sent = ::sendmsg(channel.Descriptor(), &message, MSG_DONTWAIT | MSG_NOSIGNAL);
    } while (sent < 0 && errno == EINTR);
    return sent < 0 ? ErrorFromErrno(errno, FileOperation::Write) : ResultSuccess;
}

MessageWait WaitForMessage(const FileHandle& channel, int milliseconds)
{
    pollfd state = {channel.Descriptor(), POLLIN, 0};
    int ready = 0;
    do {
        ready = ::poll(&state, 1, milliseconds);
    } while (ready < 0 && errno == EINTR);
    if (ready < 0) {
        return MessageWait::Failed;
    }
    return ready > 0 ? MessageWait::Came : MessageWait::TooLate;
}

ReceivedMessage ReceiveMessage(const FileHandle& channel, void* buffer, std::size_t roomBytes)
{
    iovec data = {buffer, roomBytes};
    ControlRoom control;
    msghdr message = {};
    message.msg_iov = &data;
    message.msg_iovlen = 1;
    message.msg_control = control.bytes.data();
    message.msg_controllen = control.bytes.size();
    ssize_t got = 0;
    do {
        got = ::recvmsg(channel.Descriptor(), &message, MSG_CMSG_CLOEXEC | MSG_DONTWAIT);
    } while (got < 0 && errno == EINTR);
    ReceivedMessage received;
    if (got < 0) {
        return received;
    }
    // An empty message may hold descriptors all the same.
    TakeDescriptors(message, received.descriptors);
    received.bytes = static_cast<std::size_t>(got);
    received.isCut = (message.msg_flags & (MSG_TRUNC | MSG_CTRUNC)) != 0;
    return received;
}
