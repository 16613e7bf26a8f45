#include "ui/list/TreeNodeUI.h"

#include "ui/list/TreeViewUI.h"

#include <utility>

void CTreeNodeButtonUI::Selected(bool isSelected)
{
    if (m_isSelected == isSelected) {
        return;
    }
    m_isSelected = isSelected;
    Invalidate();
    if (CTreeViewUI* tree = m_node.GetTree()) {
        tree->OnButtonChanged(*this);
    }
}

void CTreeNodeButtonUI::SetState(bool isSelected, bool isPartial)
{
    m_isSelected = isSelected;
    m_isPartial = isPartial;
    Invalidate();
}

QString CTreeNodeButtonUI::StateImage(bool isHot) const
{
    if (m_isPartial && !m_partialImage.isEmpty()) {
        return m_partialImage;
    }
    return m_images.Of(IsEnabled(), isHot, false, m_isSelected);
}

QSize CTreeNodeButtonUI::GetSize() const
{
    if (!m_size.isEmpty() || GetSkin() == nullptr) {
        return m_size;
    }
    const ImageText image = ParseImageText(StateImage(false));
    return image.source ? image.source->size() : GetSkin()->Picture(image.file).size();
}

void CTreeNodeButtonUI::SetVisible(bool isVisible)
{
    CControlUI::SetVisible(isVisible);
    Invalidate();
}

void CTreeNodeButtonUI::Invalidate()
{
    m_node.Invalidate();
}

CControlUI* CTreeNodeButtonUI::GetParent() const
{
    return &m_node;
}

const Skin* CTreeNodeButtonUI::GetSkin() const
{
    return m_node.GetSkin();
}

bool CTreeNodeButtonUI::ReadAttribute(const QString& name, const QString& value)
{
    static constexpr std::array<AttributeSetter<CTreeNodeButtonUI>, 3> Table = {{
        {"partialimage",
         [](CTreeNodeButtonUI& button, const QString& text) { button.m_partialImage = text; }},
        {"width", [](CTreeNodeButtonUI& button,
                     const QString& text) { button.m_size.setWidth(ParseNumber(text)); }},
        {"height", [](CTreeNodeButtonUI& button,
                      const QString& text) { button.m_size.setHeight(ParseNumber(text)); }},
    }};
    const bool isKnown = m_images.Set(name, value) || SetFromTable(Table, *this, name, value);
    if (isKnown) {
        Invalidate();
    }
    return isKnown || CControlUI::ReadAttribute(name, value);
}

CTreeNodeUI::CTreeNodeUI() : m_folder(*this), m_check(*this) {}

void CTreeNodeUI::SetText(const QString& text)
{
    m_text = text;
    Invalidate();
}

CTreeNodeUI* CTreeNodeUI::GetItemAt(int index) const
{
    return index >= 0 && index < GetCount() ? m_children[static_cast<std::size_t>(index)].get()
                                            : nullptr;
}

bool CTreeNodeUI::Add(std::unique_ptr<CControlUI>& child)
{
    return AddAt(child, GetCount());
}

bool CTreeNodeUI::AddAt(std::unique_ptr<CControlUI>& child, int index)
{
    auto* node = dynamic_cast<CTreeNodeUI*>(child.get());
    if (node == nullptr || index < 0 || index > GetCount()) {
        return false;
    }
    if (m_tree != nullptr) {
        m_tree->BeginInsert(*this, index);
    }
    (void)child.release();
    node->m_parent = this;
    m_children.emplace(m_children.begin() + index, node);
    node->SetTree(m_tree);
    if (m_tree != nullptr) {
        m_tree->EndInsert(*node);
    }
    return true;
}

void CTreeNodeUI::SetTree(CTreeViewUI* tree)
{
    for (CTreeNodeUI* node : NodesBelow(*this)) {
        node->m_tree = tree;
    }
}

void CTreeNodeUI::RemoveAt(int index)
{
    if (GetItemAt(index) == nullptr) {
        return;
    }
    if (m_tree != nullptr) {
        m_tree->BeginRemove(*this, index);
    }
    const std::unique_ptr<CTreeNodeUI> removed =
        std::move(m_children[static_cast<std::size_t>(index)]);
    m_children.erase(m_children.begin() + index);
    if (m_tree != nullptr) {
        m_tree->EndRemove();
    }
}

void CTreeNodeUI::RemoveAll()
{
    while (GetCount() > 0) {
        RemoveAt(GetCount() - 1);
    }
}

CTreeNodeUI* CTreeNodeUI::GetParentNode() const
{
    // The tree's root is no node that anybody sees.
    return m_parent != nullptr && m_parent->m_parent != nullptr ? m_parent : nullptr;
}

int CTreeNodeUI::GetIndex() const
{
    for (int i = 0; m_parent != nullptr && i < m_parent->GetCount(); ++i) {
        if (m_parent->GetItemAt(i) == this) {
            return i;
        }
    }
    return 0;
}

int CTreeNodeUI::GetLevel() const
{
    int level = 0;
    for (const CTreeNodeUI* node = GetParentNode(); node != nullptr; node = node->GetParentNode()) {
        ++level;
    }
    return level;
}

void CTreeNodeUI::SetVisible(bool isVisible)
{
    CControlUI::SetVisible(isVisible);
    if (m_tree != nullptr) {
        m_tree->RefreshNode(*this);
    }
}

void CTreeNodeUI::Invalidate()
{
    if (m_tree != nullptr) {
        m_tree->Invalidate();
    }
}

CControlUI* CTreeNodeUI::GetParent() const
{
    CControlUI* tree = m_tree;
    return GetParentNode() != nullptr ? GetParentNode() : tree;
}

const Skin* CTreeNodeUI::GetSkin() const
{
    return m_tree != nullptr ? m_tree->GetSkin() : nullptr;
}

bool CTreeNodeUI::ReadAttribute(const QString& name, const QString& value)
{
    static constexpr std::array<AttributeSetter<CTreeNodeUI>, 2> Table = {{
        {"folderattr",
         [](CTreeNodeUI& node, const QString& text) { node.m_folder.ApplyAttributeList(text); }},
        {"checkboxattr",
         [](CTreeNodeUI& node, const QString& text) { node.m_check.ApplyAttributeList(text); }},
    }};
    const bool isKnown =
        SetFromTable(Table, *this, name, value) || SetLookAttribute(m_look, name, value);
    if (isKnown) {
        Invalidate();
    }
    return isKnown || CControlUI::ReadAttribute(name, value);
}

std::vector<CTreeNodeUI*> NodesBelow(CTreeNodeUI& node)
{
    std::vector<CTreeNodeUI*> nodes;
    std::vector<CTreeNodeUI*> waiting = {&node};
    while (!waiting.empty()) {
        CTreeNodeUI* next = waiting.back();
        waiting.pop_back();
        nodes.push_back(next);
        for (int i = next->GetCount(); i-- > 0;) {
            waiting.push_back(next->GetItemAt(i));
        }
    }
    return nodes;
}
