// Page 3: what was found by type, the files of a type, and which of them are selected. A tick in the tree, in a row or in the
// list's head changes the other two.
#pragma once

#include "app/wizard/FileList.h"
#include "app/wizard/FileTypeNodes.h"
#include "app/wizard/MainContext.h"

class ResultPage
{
public:
    // The window's controls are there. The filter is that of the page of types; see LookUpOption().
    ResultPage(MainContext& context, TypeFilterMap& filter);

    // Lets go of the results, which are about to be emptied.
    void Clear();
    // Groups the results and shows the first type.
    void Build();
    // The files of the type that is selected in the tree.
    void ShowGroup();

    // A row whose mark was clicked and has changed already.
    void OnRowCheck(const CListImageTextElementUI& row);
    // A box of the tree that has changed, with all below and above it.
    void OnTreeCheck(CTreeNodeUI& node);
    // A click on the head of the marks.
    void OnCheckAll();
    void OnHeaderClick(CListHeaderItemUI& header);
    void UpdateSelectionLabel() const;
    void RewriteTexts();

    // Null without a current row.
    const FoundRow* Current() const { return m_files.Current(); }
    // All rows that are no folders.
    std::vector<FoundRow> ListedFiles() const;
    const CControlUI* Head() const { return m_files.Head(); }

private:
    bool ShowsNodeOrChildOf(const CTreeNodeUI& node) const;

    MainContext& m_context;
    TypeFilterMap& m_filter;
    CListUI* m_list;
    ExtensionGroups m_groups;
    FileList m_files;
    FileTypeNodes m_types;
    CTreeNodeUI* m_shown = nullptr;  // the type whose files are listed
};
