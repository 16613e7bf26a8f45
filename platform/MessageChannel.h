// Whole messages between two programs of ours, with descriptors in them.
#pragma once

#include "platform/FileHandle.h"

#include <cstddef>
#include <initializer_list>
#include <vector>

// The two ends of a new channel.
[[nodiscard]] ResultCode MakeChannel(FileHandle& outOurs, FileHandle& outTheirs);

// Does not wait: a channel that is full is an error. The descriptors stay the caller's.
[[nodiscard]] ResultCode SendMessage(const FileHandle& channel,
                                     const void* bytes,
                                     std::size_t count,
                                     std::initializer_list<int> descriptors = {});

enum class MessageWait
{
    Came,  // or the other end was closed
    TooLate,
    Failed
};
// A negative time is without end.
MessageWait WaitForMessage(const FileHandle& channel, int milliseconds);

struct ReceivedMessage
{
    std::size_t bytes = 0;  // 0 where the other end was closed, or nothing has come
    bool isCut = false;     // it held more than there was room for
    // All that came are owned at once, so that none is left open whatever the message says.
    std::vector<FileHandle> descriptors;
};
// Does not wait.
ReceivedMessage ReceiveMessage(const FileHandle& channel, void* buffer, std::size_t roomBytes);
