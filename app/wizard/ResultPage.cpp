#include "app/wizard/ResultPage.h"

#include "app/wizard/MainTexts.h"
#include "results/RowTip.h"
#include "texts/LanguageManager.h"
#include "texts/TextForms.h"

ResultPage::ResultPage(MainContext& context, TypeFilterMap& filter)
    : m_context(context),
      m_filter(filter),
      m_list(context.window.FindControlAs<CListUI>(QStringLiteral("FileList"))),
      m_files(*m_list, context.state.selection),
      m_types(context.window),
      m_bar(context.window)
{
    m_bar.onFilter = [this](const NameFilter& names) {
        m_files.Filter(names);
        ShowCounts();
    };
    m_files.SetToolTips([this](const FoundRow& found) { return ToolTipOf(found); });
    m_bar.onHideDoubles = [this](bool) { OnHideDoubles(); };
}

void ResultPage::Clear()
{
    m_shown = nullptr;
    m_files.Clear();
    m_types.Clear();
    m_groups.clear();
}

void ResultPage::Fill()
{
    Clear();
    m_groups = BuildGroups(m_context.state.results);
    const std::vector<DoubleRow> doubles = DoublesIn(m_groups, m_filter);
    m_bar.SetDoubles(doubles.size());
    if (m_bar.HidesDoubles()) {
        LeaveOut(m_groups, doubles);
        MoveTicks(m_context.state.selection, doubles);
    }
    m_types.Build(BuildTypeTree(m_groups, m_filter));
    m_types.MarkBoxes(m_context.state.selection);
    UpdateSelectionLabel();
}

void ResultPage::Build()
{
    Fill();
    if (CTreeNodeUI* first = m_types.FirstType()) {
        m_types.Tree().SelectNode(first);
    }
    if (m_files.ListedCount() > 0) {
        m_files.SelectFirst();
    }
}

// The type, the current file and the order stay what they are.
void ResultPage::OnHideDoubles()
{
    const FoundRow* current = m_files.Current();
    const std::optional<FileList::Sorting> sorting = m_files.Sorted();
    const QString extensions = m_shown != nullptr ? m_shown->GetUserData() : QString();
    Fill();
    CTreeNodeUI* same = m_types.FindType(extensions);
    if (CTreeNodeUI* node = same != nullptr ? same : m_types.FirstType()) {
        m_types.Tree().SelectNode(node);
    }
    if (sorting) {
        m_files.Sort(*sorting);
    }
    m_files.Reselect(current);
    ShowCounts();
}

void ResultPage::ShowCounts()
{
    m_bar.ShowCounts(static_cast<std::size_t>(m_files.ListedCount()),
                     static_cast<std::size_t>(m_files.Count()));
}

void ResultPage::ShowGroup()
{
    CTreeNodeUI* node = m_types.Tree().GetSelectedNode();
    const FileGroup* group = node != nullptr ? m_types.GroupOf(*node) : nullptr;
    if (group == nullptr) {
        return;
    }
    const CTreeNodeButtonUI& box = node->GetCheckBox();
    m_shown = node;
    m_list->SetTag(TagOf(node));
    m_files.MarkHead(box.IsSelected() && !box.IsPartial());
    m_files.Show(*group, node->GetFolderButton().GetAttribute(QStringLiteral("normalimage")));
    ShowCounts();
}

QString ResultPage::ToolTipOf(const FoundRow& found) const
{
    std::string folder;
    // A task that runs, and the small pictures, use the engine on threads of their own.
    const auto engine = m_context.flows == 0 ? m_context.state.FindEngine(found.record) : nullptr;
    if (engine != nullptr) {
        (void)m_context.state.turns.RunShortly([&] { folder = engine->FolderPath(found.record); });
    }
    return ToQt(RowTip(found.record, folder, LanguageManager::GetInstance().GetSection("Extras")));
}

void ResultPage::OnRowCheck(const CListImageTextElementUI& row)
{
    SetSelected(m_context.state.selection, *PointerOf<const FoundRow>(row.GetTag()),
                row.IsChecked());
    UpdateSelectionLabel();
    if (m_shown == nullptr) {
        return;
    }
    m_files.SetMarkedRows(m_files.MarkedRows() + (row.IsChecked() ? 1 : -1));
    const bool isAll = m_files.MarkedRows() == m_files.Count();
    const bool isNone = m_files.MarkedRows() == 0;
    m_files.MarkHead(isAll);
    m_shown->GetCheckBox().SetState(!isNone, !isAll && !isNone);
    m_types.Tree().UpdateAncestors(*m_shown);
}

bool ResultPage::ShowsNodeOrChildOf(const CTreeNodeUI& node) const
{
    return m_shown != nullptr && (m_shown == &node || m_shown->GetParentNode() == &node);
}

void ResultPage::OnTreeCheck(CTreeNodeUI& node)
{
    const bool isChecked = node.GetCheckBox().IsSelected();
    for (const FileGroup* group : m_types.GroupsBelow(node)) {
        for (const FoundRow* found : *group) {
            SetSelected(m_context.state.selection, *found, isChecked);
        }
    }
    if (ShowsNodeOrChildOf(node)) {
        m_files.MarkHead(isChecked);
        m_files.MarkAll(isChecked);
    }
    // Also when the list shows another type: the head's tick goes by a count that is off then, until the next group is shown.
    m_files.SetMarkedRows(isChecked ? m_files.Count() : 0);
    UpdateSelectionLabel();
}

void ResultPage::OnCheckAll()
{
    const bool isMarked = !m_files.IsHeadMarked();
    m_files.MarkHead(isMarked);
    if (m_shown != nullptr) {
        CTreeNodeButtonUI& box = m_shown->GetCheckBox();
        // One that is on for a part of its files would see no change.
        if (box.IsPartial()) {
            box.SetState(!isMarked, false);
        }
        box.Selected(isMarked);
    }
}

void ResultPage::OnHeaderClick(CListHeaderItemUI& header)
{
    m_files.OnHeaderClick(header);
}

void ResultPage::UpdateSelectionLabel() const
{
    const SelectionMap& selection = m_context.state.selection;
    const std::string text =
        selection.empty() ? MessageText("MSG0803")
                          : FormatText(MessageText("MSG0804"),
                                       FormatBytes(SelectedBytes(selection)), selection.size());
    m_context.window.FindControl(QStringLiteral("BtnRecover"))->SetEnabled(!selection.empty());
    m_context.window.FindControl(QStringLiteral("SelectedFileInfo"))->SetText(ToQt(text));
}

void ResultPage::RewriteTexts()
{
    m_types.RewriteTexts();
    m_bar.RewriteTexts();
    m_list->Invalidate();
}

std::vector<FoundRow> ResultPage::ListedFiles() const
{
    std::vector<FoundRow> files;
    for (int i = 0; i < m_list->GetCount(); ++i) {
        const auto* found = PointerOf<const FoundRow>(m_list->GetItemAt(i)->GetTag());
        if (found->record.IsFolder == 0) {
            files.push_back(*found);
        }
    }
    return files;
}
