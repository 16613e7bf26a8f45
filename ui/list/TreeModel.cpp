#include "ui/list/TreeModel.h"

CTreeNodeUI& TreeModel::NodeOf(const QModelIndex& index) const
{
    auto* node = static_cast<CTreeNodeUI*>(index.internalPointer());
    return node != nullptr ? *node : m_root;
}

QModelIndex TreeModel::IndexOf(const CTreeNodeUI& node) const
{
    return &node == &m_root ? QModelIndex() : createIndex(node.GetIndex(), 0, &node);
}

QModelIndex TreeModel::index(int row, int column, const QModelIndex& parent) const
{
    const CTreeNodeUI* node = NodeOf(parent).GetItemAt(row);
    return node != nullptr && column == 0 ? createIndex(row, column, node) : QModelIndex();
}

QModelIndex TreeModel::parent(const QModelIndex& index) const
{
    const CTreeNodeUI* node = index.isValid() ? NodeOf(index).GetParentNode() : nullptr;
    return node != nullptr ? IndexOf(*node) : QModelIndex();
}

int TreeModel::rowCount(const QModelIndex& parent) const
{
    return NodeOf(parent).GetCount();
}

QVariant TreeModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid()) {
        return {};
    }
    const CTreeNodeUI& node = NodeOf(index);
    const CTreeNodeButtonUI& check = node.GetCheckBox();
    if (role == Qt::DisplayRole || role == Qt::AccessibleTextRole) {
        return PlainText(node.GetText(), node.Look().hasMarkup);
    }
    if (role != Qt::CheckStateRole || !check.IsVisible()) {
        return {};
    }
    if (check.IsPartial()) {
        return Qt::PartiallyChecked;
    }
    return check.IsSelected() ? Qt::Checked : Qt::Unchecked;
}

Qt::ItemFlags TreeModel::flags(const QModelIndex& index) const
{
    Qt::ItemFlags flags = Qt::ItemIsSelectable;
    if (index.isValid() && NodeOf(index).IsEnabled()) {
        flags |= Qt::ItemIsEnabled;
    }
    if (index.isValid() && NodeOf(index).GetCheckBox().IsVisible()) {
        flags |= Qt::ItemIsUserCheckable;
    }
    return flags;
}

bool TreeModel::setData(const QModelIndex& index, const QVariant& value, int role)
{
    if (role != Qt::CheckStateRole || !index.isValid()) {
        return false;
    }
    NodeOf(index).GetCheckBox().Selected(value.toInt() == Qt::Checked);
    return true;
}
