// The five families of file extensions, which decide how a file is treated wherever its kind matters.
// Membership is a plain substring search in the family's text, on purpose: "jpe" is a photo through "jpeg",
// and the empty extension is in every family.
#pragma once

#include "platform/ResultCode.h"

#include <string>
#include <string_view>

// Lower case, each member "*.ext|", the last one too. In the order in which categories are tested.
extern const std::string_view FamilyPhoto;
extern const std::string_view FamilyAudio;
extern const std::string_view FamilyVideo;
extern const std::string_view FamilyDocument;
extern const std::string_view FamilyArchive;

// The text after the last full stop, as it stands. ResultInvalidParameter, and nothing written, when the name
// has no full stop.
[[nodiscard]] ResultCode ExtensionOf(std::string_view name, std::string& outExtension);
// The same in lower case; empty when there is none.
std::string LowerExtensionOf(std::string_view name);

// The extension, in lower case, is a substring of the family's text.
bool InFamily(std::string_view family, std::string_view extension);

// "photo", "audio", "video", "document", "archive" or "others": the folder that a file is restored under. A
// name without a full stop is a photo.
std::string_view CategoryFolderName(std::string_view name);

// The skin's picture for a list row: of an extension, or of a folder for the text "folder". A file whose head
// is not intact gets the "_error" form.
std::string FileIconPath(std::string_view extensionOrFolder, bool intact);
