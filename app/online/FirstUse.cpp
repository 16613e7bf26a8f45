#include "app/online/FirstUse.h"

#include "platform/FileHandle.h"
#include "platform/Folders.h"
#include "platform/HttpGet.h"

#include <string_view>

namespace {

constexpr char AgentName[] = "codegurubrowser1.0";
constexpr std::string_view PingPath = "/O-M/DL/DSOrvantaLumivault.php?v=7.0";

void MakeMarker(const std::filesystem::path& marker)
{
    FileHandle file;
    if (FolderIsThere(MakePrivateFolderWithParents(marker.parent_path()))) {
        (void)file.OpenOrCreate(marker);  // the next run tries it again
    }
}

}  // namespace

std::filesystem::path FirstUseMarker()
{
    return ApplicationDataFolder() / "OrvantaLumivault" / "Used";
}

std::thread PingOnFirstUse(const std::string& site, const std::filesystem::path& marker)
{
    if (PathExists(marker)) {
        return {};
    }
    if (site.empty()) {
        MakeMarker(marker);
        return {};
    }
    return std::thread([site, marker] {
        HttpGet(site + std::string(PingPath), AgentName, 0);
        MakeMarker(marker);
    });
}
