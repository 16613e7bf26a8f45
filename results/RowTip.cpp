#include "results/RowTip.h"

#include "platform/Text.h"
#include "texts/LanguageSection.h"
#include "texts/TextForms.h"

#include <algorithm>

std::string RowTip(const FileRecord& record, std::string_view folder, LanguageSection& extras)
{
    std::string tip = Printable(record.NameText());
    const auto add = [&](std::string_view key, const std::string& value) {
        if (!value.empty()) {
            tip += "\n" + extras.Get(key) + " " + value;
        }
    };
    const auto time = [](std::uint64_t fileTime) {
        return fileTime == 0 ? std::string() : FormatFileTime(fileTime);
    };
    // Before marks are escaped, by what is no separator.
    std::string path(folder.substr(0, folder.find_last_not_of('\\') + 1));
    std::replace(path.begin(), path.end(), '\\', '/');
    add("EXT0108", Printable(path));
    if (record.IsFolder == 0) {
        add("EXT0114", FormatBytes(record.FileSize));
    }
    add("EXT0115", time(record.WriteTime));
    add("EXT0116", time(record.CreationTime));
    add("EXT0117", time(record.AccessTime));
    if (record.IsFolder == 0) {
        tip += "\n" + extras.Get(record.HeadIntact != 0 ? "EXT0118" : "EXT0119");
    }
    return tip;
}
