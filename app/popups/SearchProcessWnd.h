// Gathers what was found on targets, after the results of the state.
#pragma once

#include "app/popups/TaskWnd.h"

#include <string>
#include <string_view>
#include <vector>

class CSearchProcessWnd : public CTaskWnd
{
public:
    CSearchProcessWnd();
    CSearchProcessWnd(const CSearchProcessWnd&) = delete;
    CSearchProcessWnd& operator=(const CSearchProcessWnd&) = delete;
    ~CSearchProcessWnd() override;

    std::vector<RecoveryTarget*> targets;
    // Such as "*.jpg|*.png".
    void SetFilter(std::string_view wildcardFilter);

    QString GetWindowClassName() const override { return QStringLiteral("UISearchProcessWnd"); }

protected:
    void RunTask(const TaskContext& context) override;
    std::optional<int> CodeOfCancel() const override { return CloseCancelled; }

private:
    std::string m_filter;  // as the engines read it
};
