// What a task shows, as values by the names of its window's controls. A worker writes them and goes on; the window fetches what
// has changed when it comes to it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

// A line of the report on restored files.
struct ReportRow
{
    std::size_t number = 0;  // in the order of their coming
    std::string path;
    std::string status;
    bool isGood = false;
    std::uint64_t missingBytes = 0;  // of a damaged file
};

struct BoardChanges
{
    std::map<std::string, std::string, std::less<>> texts;
    std::map<std::string, int, std::less<>> values;
    std::map<std::string, bool, std::less<>> visibilities;
    std::vector<ReportRow>
        rows;  // new ones, and those that were changed under the number that they had
};

// Any thread may call it. A call is complete when it returns: the getters know of it.
class ProgressBoard
{
public:
    // Called for the first change since the last Take(), on the thread that made it, without any lock: asks for a Take().
    explicit ProgressBoard(std::function<void()> onChange = {});

    void SetText(std::string_view name, std::string text);
    void SetValue(std::string_view name, int value);
    void SetVisible(std::string_view name, bool isVisible);
    // The number that it is given.
    std::size_t AddRow(ReportRow row);
    // The one of that number.
    void ChangeRow(ReportRow row);

    // Empty, 0 and false for a name that was not set.
    std::string Text(std::string_view name) const;
    int Value(std::string_view name) const;
    bool IsVisible(std::string_view name) const;
    std::vector<ReportRow> Rows() const;

    // All changes since the last call.
    BoardChanges Take();

private:
    // The caller holds the lock; true when a Take() is to be asked for.
    bool Mark();
    void Tell(bool isFirst) const;

    const std::function<void()> m_onChange;
    mutable std::mutex m_lock;
    bool m_isAsked = false;
    BoardChanges m_all;      // as it stands
    BoardChanges m_changed;  // since the last Take()
};
