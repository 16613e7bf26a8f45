// A node of a tree with its folder button and check box. Plain objects; the tree draws them.
#pragma once

#include "ui/controls/ButtonUI.h"

#include <QSize>

#include <memory>
#include <vector>

class CTreeNodeUI;
class CTreeViewUI;

// The folder button or the check box of a node. Selected means open, or checked.
class CTreeNodeButtonUI : public CControlUI
{
public:
    explicit CTreeNodeButtonUI(CTreeNodeUI& node) : m_node(node) {}
    QString GetClass() const override { return QStringLiteral("TreeNodeButtonUI"); }

    CTreeNodeUI& GetNode() const { return m_node; }
    bool IsSelected() const { return m_isSelected; }
    // As a click: the tree hears of the change and does what follows from it. Nothing when it is in that state already.
    void Selected(bool isSelected);
    // For a check box: some of what lies below is checked.
    bool IsPartial() const { return m_isPartial; }
    // Sets the state and nothing else.
    void SetState(bool isSelected, bool isPartial);

    // What is drawn; the size is the picture's own unless the markup tells one.
    QString StateImage(bool isHot) const;
    QSize GetSize() const;

    void SetVisible(bool isVisible) override;
    void Invalidate() override;
    CControlUI* GetParent() const override;
    const Skin* GetSkin() const override;

protected:
    bool ReadAttribute(const QString& name, const QString& value) override;

private:
    CTreeNodeUI& m_node;
    StateImages m_images;
    QString m_partialImage;
    QSize m_size;
    bool m_isSelected = false;
    bool m_isPartial = false;
};

class CTreeNodeUI : public CControlUI
{
public:
    CTreeNodeUI();
    QString GetClass() const override { return QStringLiteral("TreeNodeUI"); }

    QString GetText() const override { return m_text; }
    void SetText(const QString& text) override;
    CTreeNodeButtonUI& GetFolderButton() { return m_folder; }
    const CTreeNodeButtonUI& GetFolderButton() const { return m_folder; }
    CTreeNodeButtonUI& GetCheckBox() { return m_check; }
    const CTreeNodeButtonUI& GetCheckBox() const { return m_check; }

    // Children are nodes.
    int GetCount() const override { return static_cast<int>(m_children.size()); }
    CTreeNodeUI* GetItemAt(int index) const override;
    bool Add(std::unique_ptr<CControlUI>& child) override;
    bool AddAt(std::unique_ptr<CControlUI>& child, int index);
    // Deletes them with all below.
    void RemoveAt(int index);
    void RemoveAll();

    // Null for a node of the first level.
    CTreeNodeUI* GetParentNode() const;
    // Null while it is in none.
    CTreeViewUI* GetTree() const { return m_tree; }
    // Among the children of its parent.
    int GetIndex() const;
    // 0 for the first.
    int GetLevel() const;
    const ControlLook& Look() const { return m_look; }

    void SetVisible(bool isVisible) override;
    void Invalidate() override;
    CControlUI* GetParent() const override;
    const Skin* GetSkin() const override;

protected:
    bool ReadAttribute(const QString& name, const QString& value) override;

private:
    friend class CTreeViewUI;

    void SetTree(CTreeViewUI* tree);

    CTreeViewUI* m_tree = nullptr;
    CTreeNodeUI* m_parent = nullptr;
    QString m_text;
    ControlLook m_look;
    CTreeNodeButtonUI m_folder;
    CTreeNodeButtonUI m_check;
    std::vector<std::unique_ptr<CTreeNodeUI>> m_children;
};

// The node and all below it, each before its children.
std::vector<CTreeNodeUI*> NodesBelow(CTreeNodeUI& node);
