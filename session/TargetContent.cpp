#include "session/TargetContent.h"

#include "platform/BlockProbe.h"
#include "recovery/metadata/FileSystemRecognition.h"
#include "session/Guard.h"
#include "storage/DriveRegistry.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace {

struct KnownName
{
    std::string_view probed;
    std::string_view name;
    ContentKind kind = ContentKind::NotUnderstood;
};

// Those that are called otherwise than they are probed, and those that are no file systems.
constexpr std::array KnownNames = {
    KnownName{"apfs", "APFS"},
    KnownName{"btrfs", "Btrfs"},
    KnownName{"hfs", "HFS"},
    KnownName{"hfsplus", "HFS+"},
    KnownName{"iso9660", "ISO 9660"},
    KnownName{"udf", "UDF"},
    KnownName{"xfs", "XFS"},
    KnownName{"zfs_member", "ZFS"},
    KnownName{"crypto_LUKS", "LUKS", ContentKind::Encrypted},
    KnownName{"BitLocker", "BitLocker", ContentKind::Encrypted},
    KnownName{"cs_fvault2", "FileVault", ContentKind::Encrypted},
    KnownName{"swap", "swap space", ContentKind::Swap},
    KnownName{"swsuspend", "swap space", ContentKind::Swap},
    KnownName{"LVM1_member", "LVM", ContentKind::VolumeGroup},
    KnownName{"LVM2_member", "LVM", ContentKind::VolumeGroup},
    KnownName{"linux_raid_member", "Linux RAID", ContentKind::Array},
    KnownName{"ddf_raid_member", "RAID", ContentKind::Array},
    KnownName{"isw_raid_member", "RAID", ContentKind::Array},
};

TargetContent ContentNamed(const std::string& probed)
{
    const auto* const known =
        std::find_if(KnownNames.begin(), KnownNames.end(),
                     [&probed](const KnownName& one) { return one.probed == probed; });
    if (known != KnownNames.end()) {
        return {known->kind, std::string(known->name)};
    }
    return {probed.empty() ? ContentKind::Unknown : ContentKind::NotUnderstood, probed};
}

// What the engines understand is theirs to say.
bool IsUnderstood(const FileHandle& handle, std::uint64_t startByte)
{
    std::array<std::uint8_t, RecognitionBytes> start = {};
    std::size_t got = 0;
    if (handle.ReadAt(startByte, start.data(), start.size(), &got) != ResultSuccess) {
        return false;
    }
    const FileSystemKind kind = RecogniseFileSystem(ByteView(start.data(), got));
    return kind == FileSystemKind::Fat || kind == FileSystemKind::Ntfs;
}

TargetContent LookAt(const ScanTarget& target)
{
    FileHandle handle;
    std::uint64_t bytes = 0;
    const ResultCode opened = target.IsImage()
                                  ? handle.OpenForReading(target.imagePath)
                                  : DriveRegistry::Instance().Open(target.diskNumber, handle);
    if (opened != ResultSuccess || handle.Size(&bytes) != ResultSuccess ||
        target.StartByte() >= bytes) {
        return {};
    }
    bytes -= target.StartByte();
    if (target.ByteCount() != 0) {
        bytes = std::min(bytes, target.ByteCount());
    }
    TargetContent content =
        ContentNamed(ProbeFileSystem(handle, target.StartByte(), bytes, target.sectorSize).name);
    if (IsUnderstood(handle, target.StartByte())) {
        content.kind = ContentKind::Understood;
    }
    return content;
}

}  // namespace

TargetContent ContentOf(const ScanTarget& target)
{
    TargetContent content;
    return RunGuarded([&] { content = LookAt(target); }) == ResultSuccess ? content
                                                                          : TargetContent();
}

TargetContent ContentCalled(const std::string& fileSystem)
{
    TargetContent content = ContentNamed(fileSystem);
    if (fileSystem == "NTFS" || fileSystem == "FAT32" || fileSystem == "FAT") {
        content.kind = ContentKind::Understood;
    }
    return content;
}
