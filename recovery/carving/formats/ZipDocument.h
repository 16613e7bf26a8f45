// Zip documents: a zip whose members' names tell the kind of document. A member's name stands in its local header (PK 03
// 04, name at 30) and in its central header (PK 01 02, name at 46); PK 05 06 ends the central ones.
#pragma once

#include "platform/ByteView.h"
#include "recovery/carving/SignatureTable.h"

// WordOoxml, SheetOoxml, SlidesOoxml, or None for a plain zip. Reads up to 20 sectors from the head on through the carver's
// context.
FileTypeId ClassifyOoxml();
