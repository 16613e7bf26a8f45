#include "recovery/FileTypeCatalogue.h"

#include "platform/Text.h"

const std::string_view FamilyPhoto = "*.bmp|*.gif|*.jpg|*.jpeg|*.png|*.psd|*.tif|*.tiff|*.pcx|*."
                                     "scr|*.ico|*.nef|*.nrw|*.crw|*.cr2|*.sr2|"
                                     "*.arw|*.srf|*.divu|*.pgm|*.k25|*.kdc|*.dcr|*.raf|*.iff|*.pbm|"
                                     "*.mef|*.jp2|*.mos|*.x3f|*.orf|*.erf|"
                                     "*.indd|*.pef|*.psp|*.mrw|*.dng|*.raw|*.pct|*.tga|*.thm|";
const std::string_view FamilyAudio = "*.mp3|*.wav|*.aiff|*.rps|*.mid|*.midi|*.m4a|*.m4p|*.au|*.ogg|"
                                     "*.wma|*.rm|*.ra|*.acd|*.amr|*.at3|"
                                     "*.caf|*.dss|*.m4r|*.nra|*.snd|";
const std::string_view FamilyVideo =
    "*.rmvb|*.rm|*.mpeg|*.mov|*.avi|*.wmv|*.asf|*.mp4|*.m4v|*.3gp|*.dv|*.3g2|*.m4b|*.mkv|*.mts|*."
    "divx|"
    "*.ogm|*.moi|*.vob|*.ajp|*.f4v|*.mqv|*.svi|*.vid|*.tod|*.hdmov|*.mod|*.mxf|*.lrv|*.m2t|";
const std::string_view FamilyDocument = "*.doc|*.xls|*.ppt|*.odt|*.ods|*.pdf|*.docx|*.xlsx|*.pptx|*"
                                        ".ole|*.txt|*.xml|*.chm|*.html|*.pst|*.dbx|"
                                        "*.wps|*.dps|*.et|*.one|*.mpp|*.mdb|*.accdb|";
const std::string_view FamilyArchive =
    "*.zip|*.rar|*.gzip|*.tar|*.7z|*.cab|*.arj|*.lzh|*.ace|*.gz|*.uue|*.bz2|*.jar|*.iso|";

namespace {

struct FamilyRow
{
    const std::string_view* family;
    std::string_view name;
};

constexpr FamilyRow Categories[] = {
    {&FamilyPhoto, "photo"},       {&FamilyAudio, "audio"},     {&FamilyVideo, "video"},
    {&FamilyDocument, "document"}, {&FamilyArchive, "archive"},
};

// Document comes before video, unlike in the categories: an extension of both families shows the icon of a document.
constexpr FamilyRow Icons[] = {
    {&FamilyPhoto, "image"}, {&FamilyAudio, "music"}, {&FamilyDocument, "doc"},
    {&FamilyVideo, "video"}, {&FamilyArchive, "zip"},
};

std::string IconFile(std::string_view stem, bool intact)
{
    return "FileIcon\\" + std::string(stem) + (intact ? ".png" : "_error.png");
}

}  // namespace

ResultCode ExtensionOf(std::string_view name, std::string& outExtension)
{
    const std::size_t dot = name.rfind('.');
    if (dot == std::string_view::npos) {
        return ResultInvalidParameter;
    }
    outExtension = name.substr(dot + 1);
    return ResultSuccess;
}

std::string LowerExtensionOf(std::string_view name)
{
    std::string extension;
    (void)ExtensionOf(name, extension);  // none leaves it empty, which is the answer
    return LowerAscii(extension);
}

bool InFamily(std::string_view family, std::string_view extension)
{
    return family.find(extension) != std::string_view::npos;
}

std::string_view CategoryFolderName(std::string_view name)
{
    const std::string extension = LowerExtensionOf(name);
    for (const FamilyRow& row : Categories) {
        if (InFamily(*row.family, extension)) {
            return row.name;
        }
    }
    return "others";
}

std::string FileIconPath(std::string_view extensionOrFolder, bool intact)
{
    const std::string extension = LowerAscii(extensionOrFolder);
    if (extension == "folder") {
        return IconFile("folder", true);
    }
    if (extension == "exe") {
        return IconFile("exe", intact);
    }
    for (const FamilyRow& row : Icons) {
        if (InFamily(*row.family, extension)) {
            return IconFile(row.name, intact);
        }
    }
    return IconFile("default", intact);
}
