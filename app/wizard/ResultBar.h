// The bar above the found files: a field that lists only those whose name has what is typed there, and an option that hides
// doubles.
#pragma once

#include "results/NameFilter.h"
#include "ui/controls/ButtonUI.h"
#include "ui/controls/EditUI.h"
#include "ui/list/ListUI.h"
#include "ui/windows/WindowImplBase.h"

#include <QObject>
#include <QTimer>

#include <cstddef>
#include <functional>

// User-interface thread.
class ResultBar : public QObject
{
public:
    // The window's controls are there.
    explicit ResultBar(const WindowImplBase& window);

    std::function<void(const NameFilter& filter)> onFilter;
    std::function<void(bool hides)> onHideDoubles;

    // What is typed, once the user stands still for a moment. An empty field takes every name at once.
    void ClearFilter() { m_field->clear(); }
    bool HidesDoubles() const { return m_hideDoubles->IsSelected() && m_hideDoubles->IsEnabled(); }
    // How many the results have; without any there is nothing to hide.
    void SetDoubles(std::size_t count);
    // How many files of the type are listed; nothing is said when that is all of them.
    void ShowCounts(std::size_t listed, std::size_t all);
    // In the language that is chosen by now.
    void RewriteTexts();

protected:
    // Escape empties the field, there and in the list.
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void OnTyped(const QString& text);
    void WriteTexts();

    CEditUI* m_field;
    CControlUI* m_counts;
    COptionUI* m_hideDoubles;
    QTimer m_delay;
    std::size_t m_doubles = 0;
    std::size_t m_listed = 0;
    std::size_t m_all = 0;
};
