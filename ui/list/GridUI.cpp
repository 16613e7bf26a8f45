#include "ui/list/GridUI.h"

#include <QAbstractItemDelegate>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QPointer>

#include <algorithm>

namespace {

constexpr QSize CellSize = {124, 126};
constexpr QMargins CellMargins = {2, 2, 2, 2};
constexpr QMargins PictureMargins = {8, 8, 8, 30};
constexpr int NameHeight = 24;
constexpr QRect MarkPlace = {7, 7, 16, 16};
constexpr QRect MarkReach = {0, 0, 30, 30};  // a mark is small

class GridDelegate : public QAbstractItemDelegate
{
public:
    explicit GridDelegate(CGridUI& grid) : QAbstractItemDelegate(&grid), m_grid(grid) {}

    void paint(QPainter* painter,
               const QStyleOptionViewItem& option,
               const QModelIndex& index) const override
    {
        m_grid.DrawCell(*painter, option.rect, index,
                        option.state.testFlag(QStyle::State_MouseOver));
    }
    QSize sizeHint(const QStyleOptionViewItem&, const QModelIndex&) const override
    {
        return CellSize;
    }
    bool helpEvent(QHelpEvent* event,
                   QAbstractItemView*,
                   const QStyleOptionViewItem&,
                   const QModelIndex& index) override
    {
        ShowPlainToolTip(event->globalPos(), m_grid.TipOf(index), m_grid);
        return true;
    }

private:
    CGridUI& m_grid;
};

}  // namespace

CGridUI::CGridUI(std::shared_ptr<Skin> skin) : WidgetControl<QListView>(std::move(skin))
{
    setItemDelegate(new GridDelegate(*this));
    setFrameShape(QFrame::NoFrame);
    setFlow(QListView::LeftToRight);
    setWrapping(true);
    setResizeMode(QListView::Adjust);
    setUniformItemSizes(true);
    setGridSize(CellSize);
    setSelectionMode(QAbstractItemView::SingleSelection);
    setSelectionBehavior(QAbstractItemView::SelectRows);
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    viewport()->setMouseTracking(true);
    // The skin draws the ground; Qt's own must not lie above it.
    QPalette colors = palette();
    colors.setColor(QPalette::Base, Qt::transparent);
    setPalette(colors);
}

void CGridUI::ShowRowsOf(CListUI& list)
{
    m_list = &list;
    setModel(list.model());
    setModelColumn(
        list.GetCheckColumn());  // for assistive software: with the name, and to be ticked
    setSelectionModel(list.selectionModel());
    list.SetFollower([grid = QPointer<CGridUI>(this)] {
        if (grid) {
            grid->Invalidate();
        }
    });
}

std::vector<CListUI::Row*> CGridUI::ShownRows() const
{
    std::vector<CListUI::Row*> rows;
    if (m_list == nullptr || !isVisible()) {
        return rows;
    }
    const int columns = std::max(viewport()->width() / CellSize.width(), 1);
    const int first = verticalOffset() / CellSize.height() * columns;
    for (int i = first; i < m_list->GetCount(); ++i) {
        const QRect cell = visualRect(model()->index(i, modelColumn()));
        if (cell.top() > viewport()->height()) {
            break;
        }
        rows.push_back(m_list->GetItemAt(i));
    }
    return rows;
}

QString CGridUI::TipOf(const QModelIndex& index) const
{
    const QString tip = m_list != nullptr ? m_list->TipOf(index) : QString();
    return tip.isEmpty() ? NameOf(index) : tip;
}

QString CGridUI::NameOf(const QModelIndex& index) const
{
    const CListUI::Row* row = m_list != nullptr ? m_list->GetItemAt(index.row()) : nullptr;
    return row != nullptr ? row->GetColumnText(modelColumn() + 1) : QString();
}

void CGridUI::DrawPicture(QPainter& painter, const QRect& area, const CListUI::Row& row)
{
    const QImage* const image = picture ? picture(row) : nullptr;
    if (image == nullptr) {
        DrawCentered(painter, *GetSkin(), area, row.GetColumnImage(modelColumn() + 1));
        return;
    }
    // Small ones are not made larger.
    const QSize size =
        image->size().boundedTo(image->size().scaled(area.size(), Qt::KeepAspectRatio));
    QRect place(QPoint(0, 0), size.expandedTo(QSize(1, 1)));
    place.moveCenter(area.center());
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawImage(place, *image);
}

void CGridUI::DrawCell(QPainter& painter, const QRect& cell, const QModelIndex& index, bool isHot)
{
    const CListUI::Row* row = m_list != nullptr ? m_list->GetItemAt(index.row()) : nullptr;
    if (row == nullptr) {
        return;
    }
    const bool isSelected = selectionModel()->isSelected(index);
    const QRect area = cell.marginsRemoved(CellMargins);
    DrawRowGround(painter, *GetSkin(), m_look, area, isSelected, isHot, false);
    DrawPicture(painter, cell.marginsRemoved(PictureMargins), *row);
    DrawCentered(painter, *GetSkin(), MarkPlace.translated(cell.topLeft()),
                 m_list->GetCheckImage(row->IsChecked()));
    QRect name = area;
    name.setTop(area.bottom() + 1 - NameHeight);
    const bool isChosenText = isSelected && m_look.selectedTextColor.isValid();
    DrawRuns(
        painter, *GetSkin(), ParseTextMarkup(NameOf(index), false),
        {m_look.font,
         isChosenText ? m_look.selectedTextColor : m_look.textColor,
         {name.marginsRemoved(m_look.textPadding), Qt::AlignHCenter | Qt::AlignVCenter, false}});
    if (hasFocus() && currentIndex().row() == index.row()) {
        DrawFocusMark(painter, area);
    }
}

bool CGridUI::ReadAttribute(const QString& name, const QString& value)
{
    if (name == QLatin1String("accname")) {
        setAccessibleName(value);
        return true;
    }
    return SetRowLook(m_look, name, value) || VisualControl::ReadAttribute(name, value);
}

void CGridUI::paintEvent(QPaintEvent* event)
{
    {
        QPainter painter(viewport());
        DrawGround(painter, viewport()->rect());
    }
    QListView::paintEvent(event);
    if (hasFocus() && !currentIndex().isValid()) {
        QPainter painter(viewport());
        DrawFocusMark(painter, viewport()->rect());
    }
    if (onDrawn) {
        onDrawn();
    }
}

bool CGridUI::PressMark(const QPoint& place)
{
    const QModelIndex index = indexAt(place);
    if (!index.isValid() || !isEnabled() ||
        !MarkReach.translated(visualRect(index).topLeft()).contains(place)) {
        return false;
    }
    m_list->GetItemAt(index.row())->ToggleCheck();
    return true;
}

void CGridUI::mousePressEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton || !PressMark(event->pos())) {
        QListView::mousePressEvent(event);
    }
}

void CGridUI::mouseDoubleClickEvent(QMouseEvent* event)
{
    // Two quick clicks on a mark change it twice.
    if (event->button() == Qt::LeftButton) {
        (void)PressMark(event->pos());
    }
}

void CGridUI::keyPressEvent(QKeyEvent* event)
{
    CListUI::Row* const row = m_list != nullptr ? m_list->GetItemAt(m_list->GetCurSel()) : nullptr;
    if (row != nullptr && event->key() == Qt::Key_Space) {
        row->ToggleCheck();
    } else {
        QListView::keyPressEvent(event);
    }
}
