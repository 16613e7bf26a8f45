#include "ui/list/TreeViewUI.h"

#include "ui/list/TreeModel.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>

#include <utility>

namespace {

constexpr int ButtonGap = 4;

}  // namespace

CTreeViewUI::CTreeViewUI(std::shared_ptr<Skin> skin)
    : CItemViewUI(std::move(skin)), m_root(std::make_unique<CTreeNodeUI>())
{
    m_root->SetTree(this);
    m_model = new TreeModel(*m_root, this);
    // Folder buttons open and close, and follow rules of their own.
    setItemsExpandable(false);
    setHeaderHidden(true);
    setModel(m_model);
}

CTreeViewUI::~CTreeViewUI()
{
    m_isQuiet = true;
    setModel(nullptr);
    m_root->SetTree(nullptr);
}

CTreeNodeUI* CTreeViewUI::GetSelectedNode() const
{
    return currentIndex().isValid() ? &m_model->NodeOf(currentIndex()) : nullptr;
}

void CTreeViewUI::SelectNode(CTreeNodeUI* node)
{
    if (node == nullptr) {
        clearSelection();
    }
    setCurrentIndex(node != nullptr ? m_model->IndexOf(*node) : QModelIndex());
}

void CTreeViewUI::currentChanged(const QModelIndex& current, const QModelIndex& previous)
{
    CItemViewUI::currentChanged(current, previous);
    if (current.isValid() && !m_isQuiet) {
        SendNotify(NotifyItemSelect);
    }
}

void CTreeViewUI::SetOpen(CTreeNodeUI& node, bool isOpen)
{
    node.GetFolderButton().SetState(isOpen, false);
    setExpanded(m_model->IndexOf(node), isOpen);
}

void CTreeViewUI::OnButtonChanged(CTreeNodeButtonUI& button)
{
    CTreeNodeUI& node = button.GetNode();
    if (&button == &node.GetCheckBox()) {
        OnCheckChanged(node);
    } else {
        OnFolderChanged(node);
    }
}

void CTreeViewUI::OnCheckChanged(CTreeNodeUI& node)
{
    node.GetCheckBox().SendNotify(NotifyCheckBoxSelectChanged);
}

void CTreeViewUI::OnFolderChanged(CTreeNodeUI& node)
{
    SetOpen(node, node.GetFolderButton().IsSelected());
    node.SendNotify(NotifyItemExpand);
}

void CTreeViewUI::OnNodeDoubleClick(CTreeNodeUI& node)
{
    node.SendNotify(NotifyItemDoubleClick);
}

void CTreeViewUI::BeginInsert(CTreeNodeUI& parent, int index)
{
    m_model->BeginInsert(parent, index);
}

void CTreeViewUI::EndInsert(CTreeNodeUI& node)
{
    m_model->EndInsert();
    for (CTreeNodeUI* added : NodesBelow(node)) {
        RefreshNode(*added);
    }
}

void CTreeViewUI::BeginRemove(CTreeNodeUI& parent, int index)
{
    m_isQuiet = true;
    m_pressedNode = nullptr;
    // What is selected in the part that goes leaves nothing selected.
    const CTreeNodeUI* going = parent.GetItemAt(index);
    for (CTreeNodeUI* node = GetSelectedNode(); node != nullptr; node = node->GetParentNode()) {
        if (node == going) {
            SelectNode(nullptr);
            break;
        }
    }
    m_model->BeginRemove(parent, index);
}

void CTreeViewUI::EndRemove()
{
    m_model->EndRemove();
    m_isQuiet = false;
}

void CTreeViewUI::RefreshNode(CTreeNodeUI& node)
{
    const QModelIndex index = m_model->IndexOf(node);
    setRowHidden(index.row(), index.parent(), !node.IsVisible());
    setExpanded(index, node.GetFolderButton().IsSelected());
}

CTreeViewUI::Parts CTreeViewUI::PartsOf(const QRect& cell, const CTreeNodeUI& node) const
{
    Parts parts;
    int x = cell.left() + node.GetLevel() * m_indent + ButtonGap;
    const auto place = [&cell, &x](const CTreeNodeButtonUI& button) {
        const QSize size = button.IsVisible() ? button.GetSize() : QSize();
        if (size.isEmpty()) {
            return QRect();
        }
        const QRect area(x, cell.top() + (cell.height() - size.height()) / 2, size.width(),
                         size.height());
        x += size.width() + ButtonGap;
        return area;
    };
    parts.folder = place(node.GetFolderButton());
    parts.check = place(node.GetCheckBox());
    parts.text = QRect(x, cell.top(), std::max(cell.right() - x + 1, 0), cell.height());
    return parts;
}

TextStyle CTreeViewUI::NodeStyle(const QRect& area, const QModelIndex& index) const
{
    const CTreeNodeUI& node = m_model->NodeOf(index);
    const int font = node.Look().font >= 0 ? node.Look().font : m_rowLook.font;
    // A node's own colour holds while the view's would be the plain one.
    const QColor viewColor = RowTextColor(index, node.IsEnabled());
    const bool isPlain = viewColor == m_rowLook.textColor && node.Look().textColor != Qt::black;
    return {font,
            isPlain ? node.Look().textColor : viewColor,
            {area, Qt::AlignLeft | Qt::AlignVCenter, false}};
}

void CTreeViewUI::DrawCell(QPainter& painter, const QRect& cell, const QModelIndex& index)
{
    const CTreeNodeUI& node = m_model->NodeOf(index);
    const Parts parts = PartsOf(cell, node);
    const QPoint mouse = viewport()->mapFromGlobal(QCursor::pos());
    GetSkin()->DrawImage(painter, parts.folder,
                         node.GetFolderButton().StateImage(parts.folder.contains(mouse)));
    GetSkin()->DrawImage(painter, parts.check,
                         node.GetCheckBox().StateImage(parts.check.contains(mouse)));
    DrawRuns(painter, *GetSkin(), ParseTextMarkup(node.GetText(), node.Look().hasMarkup),
             NodeStyle(parts.text, index));
}

int CTreeViewUI::HeightOf(const QModelIndex&) const
{
    return m_rowLook.height;
}

QString CTreeViewUI::CutTextOf(const QRect& cell, const QModelIndex& index) const
{
    const CTreeNodeUI& node = m_model->NodeOf(index);
    const auto runs = ParseTextMarkup(node.GetText(), node.Look().hasMarkup);
    const TextStyle style = NodeStyle(PartsOf(cell, node).text, index);
    return MeasureRuns(*GetSkin(), runs, style).isCut ? PlainText(runs) : QString();
}

bool CTreeViewUI::ReadAttribute(const QString& name, const QString& value)
{
    static constexpr std::array<AttributeSetter<CTreeViewUI>, 1> Table = {{
        {"indent", [](CTreeViewUI& tree,
                      const QString& text) { tree.m_indent = std::max(ParseNumber(text), 0); }},
    }};
    return SetFromTable(Table, *this, name, value) || CItemViewUI::ReadAttribute(name, value);
}

CTreeNodeButtonUI* CTreeViewUI::ButtonAt(const QModelIndex& index, const QPoint& place) const
{
    if (!index.isValid() || !isEnabled()) {
        return nullptr;
    }
    CTreeNodeUI& node = m_model->NodeOf(index);
    const Parts parts = PartsOf(visualRect(index), node);
    if (parts.folder.contains(place)) {
        return &node.GetFolderButton();
    }
    return parts.check.contains(place) ? &node.GetCheckBox() : nullptr;
}

void CTreeViewUI::mousePressEvent(QMouseEvent* event)
{
    const QModelIndex index = indexAt(event->pos());
    m_pressedNode = nullptr;
    CTreeNodeButtonUI* button =
        event->button() == Qt::LeftButton ? ButtonAt(index, event->pos()) : nullptr;
    if (button != nullptr) {
        button->Selected(!button->IsSelected());
        return;
    }
    m_pressedNode = index.isValid() ? &m_model->NodeOf(index) : nullptr;
    CItemViewUI::mousePressEvent(event);
}

void CTreeViewUI::mouseReleaseEvent(QMouseEvent* event)
{
    CTreeNodeUI* pressed = std::exchange(m_pressedNode, nullptr);
    const QModelIndex index = indexAt(event->pos());
    CItemViewUI::mouseReleaseEvent(event);
    if (pressed != nullptr && event->button() == Qt::LeftButton && index.isValid() &&
        &m_model->NodeOf(index) == pressed) {
        pressed->SendNotify(NotifyItemClick);
    }
}

void CTreeViewUI::mouseDoubleClickEvent(QMouseEvent* event)
{
    const QModelIndex index = indexAt(event->pos());
    if (event->button() != Qt::LeftButton || !index.isValid()) {
        return;
    }
    if (CTreeNodeButtonUI* button = ButtonAt(index, event->pos())) {
        button->Selected(!button->IsSelected());
    } else {
        OnNodeDoubleClick(m_model->NodeOf(index));
    }
}

void CTreeViewUI::keyPressEvent(QKeyEvent* event)
{
    CTreeNodeUI* node = GetSelectedNode();
    if (node == nullptr) {
        CItemViewUI::keyPressEvent(event);
        return;
    }
    CTreeNodeButtonUI& folder = node->GetFolderButton();
    switch (event->key()) {
    case Qt::Key_Space:
        if (node->GetCheckBox().IsVisible()) {
            node->GetCheckBox().Selected(!node->GetCheckBox().IsSelected());
        }
        return;
    case Qt::Key_Return:
    case Qt::Key_Enter:
        OnNodeDoubleClick(*node);
        return;
    case Qt::Key_Right:
        if (node->GetCount() > 0 && !folder.IsSelected()) {
            folder.Selected(true);
        } else if (node->GetCount() > 0) {
            SelectNode(node->GetItemAt(0));
        }
        return;
    case Qt::Key_Left:
        if (node->GetCount() > 0 && folder.IsSelected()) {
            folder.Selected(false);
        } else if (node->GetParentNode() != nullptr) {
            SelectNode(node->GetParentNode());
        }
        return;
    default:
        CItemViewUI::keyPressEvent(event);
    }
}
