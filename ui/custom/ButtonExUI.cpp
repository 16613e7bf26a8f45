#include "ui/custom/ButtonExUI.h"

#include <QEnterEvent>
#include <QFocusEvent>

void CButtonExUI::SetHot(bool isHot)
{
    if (m_isHot != isHot && (!isHot || isEnabled())) {
        m_isHot = isHot;
        update();
        SendNotify(isHot ? NotifyHot : NotifyNotHot);
    }
}

void CButtonExUI::enterEvent(QEnterEvent* event)
{
    CButtonUI::enterEvent(event);
    SetHot(true);
}

void CButtonExUI::leaveEvent(QEvent* event)
{
    CButtonUI::leaveEvent(event);
    SetHot(false);
}

void CButtonExUI::focusInEvent(QFocusEvent* event)
{
    CButtonUI::focusInEvent(event);
    SetHot(true);
}

void CButtonExUI::focusOutEvent(QFocusEvent* event)
{
    CButtonUI::focusOutEvent(event);
    SetHot(underMouse());
}
