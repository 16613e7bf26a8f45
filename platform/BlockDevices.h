// The block devices that the system knows, as it describes them in its own tables: nothing is opened for this, so it works
// without rights.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

// A partition that the kernel itself has read from a disk's table.
struct KernelPartition
{
    std::string name;          // "sda1"
    std::string deviceNumber;  // "8:1"
    std::uint32_t number = 0;
    std::uint64_t startByte = 0;
    std::uint64_t byteCount = 0;
};

// A disk, or what the kernel lets stand for one: a loop device, a mapped volume, an array.
struct BlockDevice
{
    std::string name;          // "sda"
    std::string deviceNumber;  // "8:0"
    std::uint64_t sizeBytes = 0;
    std::uint32_t sectorSize = 512;
    std::uint64_t diskSequence = 0;  // another one for every medium that was ever put in; 0 unknown
    bool removable = false;
    bool readOnly = false;
    bool hidden = false;
    bool hasHolders = false;                  // another device stands on it as a whole
    std::string model;                        // of the hardware, where it tells one
    std::string serial;                       // likewise
    std::string backingFile;                  // of a loop device
    std::vector<std::string> slaves;          // names of the devices that a mapped one stands on
    std::vector<KernelPartition> partitions;  // by their start

    std::filesystem::path Node() const { return NodeOf(name); }
    // The device node of a disk or partition by its name.
    static std::filesystem::path NodeOf(const std::string& name);
};

// All that there are, hidden and empty ones too. Nothing when the system's folder of them cannot be listed.
std::optional<std::vector<BlockDevice>> ReadBlockDevices();
// Those among them that a user may want to scan, in the order in which they are shown: disks by name, sda2 before sda10,
// then mapped volumes and arrays, then loop devices.
std::vector<BlockDevice> DisksToShow(std::vector<BlockDevice> devices);

// What the device manager has found out about a device, so that it need not be opened.
struct ManagedProperties
{
    std::string fileSystem;  // as shown to the user
    std::string label;
    std::string partitionType;  // "0x7" of a DOS table, a GUID of a GPT
    std::string tableKind;      // "dos", "gpt"
};
ManagedProperties ReadManagedProperties(const std::string& deviceNumber);
