// Page 3: what was found by type, the files of a type, and which of them are selected. A tick in the tree, in a row or in the
// list's head changes the other two.
#pragma once

#include "app/wizard/FileList.h"
#include "app/wizard/FileTypeNodes.h"
#include "app/wizard/MainContext.h"
#include "app/wizard/ResultBar.h"
#include "results/HiddenDoubles.h"

class ResultPage
{
public:
    // The window's controls are there. The filter is that of the page of types; see LookUpOption().
    ResultPage(MainContext& context, TypeFilterMap& filter);

    // Lets go of the results, which are about to be emptied.
    void Clear();
    // Other results come: whatever was typed to find one among the last is forgotten.
    void ClearFilter() { m_bar.ClearFilter(); }
    // Groups the results and shows the first type. What is ticked already keeps its tick.
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
    // Groups and tree from the results, with the boxes as the selection has them.
    void Fill();
    void OnHideDoubles();
    void ShowCounts();
    QString ToolTipOf(const FoundRow& found) const;
    bool ShowsNodeOrChildOf(const CTreeNodeUI& node) const;

    MainContext& m_context;
    TypeFilterMap& m_filter;
    CListUI* m_list;
    ExtensionGroups m_groups;  // without hidden doubles
    FileList m_files;
    FileTypeNodes m_types;
    ResultBar m_bar;
    CTreeNodeUI* m_shown = nullptr;  // the type whose files are listed
};
