#include "ui/package/ZipArchive.h"

#include <zlib.h>

#include <algorithm>

namespace {

// "PK" with two more bytes, as numbers.
constexpr std::uint32_t EndMark = 0x06054B50;
constexpr std::uint32_t EntryMark = 0x02014B50;
constexpr std::uint32_t HeaderMark = 0x04034B50;
constexpr std::size_t EndBytes = 22;
constexpr std::size_t EntryBytes = 46;
constexpr std::size_t HeaderBytes = 30;
constexpr std::size_t LongestComment = 65535;
constexpr std::uint16_t MethodStored = 0;
constexpr std::uint16_t MethodDeflated = 8;
constexpr std::uint16_t FlagEncrypted = 1;
// Deflate cannot pack better than this; a member that claims more lies about its size.
constexpr std::uint64_t BestRatio = 1032;

// Where the record at the archive's end begins. Searched from the back, for a comment may follow it.
std::optional<std::size_t> FindEnd(ByteView bytes)
{
    if (bytes.Size() < EndBytes) {
        return std::nullopt;
    }
    const std::size_t last = bytes.Size() - EndBytes;
    const std::size_t first = last - std::min(last, LongestComment);
    for (std::size_t offset = last + 1; offset-- > first;) {
        if (bytes.U32(offset) == EndMark &&
            bytes.Covers(offset + EndBytes, bytes.U16(offset + 20))) {
            return offset;
        }
    }
    return std::nullopt;
}

bool IsPlainName(std::string_view name)
{
    return !name.empty() && name.front() != '/' && name.back() != '/' &&
           name.find('\\') == std::string_view::npos && name.find('\0') == std::string_view::npos;
}

std::optional<std::vector<std::uint8_t>> Inflate(ByteView packed, std::size_t plainBytes)
{
    if (plainBytes > packed.Size() * BestRatio + 64) {
        return std::nullopt;
    }
    // One more than wanted: a stream that goes on past its stated size is damaged.
    std::vector<std::uint8_t> plain(plainBytes + 1);
    std::vector<std::uint8_t> input(packed.Span().begin(), packed.Span().end());
    z_stream stream = {};
    if (inflateInit2(&stream, -MAX_WBITS) != Z_OK) {
        return std::nullopt;
    }
    stream.next_in = input.data();
    stream.avail_in = static_cast<uInt>(input.size());
    stream.next_out = plain.data();
    stream.avail_out = static_cast<uInt>(plain.size());
    const int result = inflate(&stream, Z_FINISH);
    const std::size_t written = stream.total_out;
    inflateEnd(&stream);
    if (result != Z_STREAM_END || written != plainBytes) {
        return std::nullopt;
    }
    plain.resize(plainBytes);
    return plain;
}

}  // namespace

std::optional<ZipArchive> ZipArchive::Open(ByteView bytes)
{
    ZipArchive archive;
    archive.m_bytes = bytes;
    if (!archive.ReadDirectory()) {
        return std::nullopt;
    }
    return archive;
}

bool ZipArchive::ReadDirectory()
{
    const std::optional<std::size_t> end = FindEnd(m_bytes);
    if (!end) {
        return false;
    }
    const std::size_t count = m_bytes.U16(*end + 10);
    const bool isWhole = m_bytes.U32(*end + 4) == 0 && m_bytes.U16(*end + 8) == count;
    std::size_t offset = m_bytes.U32(*end + 16);
    if (!isWhole || count > MaxMembers || offset > *end) {
        return false;
    }
    for (std::size_t i = 0; i < count; ++i) {
        const ByteView entry = m_bytes.Sub(offset, *end - offset);
        const std::size_t nameBytes = entry.U16(28);
        if (entry.U32(0) != EntryMark || !entry.Covers(EntryBytes, nameBytes)) {
            return false;
        }
        const auto letters = entry.Sub(EntryBytes, nameBytes).Span();
        const std::string name(letters.begin(), letters.end());
        const bool isEncrypted = (entry.U16(8) & FlagEncrypted) != 0;
        if (IsPlainName(name) && !isEncrypted) {
            m_members.try_emplace(name, Member{entry.U16(10), entry.U32(16), entry.U32(20),
                                               entry.U32(24), entry.U32(42)});
        }
        offset += EntryBytes + nameBytes + entry.U16(30) + entry.U16(32);
        if (offset > *end) {
            return false;
        }
    }
    return true;
}

std::vector<std::string> ZipArchive::Names() const
{
    std::vector<std::string> names;
    names.reserve(m_members.size());
    for (const auto& [name, member] : m_members) {
        names.push_back(name);
    }
    return names;
}

std::optional<std::vector<std::uint8_t>> ZipArchive::Read(std::string_view name) const
{
    const auto found = m_members.find(name);
    if (found == m_members.end()) {
        return std::nullopt;
    }
    const Member& member = found->second;
    const std::size_t header = member.headerOffset;
    if (member.plainBytes > MaxMemberBytes || m_bytes.U32(header) != HeaderMark) {
        return std::nullopt;
    }
    const std::size_t start =
        header + HeaderBytes + m_bytes.U16(header + 26) + m_bytes.U16(header + 28);
    if (!m_bytes.Covers(start, member.packedBytes)) {
        return std::nullopt;
    }
    const ByteView packed = m_bytes.Sub(start, member.packedBytes);
    std::optional<std::vector<std::uint8_t>> plain;
    if (member.method == MethodStored && member.packedBytes == member.plainBytes) {
        plain.emplace(packed.Span().begin(), packed.Span().end());
    } else if (member.method == MethodDeflated) {
        plain = Inflate(packed, member.plainBytes);
    }
    if (plain && crc32(0, plain->data(), static_cast<uInt>(plain->size())) != member.checksum) {
        return std::nullopt;
    }
    return plain;
}
