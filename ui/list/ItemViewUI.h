// What lists and trees share: a view over a model whose rows the skin draws. No row is a widget.
#pragma once

#include "ui/controls/VisualControl.h"
#include "ui/list/RowLook.h"

#include <QPersistentModelIndex>
#include <QTreeView>

class CItemViewUI : public WidgetControl<QTreeView>
{
public:
    explicit CItemViewUI(std::shared_ptr<Skin> skin);

    const RowLook& RowsLook() const { return m_rowLook; }
    void Invalidate() override;

    // For the delegate.
    virtual void DrawCell(QPainter& painter, const QRect& cell, const QModelIndex& index) = 0;
    virtual int HeightOf(const QModelIndex& index) const = 0;
    // The text of a cell when it is cut there; empty otherwise.
    virtual QString CutTextOf(const QRect& cell, const QModelIndex& index) const = 0;
    // What is shown when the mouse rests there, whether a text is cut or not; empty for nothing.
    virtual QString TipOf(const QModelIndex&) const { return {}; }

protected:
    bool ReadAttribute(const QString& name, const QString& value) override;
    void paintEvent(QPaintEvent* event) override;
    void drawRow(QPainter* painter,
                 const QStyleOptionViewItem& option,
                 const QModelIndex& index) const override;
    void
    drawBranches(QPainter* painter, const QRect& rect, const QModelIndex& index) const override;
    bool viewportEvent(QEvent* event) override;
    void OnTextChanged() override {}

    QColor RowTextColor(const QModelIndex& index, bool isRowEnabled) const;
    bool IsRowSelected(const QModelIndex& index) const;

    RowLook m_rowLook;

private:
    void SetHotRow(const QModelIndex& index);

    QPersistentModelIndex m_hotRow;
};
