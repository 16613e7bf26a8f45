// A path for a new file that nothing has yet.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <unordered_map>

// Remembers how far it counted for each name, so that ten thousand files of one name do not ask the file system
// fifty million times. One restore owns it; meanwhile nobody else should remove files there.
class UniquePaths
{
public:
    // The path itself for 0, else the one with "(number)" after its stem, which is cut where the component would grow too
    // long for a file system. An ending that leaves no room for a stem counts as a part of it.
    static std::filesystem::path Numbered(const std::filesystem::path& path, std::uint64_t number);
    // The path itself when nothing has it, a dangling link included; else with "(1)", "(2)" and so on after the
    // stem, the first that is free.
    std::filesystem::path Next(const std::filesystem::path& path);

private:
    std::unordered_map<std::string, std::uint64_t> m_lastNumbers;  // of paths that were taken
};
