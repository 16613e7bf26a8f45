#include "ui/list/ListModel.h"

ListModel::ListModel(CListUI& list) : QAbstractTableModel(&list), m_list(list) {}

int ListModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : m_list.GetCount();
}

int ListModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : m_list.GetColumnCount();
}

QVariant ListModel::data(const QModelIndex& index, int role) const
{
    const CListUI::Row* row = m_list.GetItemAt(index.row());
    if (row == nullptr) {
        return {};
    }
    const bool isCheck = index.column() == m_list.GetCheckColumn();
    if (role == Qt::CheckStateRole && isCheck) {
        return row->IsChecked() ? Qt::Checked : Qt::Unchecked;
    }
    if (role != Qt::DisplayRole && role != Qt::AccessibleTextRole) {
        return {};
    }
    // A mark is of use only with what it marks.
    const int column =
        isCheck && role == Qt::AccessibleTextRole ? index.column() + 1 : index.column();
    return PlainText(row->GetColumnText(column), m_list.RowsLook().hasMarkup);
}

QVariant ListModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole || m_list.GetHeader() == nullptr) {
        return {};
    }
    const CListHeaderItemUI* item = m_list.GetHeader()->GetItemAt(section);
    return item != nullptr ? item->GetPlainText() : QVariant();
}

Qt::ItemFlags ListModel::flags(const QModelIndex& index) const
{
    Qt::ItemFlags flags = Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemNeverHasChildren;
    if (index.column() == m_list.GetCheckColumn()) {
        flags |= Qt::ItemIsUserCheckable;
    }
    return flags;
}

bool ListModel::setData(const QModelIndex& index, const QVariant& value, int role)
{
    CListUI::Row* row = m_list.GetItemAt(index.row());
    if (role != Qt::CheckStateRole || row == nullptr) {
        return false;
    }
    if (row->IsChecked() != (value.toInt() == Qt::Checked)) {
        row->ToggleCheck();
    }
    return true;
}

void ListModel::BeginSort()
{
    emit layoutAboutToBeChanged({}, QAbstractItemModel::VerticalSortHint);
}

void ListModel::EndSort(const std::vector<int>& newIndex)
{
    QModelIndexList moved;
    const QModelIndexList kept = persistentIndexList();
    moved.reserve(kept.size());
    for (const QModelIndex& old : kept) {
        moved.append(index(newIndex[static_cast<std::size_t>(old.row())], old.column()));
    }
    changePersistentIndexList(kept, moved);
    emit layoutChanged({}, QAbstractItemModel::VerticalSortHint);
}
