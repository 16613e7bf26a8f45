// The drivers of the signature table: one sector in, a kind and a length out.
#pragma once

#include "platform/ByteView.h"
#include "platform/ResultCode.h"
#include "recovery/carving/SignatureTable.h"
#include "storage/SectorSource.h"

#include <cstdint>
#include <string>
#include <string_view>

// What the pass knows of its progress when it shows a sector to the carver; reported on while a file is measured.
struct CarveProgress
{
    std::uint64_t sectorsDone = 0;
    std::uint64_t sectorsTotal = 0;
    std::int32_t secondsLeft = -1;
    std::uint64_t filesFound = 0;
};

// A file found by its head.
struct CarvedHead
{
    std::string name;  // "<lba>.<extension of the type's first row>"
    FileTypeId typeId = FileTypeId::None;
    std::int64_t lengthBytes = 0;
    LengthEnd lengthEnd = LengthEnd::Seen;
};

// Tries the rows on a sector in table order and measures what fires. ResultInvalidParameter (87) when nothing
// does, or when the row that did has no length function; ResultCancelled when the callback cancelled the measuring.
[[nodiscard]] ResultCode TrySignatureTable(ByteView sector,
                                           std::uint64_t lba,
                                           const CarveProgress& progress,
                                           SectorSource& source,
                                           std::int32_t sectorSize,
                                           CarvedHead& outHead);

// Whether a sector (or resident data of any size) really begins a file of this extension. An extension that
// the table does not know is never contradicted. Overwrites the carver's context, so it must not run during a carve.
bool VerifyExtensionAtSector(ByteView sector,
                             std::string_view extension,
                             SectorSource& source,
                             std::int32_t sectorSize,
                             std::uint64_t lba);
