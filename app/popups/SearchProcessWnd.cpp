#include "app/popups/SearchProcessWnd.h"

CSearchProcessWnd::CSearchProcessWnd() : CTaskWnd(QStringLiteral("SearchProcessWnd.xml")) {}

void CSearchProcessWnd::SetFilter(std::string_view wildcardFilter)
{
    m_filter = wildcardFilter;
}
