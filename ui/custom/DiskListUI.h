// The list of disks with their volumes. Its rows come ready; their texts are left as they are.
#pragma once

#include "ui/custom/ListImageTextNodeUI.h"

class CDiskListUI : public CListExUI
{
public:
    using CListExUI::CListExUI;
    QString GetClass() const override { return QStringLiteral("DiskListUI"); }

    // A null parent is the root. Null, and the row is gone, when it cannot be added.
    // After a child of the parent, or at the end.
    Node* AddNode(std::unique_ptr<CListImageTextNodeUI> row, Node* parent, Node* behind = nullptr);
    // Rows of the class ListImageTextNodeUI alone, with all below them.
    bool RemoveAt(int index) override;

protected:
    bool WritesTexts() const override { return false; }
    bool IsNodeRow(const Row& row) const override;
};
