// A list whose rows form a tree, and which glides when the wheel is turned. Left and Right close and open a row.
#pragma once

#include "ui/custom/WheelGlide.h"
#include "ui/list/ListUI.h"

#include <memory>
#include <vector>

class CListExUI : public CListUI
{
public:
    struct Node
    {
        int Level = -1;  // 0 for the rows at the top; -1 for the root
        bool ChildVisible = true;
        QString Text;                            // without the indent
        CListImageTextElementUI* Row = nullptr;  // of the list; null for the root
        Node* Parent = nullptr;
        std::vector<Node*> Children;
    };

    explicit CListExUI(std::shared_ptr<Skin> skin);
    CListExUI(const CListExUI&) = delete;
    CListExUI& operator=(const CListExUI&) = delete;
    ~CListExUI() override;
    QString GetClass() const override { return QStringLiteral("ListExUI"); }

    // The text is markup: names go into it by PlainRun(). A null parent is the root. rowData becomes the row's tag. Null when
    // the row cannot be added.
    Node* AddNode(const QString& text, Node* parent, std::intptr_t rowData = 0);
    // With all below it; the rows are deleted too, if asked.
    void RemoveNode(Node* node, bool alsoDeleteRow);
    // Rows further below show only while all above them are open.
    virtual void SetChildVisible(Node* node, bool isVisible);
    // A row with a node goes with all below it.
    bool Remove(CControlUI* row) override;
    bool RemoveAt(int index) override;
    void RemoveAll() override;
    Node* GetRootNode() const { return m_root.get(); }
    // Null for a row without one.
    Node* FindNode(const CControlUI* row) const;

    const WheelGlide& Glide() const { return m_glide; }
    void OnTimer(int id) override;

protected:
    // Puts a row into the list and the tree, after a child of the parent with all below that, or after all of them. Null,
    // and the row is gone, when it fails.
    Node*
    InsertNode(std::unique_ptr<Row> row, const QString& text, Node* parent, Node* behind = nullptr);
    // Whether the texts of the rows get an indent and a flag.
    virtual bool WritesTexts() const { return true; }
    // Whether rows of this kind are shown and hidden.
    virtual bool IsNodeRow(const Row& row) const;
    bool OnRowLink(Row& row, int link) override;
    void wheelEvent(QWheelEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    void RewriteText(Node& node);
    static Node* LastBelow(Node* node);

    std::unique_ptr<Node> m_root;
    WheelGlide m_glide;
    double m_unscrolled = 0;  // parts of pixels
};
