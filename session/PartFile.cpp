#include "session/PartFile.h"

#include "platform/Folders.h"
#include "platform/Process.h"

#include <atomic>
#include <charconv>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace {

// ".lumivault-<process>-<number>.part"
constexpr std::string_view PartBegin = ".lumivault-";
constexpr std::string_view PartEnd = ".part";

// The process that made a file of such a name; nothing for any other name.
std::optional<std::int32_t> MakerOf(std::string_view name)
{
    if (!name.starts_with(PartBegin) || !name.ends_with(PartEnd) ||
        name.size() <= PartBegin.size() + PartEnd.size()) {
        return std::nullopt;
    }
    name.remove_prefix(PartBegin.size());
    name.remove_suffix(PartEnd.size());
    const std::size_t hyphen = name.find('-');
    std::int32_t process = 0;
    const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), process);
    const bool isOurs = error == std::errc() && process > 0 && hyphen != name.npos &&
                        end == name.data() + hyphen && hyphen + 1 < name.size() &&
                        name.find_first_not_of("0123456789", hyphen + 1) == name.npos;
    return isOurs ? std::optional(process) : std::nullopt;
}

}  // namespace

std::filesystem::path PartFileIn(const std::filesystem::path& folder)
{
    static std::atomic<std::uint64_t> lastNumber = 0;
    std::filesystem::path path;
    do {
        path = folder / (std::string(PartBegin) + std::to_string(ProcessNumber()) + "-" +
                         std::to_string(++lastNumber) + std::string(PartEnd));
    } while (PathExists(path));
    return path;
}

void RemoveLeftParts(const std::filesystem::path& folder)
{
    std::error_code error;
    std::vector<std::filesystem::path> left;
    std::filesystem::directory_iterator at(folder, error);
    for (; !error && at != std::filesystem::directory_iterator(); at.increment(error)) {
        const std::optional<std::int32_t> maker = MakerOf(at->path().filename().string());
        std::error_code ignored;
        if (maker && !ProcessIsAlive(*maker) &&
            std::filesystem::is_regular_file(at->symlink_status(ignored))) {
            left.push_back(at->path());
        }
    }
    for (const std::filesystem::path& path : left) {
        (void)RemoveFile(path);  // what stays is hidden
    }
}
