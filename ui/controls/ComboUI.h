// A field that shows one of several texts and opens the list of them. Sends "itemselect" with the index when the user has chosen
// another: neither the wheel nor a single arrow key chooses, since what follows can take long.
#pragma once

#include "ui/controls/VisualControl.h"

#include <QComboBox>

class CComboUI : public WidgetControl<QComboBox>
{
public:
    explicit CComboUI(std::shared_ptr<Skin> skin);
    QString GetClass() const override { return QStringLiteral("ComboUI"); }

    // Plain texts. Nothing is sent.
    void SetTexts(const QStringList& texts, int chosen);
    int GetCurSel() const { return currentIndex(); }
    // As the user does.
    void Choose(int index);

protected:
    void paintEvent(QPaintEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void showPopup() override;
    void OnLookChanged() override;

private:
    int m_chosen = -1;
};
