// Reads a zip archive that lies in memory: its central directory, stored and deflated members. Nothing in it is trusted;
// what is encrypted, split, of the 64-bit kind or larger than a skin can be is refused.
#pragma once

#include "platform/ByteView.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

class ZipArchive
{
public:
    // Bounds that a skin stays far below; what exceeds them was made to do harm.
    static constexpr std::size_t MaxMembers = 4096;
    static constexpr std::size_t MaxMemberBytes = std::size_t{32} << 20;

    // Nothing when the bytes are no archive. They must stay as long as the archive is used.
    static std::optional<ZipArchive> Open(ByteView bytes);

    // The names of all members, folders left out, in order.
    std::vector<std::string> Names() const;
    // The content of a member; nothing when it is missing, damaged or too large.
    std::optional<std::vector<std::uint8_t>> Read(std::string_view name) const;

private:
    struct Member
    {
        std::uint16_t method = 0;
        std::uint32_t checksum = 0;
        std::uint32_t packedBytes = 0;
        std::uint32_t plainBytes = 0;
        std::uint32_t headerOffset = 0;
    };

    bool ReadDirectory();

    ByteView m_bytes;
    std::map<std::string, Member, std::less<>> m_members;
};
