// Files as drives: loop devices, partition nodes and mounts, each undone at the end. Needs rights, so tests ask first.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

class LoopDevice
{
public:
    // Empty when loop devices can be had here, else why not: for GTEST_SKIP().
    static std::string WhyNot();

    explicit LoopDevice(const std::filesystem::path& image, std::uint32_t sectorSize = 512);
    LoopDevice(const LoopDevice&) = delete;
    LoopDevice& operator=(const LoopDevice&) = delete;
    ~LoopDevice();

    const std::filesystem::path& Node() const { return m_node; }
    // Has the kernel know the partitions, as it does by itself for real disks. Their nodes end in "p1", "p2" ...
    void AddPartitionNodes();
    std::filesystem::path PartitionNode(int number) const;

private:
    std::filesystem::path m_node;
    bool m_hasPartitions = false;
};

class Mount
{
public:
    // The folder, made here, becomes the last argument of the command.
    Mount(std::vector<std::string> command, std::filesystem::path folder);
    Mount(const Mount&) = delete;
    Mount& operator=(const Mount&) = delete;
    ~Mount();

    const std::filesystem::path& Folder() const { return m_folder; }

private:
    std::filesystem::path m_folder;
};

// Writes a partition table by a script of sfdisk onto an image or a device.
void MakeTable(const std::filesystem::path& disk, const std::string& script);
