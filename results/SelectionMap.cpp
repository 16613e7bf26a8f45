#include "results/SelectionMap.h"

#include <algorithm>
#include <cstring>
#include <limits>

KeptRow::KeptRow(const FoundRow& row)
    : m_fileSize(row.record.FileSize), m_at(row.at), m_doubleOf(row.doubleOf)
{
    std::string bytes(sizeof row.record, '\0');
    std::memcpy(bytes.data(), &row.record, sizeof row.record);
    const std::size_t last = bytes.find_last_not_of('\0');
    m_record.assign(bytes, 0, last == std::string::npos ? 0 : last + 1);
}

FoundRow KeptRow::Row() const
{
    FoundRow row;
    row.record = {};
    std::memcpy(&row.record, m_record.data(), m_record.size());
    row.at = m_at;
    row.doubleOf = m_doubleOf;
    return row;
}

SelectionKey KeyOf(const FoundRow& row)
{
    const SelectionKey letter = row.record.DriveLetter;
    const SelectionKey kind = row.record.EngineKind & 0xFFFFU;
    return letter << 48U | kind << 32U | row.at.place;
}

void SetSelected(SelectionMap& selection, const FoundRow& row, bool selected)
{
    if (selected) {
        selection.try_emplace(KeyOf(row), row);
    } else {
        selection.erase(KeyOf(row));
    }
}

std::uint64_t SelectedBytes(const SelectionMap& selection)
{
    constexpr auto Most = static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
    std::uint64_t sum = 0;
    for (const auto& [key, row] : selection) {
        sum += std::min(row.FileSize(), Most - sum);
    }
    return sum;
}
