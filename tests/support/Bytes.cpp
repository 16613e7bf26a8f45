#include "tests/support/Bytes.h"

#include "platform/FileHandle.h"

#include <algorithm>
#include <charconv>
#include <random>
#include <stdexcept>
#include <string>
#include <utility>

namespace {

void Demand(bool holds, std::string_view what)
{
    if (!holds) {
        throw std::runtime_error("bytes for a test: " + std::string(what));
    }
}

// A hexadecimal byte, or one followed by "*count".
void AppendToken(std::string_view token, ByteVector& out)
{
    unsigned value = 0;
    std::size_t count = 1;
    const std::size_t star = token.find('*');
    const std::string_view digits = token.substr(0, star);
    const auto [end, error] =
        std::from_chars(digits.data(), digits.data() + digits.size(), value, 16);
    Demand(error == std::errc() && end == digits.data() + digits.size() && digits.size() == 2,
           token);
    if (star != std::string_view::npos) {
        const std::string_view times = token.substr(star + 1);
        const auto parsed = std::from_chars(times.data(), times.data() + times.size(), count);
        Demand(parsed.ec == std::errc() && parsed.ptr == times.data() + times.size(), token);
    }
    out.insert(out.end(), count, static_cast<std::uint8_t>(value));
}

FileHandle OpenToWrite(const std::filesystem::path& path)
{
    FileHandle file;
    Demand(file.OpenOrCreate(path) == ResultSuccess, path.string());
    return file;
}

}  // namespace

ByteVector Bytes(std::string_view text)
{
    ByteVector out;
    for (std::size_t at = 0; at < text.size();) {
        if (text[at] == ' ') {
            ++at;
            continue;
        }
        const bool quoted = text[at] == '\'';
        at += quoted ? 1 : 0;
        const std::size_t end = std::min(text.find(quoted ? '\'' : ' ', at), text.size());
        const std::string_view token = text.substr(at, end - at);
        if (quoted) {
            Demand(end < text.size(), "a quote is not closed");
            out.insert(out.end(), token.begin(), token.end());
        } else {
            AppendToken(token, out);
        }
        at = end + (quoted ? 1 : 0);
    }
    return out;
}

ByteVector RandomBytes(std::size_t count, std::uint64_t seed)
{
    std::mt19937_64 generator(seed);
    ByteVector out(count);
    for (std::uint8_t& byte : out) {
        byte = static_cast<std::uint8_t>(generator() >> 56);
    }
    return out;
}

ByteVector Padded(ByteVector bytes, std::size_t sectors, std::size_t sectorSize)
{
    bytes.resize(sectors * sectorSize);
    return bytes;
}

ByteVector operator+(ByteVector left, const ByteVector& right)
{
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

ImageFile::ImageFile(std::filesystem::path path, std::uint64_t sizeBytes) : m_path(std::move(path))
{
    Truncate(0);
    Truncate(sizeBytes);
}

ImageFile::ImageFile(std::filesystem::path path) : m_path(std::move(path)) {}

std::uint64_t ImageFile::SizeBytes() const
{
    return std::filesystem::file_size(m_path);
}

void ImageFile::Put(std::uint64_t sector, std::span<const std::uint8_t> bytes) const
{
    PutAt(sector * SectorSize, bytes);
}

void ImageFile::PutAt(std::uint64_t position, std::span<const std::uint8_t> bytes) const
{
    const FileHandle file = OpenToWrite(m_path);
    Demand(file.WriteAt(position, bytes.data(), bytes.size()) == ResultSuccess, m_path.string());
}

ByteVector ImageFile::Read(std::uint64_t position, std::size_t count) const
{
    FileHandle file;
    Demand(file.OpenForReading(m_path) == ResultSuccess, m_path.string());
    ByteVector out(count);
    std::size_t got = 0;
    Demand(file.ReadAt(position, out.data(), count, &got) == ResultSuccess, m_path.string());
    out.resize(got);
    return out;
}

void ImageFile::Truncate(std::uint64_t sizeBytes) const
{
    Demand(OpenToWrite(m_path).Truncate(sizeBytes) == ResultSuccess, m_path.string());
}

std::uint64_t ImageFile::Find(std::span<const std::uint8_t> bytes) const
{
    const ByteVector image = Read(0, SizeBytes());
    for (std::size_t at = 0; at + bytes.size() <= image.size(); at += SectorSize) {
        if (std::equal(bytes.begin(), bytes.end(),
                       image.begin() + static_cast<std::ptrdiff_t>(at))) {
            return at;
        }
    }
    throw std::runtime_error("bytes for a test: not found in " + m_path.string());
}
