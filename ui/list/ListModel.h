// Shows Qt the rows of a list.
#pragma once

#include "ui/list/ListUI.h"

#include <QAbstractTableModel>

class ListModel : public QAbstractTableModel
{
public:
    explicit ListModel(CListUI& list);

    int rowCount(const QModelIndex& parent) const override;
    int columnCount(const QModelIndex& parent) const override;
    // Texts and states for screen readers; the list draws by itself.
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    // A screen reader's "toggle".
    bool setData(const QModelIndex& index, const QVariant& value, int role) override;

    // Around changes of the list.
    void BeginInsert(int first, int last) { beginInsertRows({}, first, last); }
    void EndInsert() { endInsertRows(); }
    void BeginRemove(int index) { beginRemoveRows({}, index, index); }
    void EndRemove() { endRemoveRows(); }
    void BeginReset() { beginResetModel(); }
    void EndReset() { endResetModel(); }
    void BeginSort();
    // newIndex[i] is where the row that was the i-th stands now.
    void EndSort(const std::vector<int>& newIndex);

private:
    CListUI& m_list;
};
