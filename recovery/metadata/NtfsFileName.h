// The file name attribute of a FILE record, which begins with the attribute's head.
#pragma once

#include "platform/ByteView.h"

#include <cstdint>
#include <string>

inline constexpr std::size_t FileNameHeadBytes = 90;  // of a file name attribute, up to the name

// The number of the folder that holds the file, without its sequence number.
inline std::uint32_t ParentOfFileName(ByteView attribute)
{
    return attribute.U32(24);
}
// Of a record's later names only these count, and only for Name.
inline bool IsWin32Name(ByteView attribute)
{
    return attribute.U8(89) == 1;
}
// What it tells of the file beside its name; times are FILETIMEs.
struct NtfsFileNameFields
{
    std::uint64_t creationTime = 0;
    std::uint64_t writeTime = 0;
    std::uint64_t accessTime = 0;
    std::uint64_t realSize = 0;  // bytes
};
NtfsFileNameFields ReadFileNameFields(ByteView attribute);
// The name lies in the buffer with all its characters.
bool HasWholeName(ByteView attribute);
std::string NameOfFileName(ByteView attribute);
