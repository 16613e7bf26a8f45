// A row of the list of disks: an icon, texts by column, and the node that it stands for.
#pragma once

#include "ui/custom/ListExUI.h"

class CListImageTextNodeUI : public CListImageTextElementUI
{
public:
    CListImageTextNodeUI() = default;
    QString GetClass() const override { return QStringLiteral("ListImageTextNodeUI"); }

    // Null before it is added.
    CListExUI::Node* GetNode() const { return m_node; }
    void SetNode(CListExUI::Node* node) { m_node = node; }
    // Beside the text of the first column: "file='drive.png' dest='28,0,50,24'".
    void SetIcon(const QString& imageText) { SetColumnImage(0, imageText); }
    QString GetToolTip() const override { return m_toolTip; }
    void SetToolTip(const QString& lines) { m_toolTip = lines; }

private:
    CListExUI::Node* m_node = nullptr;
    QString m_toolTip;
};
