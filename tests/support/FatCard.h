// Real FAT volumes, made by mkfs.fat and filled by mtools: no mount, no rights needed.
#pragma once

#include "tests/support/TempFolder.h"

#include <cstdint>
#include <filesystem>
#include <span>
#include <string>
#include <vector>

struct FatOptions
{
    int fatBits = 32;
    std::uint64_t volumeBytes = 64 * 1024 * 1024;
    std::uint32_t sectorsPerCluster = 1;
    std::uint32_t sectorSize = 512;
    std::uint64_t startByte = 0;     // where the volume begins in the image
    std::uint64_t tailBytes = 0;     // past its end
    std::vector<std::string> extra;  // further arguments of mkfs.fat
};

// Paths inside are written with "/" from the root, without one in front. Everything throws on failure.
class FatCard
{
public:
    // Empty when volumes can be made here, else why not: for GTEST_SKIP().
    static std::string MissingTools();

    FatCard(std::filesystem::path imagePath, const FatOptions& options);

    const std::filesystem::path& ImagePath() const { return m_imagePath; }

    void MakeFolder(const std::string& path) const;
    void Put(const std::string& path, std::span<const std::uint8_t> bytes) const;
    void PutFile(const std::string& path, const std::filesystem::path& from) const;
    ByteVector Get(const std::string& path) const;
    void Delete(const std::string& path) const;
    void DeleteTree(const std::string& path) const;

private:
    std::string Run(std::vector<std::string> command) const;

    std::filesystem::path m_imagePath;
    std::string m_drive;  // as mtools takes it: image@@offset
};
