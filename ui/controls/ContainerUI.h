// The layouts: rows, columns and pages of other controls.
#pragma once

#include "ui/controls/BoxLayout.h"

#include <QWidget>

class CContainerUI : public WidgetControl<QWidget>
{
public:
    CContainerUI(std::shared_ptr<Skin> skin, Qt::Orientation direction);

    int GetCount() const override;
    CControlUI* GetItemAt(int index) const override;
    // Takes controls that have a widget.
    bool Add(std::unique_ptr<CControlUI>& child) override;
    // Before the child at the index, or at the end.
    virtual bool AddAt(std::unique_ptr<CControlUI>& child, int index);
    // Deletes the child.
    void RemoveAt(int index);
    QSize ContentSize() const override { return m_layout->sizeHint(); }

protected:
    bool ReadAttribute(const QString& name, const QString& value) override;
    void paintEvent(QPaintEvent* event) override;

private:
    BoxLayout* m_layout;  // of the widget
};

class CHorizontalLayoutUI : public CContainerUI
{
public:
    explicit CHorizontalLayoutUI(std::shared_ptr<Skin> skin);
    QString GetClass() const override { return QStringLiteral("HorizontalLayoutUI"); }
};

class CVerticalLayoutUI : public CContainerUI
{
public:
    explicit CVerticalLayoutUI(std::shared_ptr<Skin> skin);
    QString GetClass() const override { return QStringLiteral("VerticalLayoutUI"); }
};

// Shows one of its children at a time.
class CTabLayoutUI : public CContainerUI
{
public:
    explicit CTabLayoutUI(std::shared_ptr<Skin> skin);
    QString GetClass() const override { return QStringLiteral("TabLayoutUI"); }

    bool AddAt(std::unique_ptr<CControlUI>& child, int index) override;
    // False, and nothing changes, when there is no such page.
    bool SelectItem(int index);
    // -1 without pages.
    int GetCurSel() const { return m_selected; }
    void OnBuilt() override;

protected:
    bool ReadAttribute(const QString& name, const QString& value) override;

private:
    void ShowSelected();

    int m_selected = -1;
    int m_firstSelected = 0;
};
