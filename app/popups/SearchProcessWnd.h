// Gathers what was found on targets.
#pragma once

#include "app/popups/TaskWnd.h"

#include <string>
#include <string_view>
#include <vector>

class CSearchProcessWnd : public CTaskWnd
{
public:
    CSearchProcessWnd();

    std::vector<RecoveryTarget*> targets;
    // Such as "*.jpg|*.png".
    void SetFilter(std::string_view wildcardFilter);

    QString GetWindowClassName() const override { return QStringLiteral("UISearchProcessWnd"); }

private:
    std::string m_filter;  // as the engines read it
};
