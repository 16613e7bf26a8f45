#include "platform/SafeName.h"

#include "platform/Text.h"

#include <algorithm>
#include <array>

namespace {

bool IsUnsafe(char letter, NameRules rules)
{
    const auto value = static_cast<unsigned char>(letter);
    return value < 0x20 || value == 0x7F || letter == '/' ||
           (rules == NameRules::Windows &&
            std::string_view("\"*:<>?\\|").find(letter) != std::string_view::npos);
}

// "con", "nul.txt", "COM1.a.b": such a name is a device, whatever follows its first full stop.
bool IsDeviceName(std::string_view name)
{
    constexpr std::array<std::string_view, 4> Devices = {"con", "prn", "aux", "nul"};
    std::string_view first = name.substr(0, name.find('.'));
    first = first.substr(0, first.find_last_not_of(' ') + 1);
    const std::string stem = LowerAscii(first);
    if (stem.size() == 4 && (stem.starts_with("com") || stem.starts_with("lpt"))) {
        return stem[3] >= '1' && stem[3] <= '9';
    }
    return std::find(Devices.begin(), Devices.end(), stem) != Devices.end();
}

std::string ByWindowsRules(std::string name)
{
    name.resize(name.find_last_not_of(". ") + 1);
    return IsDeviceName(name) ? CutName("_" + name, LongestComponent) : name;
}

// An extension that leaves no room for a stem would make a hidden file of any name.
std::string CutToComponent(std::string_view name)
{
    const std::size_t dot = std::min(name.rfind('.'), name.size());
    return name.size() - dot + LongestLetter > LongestComponent ? CutText(name, LongestComponent)
                                                                : CutName(name, LongestComponent);
}

}  // namespace

std::string SafeFileName(std::string_view name, NameRules rules)
{
    std::string out = CutToComponent(name);
    for (char& letter : out) {
        if (IsUnsafe(letter, rules)) {
            letter = '_';
        }
    }
    if (out == ".") {
        return "_";
    }
    if (out == "..") {
        return "__";
    }
    if (rules == NameRules::Windows) {
        out = ByWindowsRules(std::move(out));
    }
    return out.empty() ? "_" : out;
}

std::filesystem::path SafeFolderPath(std::string_view folderPath, NameRules rules)
{
    std::filesystem::path out;
    while (!folderPath.empty()) {
        const std::size_t end = folderPath.find('\\');
        const std::string_view component = folderPath.substr(0, end);
        if (!component.empty()) {
            out /= SafeFileName(component, rules);
        }
        folderPath.remove_prefix(end == std::string_view::npos ? folderPath.size() : end + 1);
    }
    return out;
}
