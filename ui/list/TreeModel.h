// Shows Qt the nodes of a tree.
#pragma once

#include "ui/list/TreeNodeUI.h"

#include <QAbstractItemModel>

class TreeModel : public QAbstractItemModel
{
public:
    TreeModel(CTreeNodeUI& root, QObject* owner) : QAbstractItemModel(owner), m_root(root) {}

    // The root for an invalid index.
    CTreeNodeUI& NodeOf(const QModelIndex& index) const;
    QModelIndex IndexOf(const CTreeNodeUI& node) const;

    QModelIndex index(int row, int column, const QModelIndex& parent) const override;
    QModelIndex parent(const QModelIndex& index) const override;
    int rowCount(const QModelIndex& parent) const override;
    int columnCount(const QModelIndex&) const override { return 1; }
    QVariant data(const QModelIndex& index, int role) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    bool setData(const QModelIndex& index, const QVariant& value, int role) override;

    void BeginInsert(const CTreeNodeUI& parent, int row)
    {
        beginInsertRows(IndexOf(parent), row, row);
    }
    void EndInsert() { endInsertRows(); }
    void BeginRemove(const CTreeNodeUI& parent, int row)
    {
        beginRemoveRows(IndexOf(parent), row, row);
    }
    void EndRemove() { endRemoveRows(); }

private:
    CTreeNodeUI& m_root;
};
