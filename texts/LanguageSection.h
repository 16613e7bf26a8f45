// The texts of one section of a language file, by key.
#pragma once

#include <map>
#include <mutex>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

// May be used from any thread: workers ask for texts while the windows do, and asking can add a key.
class LanguageSection
{
public:
    LanguageSection() = default;
    LanguageSection(const LanguageSection&) = delete;
    LanguageSection& operator=(const LanguageSection&) = delete;
    ~LanguageSection() = default;

    // The value of a key. One that is missing is added with an empty text.
    std::string Get(std::string_view key);
    // Adds a key, or replaces its value.
    void Set(std::string_view key, std::string_view value);
    void Clear();
    // All keys with their values, in the order of the keys.
    std::vector<std::pair<std::string, std::string>> Entries() const;

private:
    mutable std::mutex m_lock;
    std::map<std::string, std::string, std::less<>> m_texts;
};
