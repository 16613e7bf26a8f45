#include "ui/list/ItemViewUI.h"

#include <QAbstractItemDelegate>
#include <QHeaderView>
#include <QHelpEvent>
#include <QMouseEvent>
#include <QPainter>

#include <utility>

namespace {

class CellDelegate : public QAbstractItemDelegate
{
public:
    explicit CellDelegate(CItemViewUI& view) : QAbstractItemDelegate(&view), m_view(view) {}

    void paint(QPainter* painter,
               const QStyleOptionViewItem& option,
               const QModelIndex& index) const override
    {
        m_view.DrawCell(*painter, option.rect, index);
    }
    QSize sizeHint(const QStyleOptionViewItem&, const QModelIndex& index) const override
    {
        return {0, m_view.HeightOf(index)};
    }
    bool helpEvent(QHelpEvent* event,
                   QAbstractItemView* view,
                   const QStyleOptionViewItem& option,
                   const QModelIndex& index) override
    {
        QString text = index.isValid() ? m_view.TipOf(index) : QString();
        if (text.isEmpty() && index.isValid()) {
            text = m_view.CutTextOf(option.rect, index);
        }
        if (text.isEmpty()) {
            return QAbstractItemDelegate::helpEvent(event, view, option, index);
        }
        ShowPlainToolTip(event->globalPos(), text, *view);
        return true;
    }

private:
    CItemViewUI& m_view;
};

}  // namespace

CItemViewUI::CItemViewUI(std::shared_ptr<Skin> skin) : WidgetControl<QTreeView>(std::move(skin))
{
    setItemDelegate(new CellDelegate(*this));
    setFrameShape(QFrame::NoFrame);
    setRootIsDecorated(false);
    setIndentation(0);
    setSelectionMode(QAbstractItemView::SingleSelection);
    setSelectionBehavior(QAbstractItemView::SelectRows);
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    setExpandsOnDoubleClick(false);
    viewport()->setMouseTracking(true);
    // The skin draws grounds and selections; Qt's own must not lie above them.
    QPalette colors = palette();
    colors.setColor(QPalette::Base, Qt::transparent);
    colors.setColor(QPalette::AlternateBase, Qt::transparent);
    colors.setColor(QPalette::Highlight, Qt::transparent);
    setPalette(colors);
}

void CItemViewUI::Invalidate()
{
    viewport()->update();
}

bool CItemViewUI::ReadAttribute(const QString& name, const QString& value)
{
    if (SetRowLook(m_rowLook, name, value)) {
        scheduleDelayedItemsLayout();
        return true;
    }
    static constexpr std::array<AttributeSetter<CItemViewUI>, 3> Table = {{
        {"hscrollbar",
         [](CItemViewUI& view, const QString& text) {
             view.setHorizontalScrollBarPolicy(ParseTruth(text) ? Qt::ScrollBarAsNeeded
                                                                : Qt::ScrollBarAlwaysOff);
         }},
        {"vscrollbar",
         [](CItemViewUI& view, const QString& text) {
             view.setVerticalScrollBarPolicy(ParseTruth(text) ? Qt::ScrollBarAsNeeded
                                                              : Qt::ScrollBarAlwaysOff);
         }},
        {"accname", [](CItemViewUI& view, const QString& text) { view.setAccessibleName(text); }},
    }};
    return SetFromTable(Table, *this, name, value) || VisualControl::ReadAttribute(name, value);
}

void CItemViewUI::paintEvent(QPaintEvent* event)
{
    {
        QPainter painter(viewport());
        DrawGround(painter, viewport()->rect());
    }
    QTreeView::paintEvent(event);
    // With a current row the mark is there.
    if (hasFocus() && !currentIndex().isValid()) {
        QPainter painter(viewport());
        DrawFocusMark(painter, viewport()->rect());
    }
}

bool CItemViewUI::IsRowSelected(const QModelIndex& index) const
{
    return selectionModel() != nullptr && selectionModel()->isSelected(index.siblingAtColumn(0));
}

QColor CItemViewUI::RowTextColor(const QModelIndex& index, bool isRowEnabled) const
{
    if (!isEnabled() || !isRowEnabled) {
        return m_rowLook.disabledTextColor;
    }
    return IsRowSelected(index) && m_rowLook.selectedTextColor.isValid()
               ? m_rowLook.selectedTextColor
               : m_rowLook.textColor;
}

void CItemViewUI::drawRow(QPainter* painter,
                          const QStyleOptionViewItem& option,
                          const QModelIndex& index) const
{
    const QRect area(0, option.rect.top(), viewport()->width(), option.rect.height());
    DrawRowGround(*painter, *GetSkin(), m_rowLook, area, IsRowSelected(index),
                  isEnabled() && m_hotRow == index.siblingAtColumn(0), index.row() % 2 == 1);
    QTreeView::drawRow(painter, option, index);
    if (hasFocus() && currentIndex().isValid() &&
        currentIndex().siblingAtColumn(0) == index.siblingAtColumn(0)) {
        DrawFocusMark(*painter, area);
    }
}

void CItemViewUI::drawBranches(QPainter*, const QRect&, const QModelIndex&) const {}

void CItemViewUI::SetHotRow(const QModelIndex& index)
{
    if (m_hotRow != index) {
        m_hotRow = index;
        viewport()->update();
    }
}

bool CItemViewUI::viewportEvent(QEvent* event)
{
    if (event->type() == QEvent::MouseMove) {
        SetHotRow(indexAt(static_cast<QMouseEvent*>(event)->pos()).siblingAtColumn(0));
    } else if (event->type() == QEvent::Leave) {
        SetHotRow({});
    }
    return QTreeView::viewportEvent(event);
}
