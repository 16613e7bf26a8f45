// The tree of found types on page 3: three nodes for the categories, a node a type below them.
#pragma once

#include "results/SelectionMap.h"
#include "results/TypeTree.h"
#include "ui/custom/FileTreeUI.h"
#include "ui/windows/WindowImplBase.h"

#include <array>

class FileTypeNodes
{
public:
    // The window's controls are there.
    explicit FileTypeNodes(const WindowImplBase& window);

    // Takes everything away, and hides the categories.
    void Clear();
    void Build(const TypeTree& tree);
    // Each box as far as the files of its type are selected.
    void MarkBoxes(const SelectionMap& selection);
    // Null when there is none.
    CTreeNodeUI* FirstType() const;
    // The type with these extensions; null when it is not shown.
    CTreeNodeUI* FindType(const QString& extensions) const;
    // Of the categories, in the language that is chosen by now.
    void RewriteTexts();

    CFileTreeUI& Tree() const { return *m_tree; }
    bool IsCategory(const CTreeNodeUI& node) const;
    // The files of a type; null for a category.
    const FileGroup* GroupOf(const CTreeNodeUI& node) const;
    // Those of a type, or of all types of a category.
    std::vector<const FileGroup*> GroupsBelow(const CTreeNodeUI& node) const;

private:
    struct Category
    {
        CTreeNodeUI* node = nullptr;
        const char* textKey = nullptr;
        std::size_t files = 0;
    };

    static void AddType(CTreeNodeUI& category, const TypeTreeNode& type);
    static void WriteText(const Category& category);

    CFileTreeUI* m_tree;
    std::array<Category, TypeCategoryCount> m_categories;
};
