// The rows of a list as a grid of pictures, each with its name and its check mark. It has no rows of its own: order, current row
// and marks are the list's, whose notifications come from the list as ever. Space changes the mark of the current row.
#pragma once

#include "ui/list/ListUI.h"

#include <QImage>
#include <QListView>

#include <functional>
#include <vector>

class CGridUI : public WidgetControl<QListView>
{
public:
    explicit CGridUI(std::shared_ptr<Skin> skin);
    QString GetClass() const override { return QStringLiteral("GridUI"); }
    void Invalidate() override { viewport()->update(); }

    // Its columns are there. Names are taken from the column after that of the marks. The list goes later.
    void ShowRowsOf(CListUI& list);
    // The picture of a row; null while there is none, and its icon is drawn.
    std::function<const QImage*(const CListUI::Row& row)> picture;
    // It was drawn: other rows may be on the screen now.
    std::function<void()> onDrawn;
    // Those that are on the screen, in their order.
    std::vector<CListUI::Row*> ShownRows() const;

    // For the delegate.
    void DrawCell(QPainter& painter, const QRect& cell, const QModelIndex& index, bool isHot);
    QString NameOf(const QModelIndex& index) const;
    // What the list tells of the same row.
    QString TipOf(const QModelIndex& index) const;

protected:
    bool ReadAttribute(const QString& name, const QString& value) override;
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void OnTextChanged() override {}

private:
    void DrawPicture(QPainter& painter, const QRect& area, const CListUI::Row& row);
    // True when the place is that of a mark, which has changed.
    bool PressMark(const QPoint& place);

    CListUI* m_list = nullptr;
    RowLook m_look;
};
