// A system's tables in a folder of their own: disks as the kernel lists them, plain files in place of their nodes, mounts,
// and what a device manager knows. In force as long as it lives, and the numbers of its disks too; needs no rights.
#pragma once

#include "tests/support/TempFolder.h"

#include <cstdint>
#include <filesystem>
#include <map>
#include <string>

class MadeUpSystem
{
public:
    MadeUpSystem();
    MadeUpSystem(const MadeUpSystem&) = delete;
    MadeUpSystem& operator=(const MadeUpSystem&) = delete;
    ~MadeUpSystem();

    // What stands in files of the disk's folder, by their path in it ("removable", "queue/logical_block_size").
    using Facts = std::map<std::string, std::string>;

    // A disk of that size, its node an empty file of it.
    void AddDisk(const std::string& name,
                 const std::string& deviceNumber,
                 std::uint64_t sizeBytes,
                 const Facts& facts = {});
    // A partition as the kernel shows it, in units of 512 bytes.
    void AddPartition(const std::string& disk,
                      int number,
                      const std::string& deviceNumber,
                      std::uint64_t start,
                      std::uint64_t size);
    void Remove(const std::string& disk);
    // The user may not open it: no node.
    void Lock(const std::string& disk);
    void AddMount(const std::string& line);
    void SetProperties(const std::string& deviceNumber, const std::string& lines);

    std::filesystem::path Node(const std::string& disk) const { return m_root / "dev" / disk; }
    std::filesystem::path Folder() const { return m_root.Path(); }

private:
    void Write(const std::filesystem::path& file, const std::string& text) const;

    TempFolder m_root;
};
