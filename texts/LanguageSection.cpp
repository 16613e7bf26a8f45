#include "texts/LanguageSection.h"

std::string LanguageSection::Get(std::string_view key)
{
    const std::scoped_lock guard(m_lock);
    const auto found = m_texts.find(key);
    if (found != m_texts.end()) {
        return found->second;
    }
    m_texts.emplace(key, std::string());
    return {};
}

void LanguageSection::Set(std::string_view key, std::string_view value)
{
    const std::scoped_lock guard(m_lock);
    m_texts.insert_or_assign(std::string(key), std::string(value));
}

void LanguageSection::Clear()
{
    const std::scoped_lock guard(m_lock);
    m_texts.clear();
}

std::vector<std::pair<std::string, std::string>> LanguageSection::Entries() const
{
    const std::scoped_lock guard(m_lock);
    return {m_texts.begin(), m_texts.end()};
}
