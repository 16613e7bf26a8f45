#include "ui/custom/DiskListUI.h"

#include <utility>

CListExUI::Node*
CDiskListUI::AddNode(std::unique_ptr<CListImageTextNodeUI> row, Node* parent, Node* behind)
{
    if (!row) {
        return nullptr;
    }
    CListImageTextNodeUI* added = row.get();
    const QString text = added->GetText();
    Node* node = InsertNode(std::move(row), text, parent, behind);
    if (node != nullptr) {
        added->SetNode(node);
    }
    return node;
}

bool CDiskListUI::RemoveAt(int index)
{
    const auto* row = dynamic_cast<const CListImageTextNodeUI*>(GetItemAt(index));
    if (row == nullptr || row->GetNode() == nullptr) {
        return false;
    }
    RemoveNode(row->GetNode(), true);
    return true;
}

bool CDiskListUI::IsNodeRow(const Row& row) const
{
    return dynamic_cast<const CListImageTextNodeUI*>(&row) != nullptr;
}
