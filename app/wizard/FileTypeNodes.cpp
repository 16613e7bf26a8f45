#include "app/wizard/FileTypeNodes.h"

#include "app/wizard/MainContext.h"
#include "app/wizard/MainTexts.h"

#include <algorithm>

FileTypeNodes::FileTypeNodes(const WindowImplBase& window)
    : m_tree(window.FindControlAs<CFileTreeUI>(QStringLiteral("TypeTree"))),
      m_categories{{{window.FindControlAs<CTreeNodeUI>(QStringLiteral("NodePhoto")), "MSG0807"},
                    {window.FindControlAs<CTreeNodeUI>(QStringLiteral("NodeAudio")), "MSG0808"},
                    {window.FindControlAs<CTreeNodeUI>(QStringLiteral("NodeVideo")), "MSG0809"}}}
{
}

void FileTypeNodes::Clear()
{
    for (Category& category : m_categories) {
        category.node->RemoveAll();
        category.node->SetVisible(false);
        category.node->GetCheckBox().SetState(false, false);
        category.node->GetFolderButton().SetState(false, false);
        category.files = 0;
        WriteText(category);
    }
}

void FileTypeNodes::WriteText(const Category& category)
{
    const std::string text = MainWndText(category.textKey);
    category.node->SetText(ToQt(category.files > 0 ? WithCount(text, category.files) : text));
}

void FileTypeNodes::RewriteTexts()
{
    for (const Category& category : m_categories) {
        WriteText(category);
    }
}

void FileTypeNodes::AddType(CTreeNodeUI& category, const TypeTreeNode& type)
{
    auto made = std::make_unique<CTreeNodeUI>();
    CTreeNodeUI* node = made.get();
    std::unique_ptr<CControlUI> child = std::move(made);
    category.Add(child);
    node->ApplyStyle(QStringLiteral("filetype"));
    node->SetText(ToQt(type.text));
    for (const char* state : {"normalimage", "hotimage", "selectedimage", "selectedhotimage"}) {
        node->GetFolderButton().SetAttribute(QLatin1String(state), ToQt(type.image));
    }
    node->SetUserData(ToQt(type.extensions));
    node->SetTag(TagOf(type.group));
}

void FileTypeNodes::Build(const TypeTree& tree)
{
    Clear();
    for (std::size_t i = 0; i < tree.size(); ++i) {
        if (tree.at(i).nodes.empty()) {
            continue;
        }
        Category& category = m_categories.at(i);
        category.node->SetVisible(true);
        for (const TypeTreeNode& type : tree.at(i).nodes) {
            AddType(*category.node, type);
        }
        category.files = tree.at(i).files;
        WriteText(category);
        category.node->GetFolderButton().Selected(true);
    }
}

CTreeNodeUI* FileTypeNodes::FirstType() const
{
    for (const Category& category : m_categories) {
        if (category.node->GetCount() > 0) {
            return category.node->GetItemAt(0);
        }
    }
    return nullptr;
}

CTreeNodeUI* FileTypeNodes::FindType(const QString& extensions) const
{
    for (const Category& category : m_categories) {
        for (int i = 0; i < category.node->GetCount(); ++i) {
            if (category.node->GetItemAt(i)->GetUserData() == extensions) {
                return category.node->GetItemAt(i);
            }
        }
    }
    return nullptr;
}

void FileTypeNodes::MarkBoxes(const SelectionMap& selection)
{
    if (selection.empty()) {
        return;
    }
    for (const Category& category : m_categories) {
        for (int i = 0; i < category.node->GetCount(); ++i) {
            CTreeNodeUI& node = *category.node->GetItemAt(i);
            const FileGroup& group = *GroupOf(node);
            const auto ticked =
                std::count_if(group.begin(), group.end(), [&selection](const FoundRow* found) {
                    return selection.contains(KeyOf(*found));
                });
            const bool isAll = static_cast<std::size_t>(ticked) == group.size();
            node.GetCheckBox().SetState(ticked > 0, ticked > 0 && !isAll);
            m_tree->UpdateAncestors(node);
        }
    }
}

bool FileTypeNodes::IsCategory(const CTreeNodeUI& node) const
{
    return std::any_of(m_categories.begin(), m_categories.end(),
                       [&node](const Category& category) { return category.node == &node; });
}

const FileGroup* FileTypeNodes::GroupOf(const CTreeNodeUI& node) const
{
    return IsCategory(node) ? nullptr : PointerOf<const FileGroup>(node.GetTag());
}

std::vector<const FileGroup*> FileTypeNodes::GroupsBelow(const CTreeNodeUI& node) const
{
    if (!IsCategory(node)) {
        return {GroupOf(node)};
    }
    std::vector<const FileGroup*> groups;
    groups.reserve(static_cast<std::size_t>(node.GetCount()));
    for (int i = 0; i < node.GetCount(); ++i) {
        groups.push_back(GroupOf(*node.GetItemAt(i)));
    }
    return groups;
}
