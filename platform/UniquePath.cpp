#include "platform/UniquePath.h"

#include "platform/Folders.h"
#include "platform/SafeName.h"
#include "platform/Text.h"

#include <algorithm>

std::filesystem::path UniquePaths::Next(const std::filesystem::path& path)
{
    if (!PathExists(path)) {
        return path;
    }
    const std::string name = path.filename().string();
    const std::size_t dot = std::min(name.rfind('.'), name.size());
    const std::string stem = name.substr(0, dot);
    const std::string extension = name.substr(dot);
    // The number given last is tried again: its file may not have come to be.
    for (std::uint64_t& number = m_lastNumbers.try_emplace(path.string(), 1).first->second;;
         ++number) {
        const std::string ending = "(" + std::to_string(number) + ")" + extension;
        const std::size_t room =
            ending.size() < LongestComponent ? LongestComponent - ending.size() : 1;
        std::filesystem::path candidate = path.parent_path() / (CutText(stem, room) + ending);
        if (!PathExists(candidate)) {
            return candidate;
        }
    }
}
