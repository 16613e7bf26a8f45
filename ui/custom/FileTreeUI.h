// The tree of found file types: a box checks all below it and shows above it how much is checked.
#pragma once

#include "ui/list/TreeViewUI.h"

class CFileTreeUI : public CTreeViewUI
{
public:
    using CTreeViewUI::CTreeViewUI;
    QString GetClass() const override { return QStringLiteral("FileTreeUI"); }

    // Works out the boxes above a node whose own box has been set: all checked, none, or partly, which is checked too.
    void UpdateAncestors(CTreeNodeUI& node);

protected:
    // Down, then up, then "checkboxselectchanged" from the box.
    void OnCheckChanged(CTreeNodeUI& node) override;
    // All below opens or closes with it; "itemexpand" comes from the node.
    void OnFolderChanged(CTreeNodeUI& node) override;
    void OnNodeDoubleClick(CTreeNodeUI& node) override;
};
