#include "platform/UniquePath.h"

#include "platform/Folders.h"
#include "platform/SafeName.h"
#include "platform/Text.h"

#include <algorithm>

std::filesystem::path UniquePaths::Numbered(const std::filesystem::path& path, std::uint64_t number)
{
    if (number == 0) {
        return path;
    }
    const std::string name = path.filename().string();
    const std::string mark = "(" + std::to_string(number) + ")";
    std::size_t dot = std::min(name.rfind('.'), name.size());
    if (name.size() - dot + mark.size() + LongestLetter > LongestComponent) {
        dot = name.size();
    }
    const std::string ending = mark + name.substr(dot);
    return path.parent_path() /
           (CutText(name.substr(0, dot), LongestComponent - ending.size()) + ending);
}

std::filesystem::path UniquePaths::Next(const std::filesystem::path& path)
{
    if (!PathExists(path)) {
        return path;
    }
    // The number given last is tried again: its file may not have come to be.
    for (std::uint64_t& number = m_lastNumbers.try_emplace(path.string(), 1).first->second;;
         ++number) {
        std::filesystem::path candidate = Numbered(path, number);
        if (!PathExists(candidate)) {
            return candidate;
        }
    }
}
