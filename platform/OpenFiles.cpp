#include "platform/OpenFiles.h"

#include <charconv>
#include <string>
#include <unistd.h>
#include <vector>

void CloseFilesOf(const std::filesystem::path& path)
{
    std::error_code error;
    const std::filesystem::path wanted = std::filesystem::absolute(path, error);
    std::vector<int> found;
    for (std::filesystem::directory_iterator entry("/proc/self/fd", error), end;
         !error && entry != end; entry.increment(error)) {
        std::error_code ignored;
        const std::string name = entry->path().filename().string();
        int descriptor = -1;
        if (std::filesystem::read_symlink(entry->path(), ignored) == wanted &&
            std::from_chars(name.data(), name.data() + name.size(), descriptor).ec == std::errc()) {
            found.push_back(descriptor);
        }
    }
    for (const int descriptor : found) {
        close(descriptor);
    }
}
