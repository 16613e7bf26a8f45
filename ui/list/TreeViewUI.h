// A tree of nodes with folder buttons and check boxes. "itemselect" comes from the tree, "itemclick" and "itemdbclick" from
// the node.
//
// Left and Right close and open, Space changes the check box, Enter stands for a double click.
#pragma once

#include "ui/list/ItemViewUI.h"
#include "ui/list/TreeNodeUI.h"

#include <memory>

class TreeModel;

class CTreeViewUI : public CItemViewUI
{
public:
    explicit CTreeViewUI(std::shared_ptr<Skin> skin);
    CTreeViewUI(const CTreeViewUI&) = delete;
    CTreeViewUI& operator=(const CTreeViewUI&) = delete;
    ~CTreeViewUI() override;
    QString GetClass() const override { return QStringLiteral("TreeViewUI"); }

    // The nodes of the first level.
    int GetCount() const override { return m_root->GetCount(); }
    CTreeNodeUI* GetItemAt(int index) const override { return m_root->GetItemAt(index); }
    bool Add(std::unique_ptr<CControlUI>& child) override { return m_root->Add(child); }
    void RemoveAll() { m_root->RemoveAll(); }
    // What holds them; never shown.
    CTreeNodeUI& GetRoot() const { return *m_root; }

    // Null when none is selected.
    CTreeNodeUI* GetSelectedNode() const;
    // Null selects nothing.
    void SelectNode(CTreeNodeUI* node);
    // Opens or closes without anything being told.
    void SetOpen(CTreeNodeUI& node, bool isOpen);

    // From the nodes.
    void OnButtonChanged(CTreeNodeButtonUI& button);
    void BeginInsert(CTreeNodeUI& parent, int index);
    void EndInsert(CTreeNodeUI& node);
    void BeginRemove(CTreeNodeUI& parent, int index);
    void EndRemove();
    void RefreshNode(CTreeNodeUI& node);

    void DrawCell(QPainter& painter, const QRect& cell, const QModelIndex& index) override;
    int HeightOf(const QModelIndex& index) const override;
    QString CutTextOf(const QRect& cell, const QModelIndex& index) const override;

protected:
    bool ReadAttribute(const QString& name, const QString& value) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void currentChanged(const QModelIndex& current, const QModelIndex& previous) override;

    // The box of a node has changed.
    virtual void OnCheckChanged(CTreeNodeUI& node);
    // A folder button was selected or not. The base opens or closes the node and sends "itemexpand".
    virtual void OnFolderChanged(CTreeNodeUI& node);
    // The base sends "itemdbclick".
    virtual void OnNodeDoubleClick(CTreeNodeUI& node);

private:
    struct Parts
    {
        QRect folder;
        QRect check;
        QRect text;
    };

    Parts PartsOf(const QRect& cell, const CTreeNodeUI& node) const;
    TextStyle NodeStyle(const QRect& area, const QModelIndex& index) const;
    CTreeNodeButtonUI* ButtonAt(const QModelIndex& index, const QPoint& place) const;

    std::unique_ptr<CTreeNodeUI> m_root;
    TreeModel* m_model = nullptr;  // of the widget
    int m_indent = 18;
    bool m_isQuiet = false;
    CTreeNodeUI* m_pressedNode = nullptr;
};
