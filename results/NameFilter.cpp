#include "results/NameFilter.h"

#include "platform/CaseFold.h"

NameFilter::NameFilter(std::string_view part) : m_part(FoldCase(part)) {}

bool NameFilter::Takes(std::string_view name) const
{
    return m_part.empty() || FoldCase(name).find(m_part) != std::string::npos;
}
