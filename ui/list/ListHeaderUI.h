// The head of a list: its items say how many columns the list has and how wide they are.
#pragma once

#include "ui/controls/VisualControl.h"

#include <QHeaderView>

#include <memory>
#include <vector>

class CListHeaderUI;

// Sends "headerclick".
class CListHeaderItemUI : public CControlUI
{
public:
    CListHeaderItemUI() = default;
    QString GetClass() const override { return QStringLiteral("ListHeaderItemUI"); }

    QString GetText() const override { return m_text; }
    void SetText(const QString& text) override;
    void Invalidate() override;
    CControlUI* GetParent() const override;
    const Skin* GetSkin() const override;

    // 0 for a column that shares what the others leave.
    int GetWidth() const { return m_width; }
    // What such a column has at least, also when the columns are wider than the list together, which can be scrolled then.
    int GetMinimumWidth() const { return m_minimumWidth; }
    // What is read out for the column: the text, or what the markup says for one with a picture alone.
    QString GetPlainText() const;
    void Draw(QPainter& painter, const QRect& area) const;
    // Whether the text has less room there than it needs.
    bool IsTextCut(const QRect& area) const;

protected:
    bool ReadAttribute(const QString& name, const QString& value) override;

private:
    friend class CListHeaderUI;

    TextStyle StyleIn(const QRect& area) const;

    CListHeaderUI* m_header = nullptr;
    QString m_text;
    QString m_accessibleName;
    ControlLook m_look;
    int m_width = 0;
    int m_minimumWidth = 0;
};

// The keyboard comes to it by Tab; arrows go from item to item, Space and Enter click.
class CListHeaderUI : public WidgetControl<QHeaderView>
{
public:
    explicit CListHeaderUI(std::shared_ptr<Skin> skin);
    QString GetClass() const override { return QStringLiteral("ListHeaderUI"); }

    int GetCount() const override { return static_cast<int>(m_items.size()); }
    CListHeaderItemUI* GetItemAt(int index) const override;
    bool Add(std::unique_ptr<CControlUI>& child) override;
    // Called by the list once its columns stand.
    void ApplyWidths();
    // The list that it belongs to; null before.
    void SetBuiltCallback(std::function<void()> built) { m_built = std::move(built); }
    void OnBuilt() override;
    void Invalidate() override { viewport()->update(); }

protected:
    void paintEvent(QPaintEvent* event) override;
    void paintSection(QPainter* painter, const QRect& rect, int logicalIndex) const override;
    QSize sizeHint() const override;
    void resizeEvent(QResizeEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void OnTextChanged() override {}

private:
    void ShareWidth();

    std::vector<std::unique_ptr<CListHeaderItemUI>> m_items;
    std::function<void()> m_built;
    int m_marked = 0;
};
