// Opens a block device that the user may not read: a helper does it with an administrator's consent and hands the open device
// over. The program itself keeps the user's rights.
#pragma once

#include "platform/FileHandle.h"

#include <filesystem>
#include <string>
#include <vector>

struct PrivilegedOpener
{
    PrivilegedOpener();

    // The program that asks for consent and then starts what its arguments say, by its full path.
    std::filesystem::path starter;
    // The helper's full path; by default where it is installed.
    std::filesystem::path helper;
};

// Asks for the node, usually by a dialogue of the system, and waits for as long as the user takes: not for the thread of
// the windows. The handle is for reading alone and is replaced only on success. ResultNotSupported when there is no starter or
// no helper on this system, ResultInvalidParameter for what is no block device (nobody is asked then), ResultAccessDenied when
// consent was refused, ResultGeneralFailure for an answer that makes no sense, else why the device could not be opened.
[[nodiscard]] ResultCode OpenDevicePrivileged(const std::filesystem::path& node,
                                              FileHandle& outHandle,
                                              const PrivilegedOpener& opener = {});
