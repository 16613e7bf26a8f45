// Compound files: a header sector, sectors of file table, and a directory of 128-byte entries whose first is the root.
// Old office documents are such files; what kind of document it is stands in the root's class and the streams' names.
#pragma once

#include "platform/ByteView.h"
#include "recovery/carving/SignatureTable.h"

// WordOle, SheetOle, SlidesOle, or OtherOle for all others. Reads the sector after the head and the first directory
// sector through the carver's context.
FileTypeId ClassifyOle2(ByteView head);
