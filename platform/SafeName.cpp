#include "platform/SafeName.h"

#include "platform/Text.h"

namespace {

bool IsUnsafe(char letter)
{
    const auto value = static_cast<unsigned char>(letter);
    return value < 0x20 || value == 0x7F || letter == '/';
}

}  // namespace

std::string SafeFileName(std::string_view name)
{
    std::string out = CutName(name, LongestComponent);
    for (char& letter : out) {
        if (IsUnsafe(letter)) {
            letter = '_';
        }
    }
    if (out.empty() || out == ".") {
        return "_";
    }
    return out == ".." ? "__" : out;
}

std::filesystem::path SafeFolderPath(std::string_view folderPath)
{
    std::filesystem::path out;
    while (!folderPath.empty()) {
        const std::size_t end = folderPath.find('\\');
        const std::string_view component = folderPath.substr(0, end);
        if (!component.empty()) {
            out /= SafeFileName(component);
        }
        folderPath.remove_prefix(end == std::string_view::npos ? folderPath.size() : end + 1);
    }
    return out;
}
