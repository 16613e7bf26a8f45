#include "platform/BlockDevices.h"

#include "platform/BlockProbe.h"
#include "platform/ByteView.h"
#include "platform/FileHandle.h"
#include "platform/SystemFiles.h"
#include "platform/Text.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <string_view>
#include <tuple>

namespace fs = std::filesystem;

namespace {

// The system's tables count in these whatever the disk's own sectors are.
constexpr std::uint64_t TableUnit = 512;
constexpr std::uint64_t MostUnits = INT64_MAX / TableUnit;

std::uint64_t BytesIn(const fs::path& file)
{
    return std::min(NumberIn(file).value_or(0), MostUnits) * TableUnit;
}

std::vector<std::string> NamesIn(const fs::path& folder)
{
    std::vector<std::string> names;
    std::error_code error;
    fs::directory_iterator entry(folder, error);
    for (; !error && entry != fs::directory_iterator(); entry.increment(error)) {
        names.push_back(entry->path().filename().string());
    }
    std::sort(names.begin(), names.end());
    return names;
}

bool IsAllDigits(std::string_view text)
{
    return !text.empty() && std::all_of(text.begin(), text.end(),
                                        [](char letter) { return letter >= '0' && letter <= '9'; });
}

// Digits compare by their value, all else by its bytes: nvme0n2 stands before nvme0n10.
bool NaturalLess(std::string_view left, std::string_view right)
{
    while (!left.empty() && !right.empty()) {
        const std::size_t leftDigits = std::min(left.find_first_not_of("0123456789"), left.size());
        const std::size_t rightDigits =
            std::min(right.find_first_not_of("0123456789"), right.size());
        if (leftDigits != 0 && rightDigits != 0) {
            const std::string_view leftNumber = left.substr(0, leftDigits);
            const std::string_view rightNumber = right.substr(0, rightDigits);
            if (leftNumber != rightNumber) {
                return std::pair(leftDigits, leftNumber) < std::pair(rightDigits, rightNumber);
            }
            left.remove_prefix(leftDigits);
            right.remove_prefix(rightDigits);
            continue;
        }
        if (left.front() != right.front()) {
            return left.front() < right.front();
        }
        left.remove_prefix(1);
        right.remove_prefix(1);
    }
    return left.size() < right.size();
}

// Cards in a slot of their own say "not removable".
bool IsRemovableDevice(const fs::path& folder, const std::string& name)
{
    return NumberIn(folder / "removable").value_or(0) == 1 ||
           (name.starts_with("mmcblk") && FirstLineOf(folder / "device/type") == "SD");
}

// Their folders lie among the disk's own files, and begin with its name.
std::vector<KernelPartition> ReadKernelPartitions(const fs::path& folder, const std::string& disk)
{
    std::vector<KernelPartition> partitions;
    for (const std::string& name : NamesIn(folder)) {
        if (!name.starts_with(disk)) {
            continue;
        }
        const std::optional<std::uint64_t> number = NumberIn(folder / name / "partition");
        if (number) {
            partitions.push_back(
                {name, FirstLineOf(folder / name / "dev"), static_cast<std::uint32_t>(*number),
                 BytesIn(folder / name / "start"), BytesIn(folder / name / "size")});
        }
    }
    std::stable_sort(partitions.begin(), partitions.end(), [](const auto& left, const auto& right) {
        return left.startByte < right.startByte;
    });
    return partitions;
}

BlockDevice ReadBlockDevice(const fs::path& folder, const std::string& name)
{
    BlockDevice device;
    device.name = name;
    device.deviceNumber = FirstLineOf(folder / "dev");
    device.sizeBytes = BytesIn(folder / "size");
    const std::uint64_t sectorSize = NumberIn(folder / "queue/logical_block_size").value_or(0);
    // A power of two within what hardware and the kernel know; anything else is taken for the usual size.
    if (sectorSize >= 512 && sectorSize <= 65536 && (sectorSize & (sectorSize - 1)) == 0) {
        device.sectorSize = static_cast<std::uint32_t>(sectorSize);
    }
    device.diskSequence = NumberIn(folder / "diskseq").value_or(0);
    device.removable = IsRemovableDevice(folder, name);
    device.readOnly = NumberIn(folder / "ro").value_or(0) == 1;
    device.hidden = NumberIn(folder / "hidden").value_or(0) == 1;
    device.hasHolders = !NamesIn(folder / "holders").empty();
    device.model = FirstLineOf(folder / "device/model");
    if (device.model.empty()) {
        device.model = FirstLineOf(folder / "device/name");  // of a card in a slot of its own
    }
    device.serial = FirstLineOf(folder / "device/serial");
    if (device.serial.empty()) {
        device.serial = FirstLineOf(folder / "device/wwid");
    }
    device.backingFile = FirstLineOf(folder / "loop/backing_file");
    device.slaves = NamesIn(folder / "slaves");
    device.partitions = ReadKernelPartitions(folder, name);
    return device;
}

bool IsLoop(const BlockDevice& device)
{
    return device.name.starts_with("loop");
}

bool IsMapped(const BlockDevice& device)
{
    return device.name.starts_with("dm-") || device.name.starts_with("md");
}

// Packaged applications are mounted by the dozen in this way.
bool IsPackage(const BlockDevice& device)
{
    if (!IsLoop(device) || !device.readOnly) {
        return false;
    }
    FileHandle node;
    std::array<std::uint8_t, 4> start = {};
    std::size_t got = 0;
    if (node.OpenForReading(device.Node()) == ResultSuccess) {
        (void)node.ReadAt(0, start.data(), start.size(), &got);
        return ByteView(start.data(), got).Matches(0, "hsqs");
    }
    return ReadManagedProperties(device.deviceNumber).fileSystem == "squashfs" ||
           device.backingFile.ends_with(".snap") || device.backingFile.ends_with(".squashfs");
}

bool IsShown(const BlockDevice& device)
{
    const std::string_view name = device.name;
    const bool floppy = name.starts_with("fd") && IsAllDigits(name.substr(2));
    const bool optical = name.starts_with("sr") && IsAllDigits(name.substr(2));
    const bool partOfCard =
        name.starts_with("mmcblk") && (name.find("boot") != name.npos || name.ends_with("rpmb"));
    const bool memory = name.starts_with("ram") || name.starts_with("zram");
    return device.sizeBytes != 0 && !device.hidden && !floppy && !optical && !partOfCard &&
           !memory && !(IsMapped(device) && device.hasHolders) && !IsPackage(device);
}

int RankOf(const BlockDevice& device)
{
    return IsLoop(device) ? 2 : IsMapped(device) ? 1 : 0;
}

// The device manager writes what is no plain letter as \x and two hexadecimal digits.
std::string UnescapeHex(std::string_view text)
{
    const auto digit = [](char letter) {
        const char lower = LowerAscii(letter);
        return lower >= '0' && lower <= '9'   ? lower - '0'
               : lower >= 'a' && lower <= 'f' ? lower - 'a' + 10
                                              : -1;
    };
    std::string out;
    for (std::size_t at = 0; at < text.size(); ++at) {
        const bool escaped = text.substr(at).starts_with("\\x") && at + 3 < text.size() &&
                             digit(text[at + 2]) >= 0 && digit(text[at + 3]) >= 0;
        if (!escaped) {
            out.push_back(text[at]);
            continue;
        }
        out.push_back(static_cast<char>(digit(text[at + 2]) * 16 + digit(text[at + 3])));
        at += 3;
    }
    return Utf16ToUtf8(Utf8ToUtf16(out));
}

}  // namespace

fs::path BlockDevice::NodeOf(const std::string& name)
{
    std::string node = name;
    std::replace(node.begin(), node.end(), '!', '/');  // a folder below /dev, in a name of one word
    return SystemPath("/dev/" + node);
}

std::optional<std::vector<BlockDevice>> ReadBlockDevices()
{
    const fs::path top = SystemPath("/sys/block");
    std::error_code error;
    const fs::directory_iterator listing(top, error);
    if (error) {
        return std::nullopt;
    }
    std::vector<BlockDevice> devices;
    for (const std::string& name : NamesIn(top)) {
        devices.push_back(ReadBlockDevice(top / name, name));
    }
    return devices;
}

std::vector<BlockDevice> DisksToShow(std::vector<BlockDevice> devices)
{
    std::erase_if(devices, [](const BlockDevice& device) { return !IsShown(device); });
    std::stable_sort(devices.begin(), devices.end(),
                     [](const BlockDevice& left, const BlockDevice& right) {
                         const int leftRank = RankOf(left);
                         const int rightRank = RankOf(right);
                         return leftRank != rightRank ? leftRank < rightRank
                                                      : NaturalLess(left.name, right.name);
                     });
    return devices;
}

ManagedProperties ReadManagedProperties(const std::string& deviceNumber)
{
    ManagedProperties properties;
    std::string type;
    std::string version;
    for (const std::string& line : LinesOf(SystemPath("/run/udev/data/b" + deviceNumber))) {
        const std::string_view text = line;
        const std::size_t equals = text.find('=');
        if (!text.starts_with("E:") || equals == text.npos) {
            continue;
        }
        const std::string_view key = text.substr(2, equals - 2);
        const std::string value(text.substr(equals + 1));
        if (key == "ID_FS_TYPE") {
            type = value;
        } else if (key == "ID_FS_VERSION") {
            version = value;
        } else if (key == "ID_FS_LABEL_ENC") {
            properties.label = UnescapeHex(value);
        } else if (key == "ID_PART_ENTRY_TYPE") {
            properties.partitionType = LowerAscii(value);
        } else if (key == "ID_PART_ENTRY_SCHEME" || key == "ID_PART_TABLE_TYPE") {
            properties.tableKind = value;
        }
    }
    properties.fileSystem = type.empty() ? type : FileSystemDisplayName(type, version);
    return properties;
}
