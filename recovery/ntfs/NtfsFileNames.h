// From file name and data attributes to the fields of a FileRecord, for the engines that read FILE records.
#pragma once

#include "platform/ByteView.h"
#include "recovery/ScanRecordStore.h"

#include <cstdint>
#include <string>

inline constexpr std::size_t FileNameHeadBytes = 90;  // of a file name attribute, up to the name

// The number of the folder that holds the file, without its sequence number.
inline std::uint32_t ParentOfFileName(ByteView attribute)
{
    return attribute.U32(24);
}
// Of a record's later names only these count, and only for Name.
inline bool IsWin32Name(ByteView attribute)
{
    return attribute.U8(89) == 1;
}
// The name lies in the buffer with all its characters.
bool HasWholeName(ByteView attribute);
std::string NameOfFileName(ByteView attribute);

// What all records of one engine share.
struct NtfsRecordOrigin
{
    char16_t DriveLetter = 0;
    std::uint32_t EngineKind = EngineKindFastNtfs;
};

// Reserves a record and fills number, kind, times, name and size from a whole file name attribute. ClusterBytes is
// NoClusterBytes and HeadIntact 1 until the caller knows better.
FileRecord& MakeRecordFromFileName(ScanRecordStore& store,
                                   const NtfsRecordOrigin& origin,
                                   ByteView attribute,
                                   bool isFolder);

// A substitute for a folder that cannot be read as one, so that its files stay reachable. It always hangs under the
// root.
void MakeLostFolder(ScanRecordStore& store,
                    const NtfsRecordOrigin& origin,
                    std::uint32_t recordNumber,
                    std::uint32_t clusterBytes);

// Takes the size of an unnamed data attribute; length as the walk read it. False, and nothing taken, when the field does
// not lie in the buffer.
bool UpdateFileSize(ByteView attribute, std::int64_t length, FileRecord& record);
