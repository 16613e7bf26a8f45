// From file name and data attributes to the fields of a FileRecord, for the engines that read FILE records.
#pragma once

#include "recovery/ScanRecordStore.h"
#include "recovery/metadata/NtfsFileName.h"

#include <cstdint>

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
