#include "ui/list/ListUI.h"

#include "ui/list/ListModel.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>

#include <algorithm>
#include <numeric>
#include <utility>

CListUI::CListUI(std::shared_ptr<Skin> skin)
    : CItemViewUI(std::move(skin)), m_model(new ListModel(*this))
{
    setItemsExpandable(false);
    setUniformRowHeights(true);
    setModel(m_model);
    setHeaderHidden(true);
}

CListUI::~CListUI()
{
    // The view outlives the rows by a moment, and must not ask for them.
    m_isQuiet = true;
    setModel(nullptr);
}

void CListUI::Invalidate()
{
    CItemViewUI::Invalidate();
    if (m_onLook) {
        m_onLook();
    }
}

CListUI::Row* CListUI::GetItemAt(int index) const
{
    return index >= 0 && index < GetCount() ? m_rows[static_cast<std::size_t>(index)].get()
                                            : nullptr;
}

void CListUI::Renumber() const
{
    if (!m_areNumbered) {
        for (std::size_t i = 0; i < m_rows.size(); ++i) {
            m_rows[i]->m_index = static_cast<int>(i);
        }
        m_areNumbered = true;
    }
}

int CListUI::GetItemIndex(const CControlUI* row) const
{
    const auto* own = dynamic_cast<const Row*>(row);
    if (own == nullptr || own->m_list != this) {
        return -1;
    }
    Renumber();
    return own->m_index;
}

int CListUI::GetColumnCount() const
{
    return m_header != nullptr ? std::max(m_header->GetCount(), 1) : 1;
}

bool CListUI::Add(std::unique_ptr<CControlUI>& child)
{
    if (auto* header = dynamic_cast<CListHeaderUI*>(child.get())) {
        if (m_header != nullptr) {
            return false;
        }
        (void)child.release();
        UseHeader(*header);
        return true;
    }
    return AddAt(child, GetCount());
}

void CListUI::UseHeader(CListHeaderUI& header)
{
    m_header = &header;
    setHeader(&header);
    // The view has just taken that back, since it does not sort by itself.
    header.setSectionsClickable(true);
    setHeaderHidden(!header.IsVisible());
    header.SetBuiltCallback([this] {
        // The columns are known only now.
        m_model->BeginReset();
        m_model->EndReset();
        m_header->ApplyWidths();
    });
}

bool CListUI::AddAt(std::unique_ptr<CControlUI>& child, int index)
{
    return InsertRow(child, index);
}

bool CListUI::InsertRow(std::unique_ptr<CControlUI>& child, int index)
{
    auto* row = dynamic_cast<Row*>(child.get());
    if (row == nullptr || index < 0 || index > GetCount()) {
        return false;
    }
    m_model->BeginInsert(index, index);
    (void)child.release();
    m_areNumbered = m_areNumbered && index == GetCount();
    m_rows.emplace(m_rows.begin() + index, row);
    row->m_list = this;
    row->m_index = index;
    m_model->EndInsert();
    if (!row->IsVisible() || row->m_height > 0) {
        RefreshRow(*row);
    }
    return true;
}

void CListUI::AddRows(std::vector<std::unique_ptr<Row>> rows)
{
    if (rows.empty()) {
        return;
    }
    const int first = GetCount();
    m_model->BeginInsert(first, first + static_cast<int>(rows.size()) - 1);
    m_rows.reserve(m_rows.size() + rows.size());
    for (std::unique_ptr<Row>& row : rows) {
        row->m_list = this;
        row->m_index = GetCount();
        m_rows.push_back(std::move(row));
    }
    m_model->EndInsert();
}

void CListUI::ReplaceRows(std::vector<std::unique_ptr<Row>> rows, int selected)
{
    const bool wasQuiet = std::exchange(m_isQuiet, true);
    DeleteAllRows();
    AddRows(std::move(rows));
    SelectItem(selected);
    m_isQuiet = wasQuiet;
}

bool CListUI::Remove(CControlUI* row)
{
    return DeleteRow(GetItemIndex(row));
}

bool CListUI::RemoveAt(int index)
{
    return DeleteRow(index);
}

void CListUI::RemoveAll()
{
    DeleteAllRows();
}

bool CListUI::DeleteRow(int index)
{
    if (GetItemAt(index) == nullptr) {
        return false;
    }
    const bool wasQuiet = std::exchange(m_isQuiet, true);
    if (GetCurSel() == index) {
        SelectItem(-1);
    }
    m_model->BeginRemove(index);
    const std::unique_ptr<Row> removed = std::move(m_rows[static_cast<std::size_t>(index)]);
    m_rows.erase(m_rows.begin() + index);
    m_areNumbered = m_areNumbered && index == GetCount();
    m_pressedRow = nullptr;
    m_model->EndRemove();
    m_isQuiet = wasQuiet;
    return true;
}

void CListUI::DeleteAllRows()
{
    const bool wasQuiet = std::exchange(m_isQuiet, true);
    m_model->BeginReset();
    // Gone only when nothing asks for them any more.
    const std::vector<std::unique_ptr<Row>> removed = std::exchange(m_rows, {});
    m_areNumbered = true;
    m_pressedRow = nullptr;
    m_model->EndReset();
    m_isQuiet = wasQuiet;
}

bool CListUI::SelectItem(int index)
{
    if (index < -1 || index >= GetCount()) {
        return false;
    }
    if (index < 0) {
        clearSelection();
    }
    setCurrentIndex(index < 0 ? QModelIndex() : m_model->index(index, 0));
    return true;
}

int CListUI::GetCurSel() const
{
    return currentIndex().isValid() ? currentIndex().row() : -1;
}

void CListUI::currentChanged(const QModelIndex& current, const QModelIndex& previous)
{
    CItemViewUI::currentChanged(current, previous);
    if (current.isValid() && !m_isQuiet && current.row() != previous.row()) {
        SendNotify(NotifyItemSelect, current.row());
    }
}

void CListUI::SortItems(RowCompare compare, std::intptr_t context)
{
    Renumber();
    m_model->BeginSort();
    std::stable_sort(
        m_rows.begin(), m_rows.end(),
        [compare, context](const auto& a, const auto& b) { return compare(*a, *b, context) < 0; });
    std::vector<int> newIndex(m_rows.size());
    for (std::size_t i = 0; i < m_rows.size(); ++i) {
        newIndex[static_cast<std::size_t>(m_rows[i]->m_index)] = static_cast<int>(i);
    }
    m_areNumbered = false;
    m_model->EndSort(newIndex);
}

void CListUI::RefreshRow(const Row& row)
{
    const int index = GetItemIndex(&row);
    if (row.m_height > 0 && uniformRowHeights()) {
        setUniformRowHeights(false);
    }
    if (isRowHidden(index, {}) == row.IsVisible()) {
        setRowHidden(index, {}, !row.IsVisible());
    }
    scheduleDelayedItemsLayout();
}

int CListUI::HeightOf(const QModelIndex& index) const
{
    const Row* row = GetItemAt(index.row());
    return row != nullptr && row->m_height > 0 ? row->m_height : m_rowLook.height;
}

TextStyle CListUI::CellStyle(const QRect& cell, const QModelIndex& index) const
{
    const Row& row = *GetItemAt(index.row());
    QRect area = cell;
    const QString icon = row.GetColumnImage(index.column());
    if (!icon.isEmpty()) {
        area.setLeft(IconArea(*GetSkin(), cell, icon).right() + 1);
    }
    return {m_rowLook.font,
            RowTextColor(index, row.IsEnabled()),
            {area.marginsRemoved(m_rowLook.textPadding), Qt::AlignLeft | Qt::AlignVCenter, false}};
}

void CListUI::DrawCell(QPainter& painter, const QRect& cell, const QModelIndex& index)
{
    const Row* row = GetItemAt(index.row());
    if (row == nullptr) {
        return;
    }
    if (index.column() == m_checkColumn) {
        DrawCentered(painter, *GetSkin(), cell,
                     row->IsChecked() ? m_checkedImage : m_uncheckedImage);
        return;
    }
    const QString icon = row->GetColumnImage(index.column());
    if (!icon.isEmpty()) {
        const QRect area = ParseImageText(icon).dest ? cell : IconArea(*GetSkin(), cell, icon);
        GetSkin()->DrawImage(painter, area, icon);
        GetSkin()->DrawImage(painter, area, row->GetColumnBadge(index.column()));
    }
    DrawRuns(painter, *GetSkin(),
             ParseTextMarkup(row->GetColumnText(index.column()), m_rowLook.hasMarkup),
             CellStyle(cell, index));
}

QString CListUI::CutTextOf(const QRect& cell, const QModelIndex& index) const
{
    const Row* row = GetItemAt(index.row());
    if (row == nullptr || index.column() == m_checkColumn) {
        return {};
    }
    const auto runs = ParseTextMarkup(row->GetColumnText(index.column()), m_rowLook.hasMarkup);
    return MeasureRuns(*GetSkin(), runs, CellStyle(cell, index)).isCut ? PlainText(runs)
                                                                       : QString();
}

QString CListUI::TipOf(const QModelIndex& index) const
{
    const Row* row = GetItemAt(index.row());
    return row != nullptr ? row->GetToolTip() : QString();
}

bool CListUI::ReadAttribute(const QString& name, const QString& value)
{
    static constexpr std::array<AttributeSetter<CListUI>, 3> Table = {{
        {"checkcolumn",
         [](CListUI& list, const QString& text) { list.SetCheckColumn(ParseNumber(text)); }},
        {"uncheckedimage",
         [](CListUI& list, const QString& text) { list.m_uncheckedImage = text; }},
        {"checkedimage", [](CListUI& list, const QString& text) { list.m_checkedImage = text; }},
    }};
    return SetFromTable(Table, *this, name, value) || CItemViewUI::ReadAttribute(name, value);
}

bool CListUI::OnRowLink(Row&, int)
{
    return false;
}

// True when the press was for the mark or a span, and not for the row.
bool CListUI::PressCell(const QModelIndex& index, const QPoint& place)
{
    Row* row = GetItemAt(index.row());
    if (row == nullptr || !isEnabled()) {
        return false;
    }
    if (index.column() == m_checkColumn) {
        row->ToggleCheck();
        return true;
    }
    const auto runs = ParseTextMarkup(row->GetColumnText(index.column()), m_rowLook.hasMarkup);
    const TextLayout layout = MeasureRuns(*GetSkin(), runs, CellStyle(visualRect(index), index));
    const int link = LinkAt(runs, layout, place);
    return link >= 0 && OnRowLink(*row, link);
}

void CListUI::mousePressEvent(QMouseEvent* event)
{
    const QModelIndex index = indexAt(event->pos());
    m_pressedRow = nullptr;
    if (event->button() == Qt::LeftButton && index.isValid() && PressCell(index, event->pos())) {
        return;
    }
    m_pressedRow = GetItemAt(index.row());
    CItemViewUI::mousePressEvent(event);
}

void CListUI::mouseReleaseEvent(QMouseEvent* event)
{
    Row* pressed = std::exchange(m_pressedRow, nullptr);
    CItemViewUI::mouseReleaseEvent(event);
    if (pressed != nullptr && event->button() == Qt::LeftButton &&
        GetItemAt(indexAt(event->pos()).row()) == pressed) {
        pressed->SendNotify(NotifyItemClick);
    }
}

void CListUI::mouseDoubleClickEvent(QMouseEvent* event)
{
    const QModelIndex index = indexAt(event->pos());
    // Two quick clicks on a mark change it twice.
    if (event->button() != Qt::LeftButton || PressCell(index, event->pos())) {
        return;
    }
    if (Row* row = GetItemAt(index.row())) {
        row->SendNotify(NotifyListItemDoubleClick);
    }
}

void CListUI::keyPressEvent(QKeyEvent* event)
{
    Row* row = GetItemAt(GetCurSel());
    const bool isEnter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (row != nullptr && event->key() == Qt::Key_Space && m_checkColumn >= 0) {
        row->ToggleCheck();
    } else if (row != nullptr && isEnter) {
        row->SendNotify(NotifyListItemDoubleClick);
    } else {
        CItemViewUI::keyPressEvent(event);
    }
}
