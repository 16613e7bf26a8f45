// A fresh folder for one test, and files in it.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <span>
#include <vector>

using ByteVector = std::vector<std::uint8_t>;

// Made below the system's temporary folder, removed with all it holds at the end.
class TempFolder
{
public:
    TempFolder();
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;
    ~TempFolder();

    const std::filesystem::path& Path() const { return m_path; }
    std::filesystem::path operator/(const std::filesystem::path& name) const
    {
        return m_path / name;
    }

private:
    std::filesystem::path m_path;
};

// A temporary application-data folder for as long as it lives, so that record stores land in it.
class DataFolder
{
public:
    DataFolder();
    DataFolder(const DataFolder&) = delete;
    DataFolder& operator=(const DataFolder&) = delete;
    ~DataFolder();

    const std::filesystem::path& Path() const { return m_folder.Path(); }

private:
    TempFolder m_folder;
};

// The log of scans in the application-data folder of now, read anew, as at a start of the program.
class ScanLogDirectory;
std::shared_ptr<ScanLogDirectory> OpenLog();

// Both throw when the file cannot be read or written.
ByteVector ReadFileBytes(const std::filesystem::path& path);
void WriteFileBytes(const std::filesystem::path& path, std::span<const std::uint8_t> bytes);
