// Buttons, and options that stay chosen.
#pragma once

#include "ui/controls/VisualControl.h"

#include <QCheckBox>
#include <QPushButton>

// The pictures of the states; one that is missing falls back to the plain one.
struct StateImages
{
    QString normal;
    QString hot;
    QString pushed;
    QString disabled;
    QString selected;
    QString selectedHot;

    const QString& Of(bool isEnabled, bool isHot, bool isPushed, bool isSelected) const;
    // "normalimage", "hotimage", "pushedimage", "disabledimage", "selectedimage", "selectedhotimage"; false for another name.
    bool Set(const QString& name, const QString& value);
};

// Sends "click".
class CButtonUI : public WidgetControl<QPushButton>
{
public:
    explicit CButtonUI(std::shared_ptr<Skin> skin);
    QString GetClass() const override { return QStringLiteral("ButtonUI"); }

protected:
    bool ReadAttribute(const QString& name, const QString& value) override;
    void paintEvent(QPaintEvent* event) override;
    QString StateImage() const override;

private:
    StateImages m_images;
};

// Sends "selectchanged" when its state changes. Of a group at most one is chosen, and only the newly chosen one sends.
class COptionUI : public WidgetControl<QCheckBox>
{
public:
    explicit COptionUI(std::shared_ptr<Skin> skin);
    QString GetClass() const override { return QStringLiteral("OptionUI"); }

    bool IsSelected() const { return isChecked(); }
    // Nothing is sent when it is in that state already.
    void Selected(bool isSelected);
    const QString& GetGroup() const { return m_group; }
    void SetGroup(const QString& group) { m_group = group; }

protected:
    bool ReadAttribute(const QString& name, const QString& value) override;
    void paintEvent(QPaintEvent* event) override;
    bool hitButton(const QPoint& place) const override { return rect().contains(place); }
    // What a click does: one of a group is never taken back by it.
    void nextCheckState() override;
    // In a group the arrows choose the one before or after.
    void keyPressEvent(QKeyEvent* event) override;
    QString StateImage() const override;
    bool IsSelectedLook() const override { return isChecked(); }

private:
    std::vector<COptionUI*> OthersOfGroup() const;
    void ChooseNeighbour(bool isForward);

    QString m_group;
    StateImages m_images;
};
