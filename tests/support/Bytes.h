// Bytes for tests: written by hand, drawn by a seed, and whole disks in a sparse file.
#pragma once

#include "tests/support/TempFolder.h"

#include <cstdint>
#include <filesystem>
#include <span>
#include <string_view>

// "89 'PNG' 0D 0A": hexadecimal bytes and quoted ASCII, separated by blanks. "00*20" repeats a byte, the count
// decimal. Throws on anything else.
ByteVector Bytes(std::string_view text);

// The same bytes for the same seed, on every machine.
ByteVector RandomBytes(std::size_t count, std::uint64_t seed);

// bytes, then zeros to the end of count sectors.
ByteVector Padded(ByteVector bytes, std::size_t sectors = 1, std::size_t sectorSize = 512);
ByteVector operator+(ByteVector left, const ByteVector& right);

// A sparse image file that a test fills sector by sector.
class ImageFile
{
public:
    static constexpr std::uint64_t SectorSize = 512;

    // Makes the file, all zeros.
    ImageFile(std::filesystem::path path, std::uint64_t sizeBytes);
    // Takes an existing one.
    explicit ImageFile(std::filesystem::path path);

    const std::filesystem::path& Path() const { return m_path; }
    std::uint64_t SizeBytes() const;

    void Put(std::uint64_t sector, std::span<const std::uint8_t> bytes) const;
    void PutAt(std::uint64_t position, std::span<const std::uint8_t> bytes) const;
    ByteVector Read(std::uint64_t position, std::size_t count) const;
    void Truncate(std::uint64_t sizeBytes) const;
    // Where these bytes stand first, at a sector's start; throws when nowhere.
    std::uint64_t Find(std::span<const std::uint8_t> bytes) const;

private:
    std::filesystem::path m_path;
};
