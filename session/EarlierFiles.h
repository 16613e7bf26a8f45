// Finds the file of an earlier run that a restored one would only repeat. For this room alone.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

// Each file of an earlier run stands for one record; those of this run stand for their own.
class EarlierFiles
{
public:
    // Of the file systems that take "a" and "A" for one name.
    explicit EarlierFiles(bool ignoresCase) : m_ignoresCase(ignoresCase) {}

    // The file that has the wanted name, or that name with a number, and holds the bytes of part; empty when there is none.
    std::filesystem::path TakeEqual(const std::filesystem::path& wanted,
                                    const std::filesystem::path& part);
    // A file of this run.
    void Add(const std::filesystem::path& path) { m_taken.insert(KeyOf(path)); }

private:
    struct Candidate
    {
        std::filesystem::path path;
        std::uint64_t size = 0;
    };

    std::size_t KeyOf(const std::filesystem::path& path) const;
    const std::vector<Candidate>& CandidatesFor(const std::filesystem::path& wanted);

    bool m_ignoresCase;
    std::unordered_map<std::string, std::vector<Candidate>>
        m_candidates;                         // by wanted path; looked for once
    std::unordered_set<std::size_t> m_taken;  // two paths of one key cost a copy too many
};
