#include "app/tasks/ProgressBoard.h"

#include <utility>

namespace {

template <typename Map>
typename Map::mapped_type
FindOr(const Map& map, std::string_view name, typename Map::mapped_type otherwise)
{
    const auto found = map.find(name);
    return found != map.end() ? found->second : std::move(otherwise);
}

}  // namespace

ProgressBoard::ProgressBoard(std::function<void()> onChange) : m_onChange(std::move(onChange)) {}

bool ProgressBoard::Mark()
{
    return !std::exchange(m_isAsked, true);
}

void ProgressBoard::Tell(bool isFirst) const
{
    if (isFirst && m_onChange) {
        m_onChange();
    }
}

void ProgressBoard::SetText(std::string_view name, std::string text)
{
    std::unique_lock held(m_lock);
    m_changed.texts.insert_or_assign(std::string(name), text);
    m_all.texts.insert_or_assign(std::string(name), std::move(text));
    const bool isFirst = Mark();
    held.unlock();
    Tell(isFirst);
}

void ProgressBoard::SetValue(std::string_view name, int value)
{
    std::unique_lock held(m_lock);
    m_changed.values.insert_or_assign(std::string(name), value);
    m_all.values.insert_or_assign(std::string(name), value);
    const bool isFirst = Mark();
    held.unlock();
    Tell(isFirst);
}

void ProgressBoard::SetVisible(std::string_view name, bool isVisible)
{
    std::unique_lock held(m_lock);
    m_changed.visibilities.insert_or_assign(std::string(name), isVisible);
    m_all.visibilities.insert_or_assign(std::string(name), isVisible);
    const bool isFirst = Mark();
    held.unlock();
    Tell(isFirst);
}

std::size_t ProgressBoard::AddRow(ReportRow row)
{
    std::unique_lock held(m_lock);
    row.number = m_all.rows.size();
    const std::size_t number = row.number;
    m_changed.rows.push_back(row);
    m_all.rows.push_back(std::move(row));
    const bool isFirst = Mark();
    held.unlock();
    Tell(isFirst);
    return number;
}

void ProgressBoard::ChangeRow(ReportRow row)
{
    std::unique_lock held(m_lock);
    if (row.number >= m_all.rows.size()) {
        return;
    }
    m_changed.rows.push_back(row);
    m_all.rows[row.number] = std::move(row);
    const bool isFirst = Mark();
    held.unlock();
    Tell(isFirst);
}

std::string ProgressBoard::Text(std::string_view name) const
{
    const std::lock_guard held(m_lock);
    return FindOr(m_all.texts, name, {});
}

int ProgressBoard::Value(std::string_view name) const
{
    const std::lock_guard held(m_lock);
    return FindOr(m_all.values, name, 0);
}

bool ProgressBoard::IsVisible(std::string_view name) const
{
    const std::lock_guard held(m_lock);
    return FindOr(m_all.visibilities, name, false);
}

std::vector<ReportRow> ProgressBoard::Rows() const
{
    const std::lock_guard held(m_lock);
    return m_all.rows;
}

BoardChanges ProgressBoard::Take()
{
    const std::lock_guard held(m_lock);
    m_isAsked = false;
    return std::exchange(m_changed, {});
}
