// What a preview shows in its pane: a picture, a text, or a dump of bytes.
#pragma once

#include <QString>

#include <cstdint>
#include <filesystem>
#include <span>

class CRichEditUI;

// Room above the texts that stand in place of a preview, in twips.
inline constexpr int FallbackSpacing = 1005;

// Shows a picture file, at most as large as told, or for -1 as the pane has room for. Without a picture in it, whatever its name
// says, the fallback text stands there. False for a null pane, an empty path and a file that does not exist: nothing is done.
bool InsertPicture(CRichEditUI* pane,
                   const std::filesystem::path& path,
                   const QString& fallback,
                   int width = -1,
                   int height = -1);
// In the middle of the line; the room above it is given in twips.
void ShowText(CRichEditUI& pane, const QString& text, int spacing = 0);
// A character a byte, "." for a zero, 1024 to a line; ends in a line's end.
QString DumpText(std::span<const std::uint8_t> bytes);
// The beginning of it, in the pane.
void ShowDump(CRichEditUI& pane, std::span<const std::uint8_t> bytes);
