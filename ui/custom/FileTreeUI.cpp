#include "ui/custom/FileTreeUI.h"

namespace {

// The state of a box from those of the children.
void TakeFromChildren(CTreeNodeUI& parent)
{
    bool isAllChecked = true;
    bool isNoneChecked = true;
    for (int i = 0; i < parent.GetCount(); ++i) {
        const CTreeNodeButtonUI& check = parent.GetItemAt(i)->GetCheckBox();
        // One that is partly checked counts as checked for its state, and not as all of it.
        isAllChecked = isAllChecked && check.IsSelected() && !check.IsPartial();
        isNoneChecked = isNoneChecked && !check.IsSelected() && !check.IsPartial();
    }
    parent.GetCheckBox().SetState(!isNoneChecked, !isAllChecked && !isNoneChecked);
}

}  // namespace

void CFileTreeUI::UpdateAncestors(CTreeNodeUI& node)
{
    for (CTreeNodeUI* parent = node.GetParentNode(); parent != nullptr;
         parent = parent->GetParentNode()) {
        TakeFromChildren(*parent);
    }
}

void CFileTreeUI::OnCheckChanged(CTreeNodeUI& node)
{
    const bool isChecked = node.GetCheckBox().IsSelected();
    for (CTreeNodeUI* below : NodesBelow(node)) {
        below->GetCheckBox().SetState(isChecked, false);
    }
    UpdateAncestors(node);
    node.GetCheckBox().SendNotify(NotifyCheckBoxSelectChanged);
}

void CFileTreeUI::OnFolderChanged(CTreeNodeUI& node)
{
    const bool isOpen = node.GetFolderButton().IsSelected();
    for (CTreeNodeUI* below : NodesBelow(node)) {
        SetOpen(*below, isOpen);
    }
    node.SendNotify(NotifyItemExpand);
}

void CFileTreeUI::OnNodeDoubleClick(CTreeNodeUI& node)
{
    node.GetFolderButton().Selected(!node.GetFolderButton().IsSelected());
    node.SendNotify(NotifyItemDoubleClick);
}
