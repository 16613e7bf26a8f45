#include "recovery/deep/CarvedDoubles.h"

#include "recovery/FileTypeCatalogue.h"

#include <string>
#include <unordered_map>

void DropCarvedDoubles(const FileRecordList& known,
                       const FirstDataSectorFunction& firstDataSector,
                       FileRecordList& carved)
{
    // Telling a first sector can take a read: only sectors where something was carved matter.
    std::unordered_map<std::uint64_t, std::optional<std::string>> extensions;
    for (const FileRecord& record : carved) {
        extensions.try_emplace(std::uint64_t{record.EntrySector});
    }
    if (extensions.empty()) {
        return;
    }
    for (const FileRecord& record : known) {
        if (const std::optional<std::uint64_t> sector = firstDataSector(record)) {
            if (const auto found = extensions.find(*sector); found != extensions.end()) {
                found->second = LowerExtensionOf(record.NameText());
            }
        }
    }
    std::erase_if(carved, [&](const FileRecord& record) {
        const std::optional<std::string>& extension =
            extensions.at(std::uint64_t{record.EntrySector});
        if (!extension) {
            return false;
        }
        const std::string own = LowerExtensionOf(record.NameText());
        return *extension == own || (*extension == "thm" && own == "jpg");
    });
}
