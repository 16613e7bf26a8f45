// A button that tells when it becomes hot: "onhot" and "offhot". The keyboard's focus counts as the mouse does, so that what
// a hot button explains can be read without a mouse.
#pragma once

#include "ui/controls/ButtonUI.h"

class CButtonExUI : public CButtonUI
{
public:
    using CButtonUI::CButtonUI;
    QString GetClass() const override { return QStringLiteral("ButtonExUI"); }

protected:
    void enterEvent(QEnterEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    bool IsHot() const override { return m_isHot; }

private:
    void SetHot(bool isHot);

    bool m_isHot = false;
};
