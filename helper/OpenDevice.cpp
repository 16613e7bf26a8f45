// lumivault-open-device /dev/NODE: opens one block device for reading and hands the descriptor to the program that asked, over
// the UNIX socket that is its standard input. The only part of Lumivault that runs as root; it reads nothing from the device,
// looks at no environment, prints nothing and ends at once.
//
// The answer is one message, an errno value of four bytes. 0 comes with the descriptor, any other value alone.
// Exit status: 0 the descriptor was handed over, 1 refused or not openable and the answer says why, 2 wrong use without an
// answer, 3 the answer could not be sent. 126 and 127 belong to whatever started this program.

#include <cerrno>
#include <climits>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <linux/capability.h>
#include <string_view>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <unistd.h>

namespace {

constexpr int Channel = STDIN_FILENO;

enum ExitStatus
{
    HandedOver = 0,
    Refused = 1,
    WrongUse = 2,
    NoAnswerSent = 3
};

// Of root's powers only the one to read what others may not read is left, where it was there at all.
bool DropPowers()
{
    __user_cap_header_struct header = {_LINUX_CAPABILITY_VERSION_3, 0};
    __user_cap_data_struct powers[_LINUX_CAPABILITY_U32S_3] = {};
    if (::syscall(SYS_capget, &header, powers) != 0) {
        return false;
    }
    powers[0].permitted &= 1U << CAP_DAC_READ_SEARCH;
    powers[0].effective = powers[0].permitted;
    powers[0].inheritable = 0;
    powers[1] = {};
    return ::syscall(SYS_capset, &header, powers) == 0 &&
           ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0;
}

bool IsSocket(int descriptor)
{
    struct stat status = {};
    return ::fstat(descriptor, &status) == 0 && S_ISSOCK(status.st_mode);
}

bool IsBlockDevice(int descriptor)
{
    struct stat status = {};
    return ::fstat(descriptor, &status) == 0 && S_ISBLK(status.st_mode);
}

// 0 with the descriptor, else an errno value. The node is looked at before it is opened, since the mere opening of some
// character devices does something: a tape rewinds.
int OpenNode(const char* asked, int* outDescriptor)
{
    char path[PATH_MAX] = {};
    if (::realpath(asked, path) == nullptr) {
        return errno;
    }
    // No links and no "..": whoever asks resolves them first, as the user that he is.
    if (std::string_view(path) != asked || !std::string_view(path).starts_with("/dev/")) {
        return EACCES;
    }
    struct stat status = {};
    if (::lstat(path, &status) != 0) {
        return errno;
    }
    if (!S_ISBLK(status.st_mode)) {
        return ENOTBLK;
    }
    const int descriptor = ::open(path, O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK);
    if (descriptor < 0) {
        return errno;
    }
    // Asked again of what is open now: the name may have been given to something else in between.
    if (!IsBlockDevice(descriptor)) {
        ::close(descriptor);
        return ENOTBLK;
    }
    *outDescriptor = descriptor;
    return 0;
}

// A descriptor below 0 is not sent.
bool Answer(std::int32_t errorNumber, int descriptor)
{
    iovec data = {&errorNumber, sizeof errorNumber};
    alignas(cmsghdr) unsigned char control[CMSG_SPACE(sizeof descriptor)] = {};
    msghdr message = {};
    message.msg_iov = &data;
    message.msg_iovlen = 1;
    if (descriptor >= 0) {
        message.msg_control = control;
        message.msg_controllen = sizeof control;
        cmsghdr* header = CMSG_FIRSTHDR(&message);
        header->cmsg_level = SOL_SOCKET;
        header->cmsg_type = SCM_RIGHTS;
        header->cmsg_len = CMSG_LEN(sizeof descriptor);
        std::memcpy(CMSG_DATA(header), &descriptor, sizeof descriptor);
    }
    return ::sendmsg(Channel, &message, MSG_NOSIGNAL) == ssize_t{sizeof errorNumber};
}

}  // namespace

int main(int argc, char** argv)
{
    if (argc != 2 || argv[1][0] != '/' || !IsSocket(Channel) || !DropPowers()) {
        return WrongUse;
    }
    int descriptor = -1;
    const int errorNumber = OpenNode(argv[1], &descriptor);
    if (!Answer(errorNumber, descriptor)) {
        return NoAnswerSent;
    }
    return errorNumber == 0 ? HandedOver : Refused;
}
