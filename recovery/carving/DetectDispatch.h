// Asks the signature table about a sector. The answer is that of asking every row from the first; most rows are
// not asked, because the sector's first bytes rule them out.
#pragma once

#include "recovery/carving/SignatureTable.h"

#include <cstdint>

struct TableHit
{
    FileTypeId typeId = FileTypeId::None;
    const SignatureEntry* row = nullptr;  // that fired; null when none did
};

TableHit FindHead(const std::uint8_t* sector, std::int32_t size);

// The type alone.
FileTypeId DetectAny(const std::uint8_t* sector, std::int32_t size);
