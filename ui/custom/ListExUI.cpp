#include "ui/custom/ListExUI.h"

#include "ui/custom/ListImageTextNodeUI.h"

#include <QKeyEvent>
#include <QScrollBar>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>
#include <utility>

namespace {

constexpr int FlaggedLevels = 3;

// The nodes below one, each after its parent.
std::vector<CListExUI::Node*> NodesBelow(CListExUI::Node* top)
{
    std::vector<CListExUI::Node*> nodes;
    std::vector<CListExUI::Node*> waiting(top->Children.rbegin(), top->Children.rend());
    while (!waiting.empty()) {
        CListExUI::Node* node = waiting.back();
        waiting.pop_back();
        nodes.push_back(node);
        waiting.insert(waiting.end(), node->Children.rbegin(), node->Children.rend());
    }
    return nodes;
}

void DeleteNodesBelow(CListExUI::Node* top)
{
    for (CListExUI::Node* node : NodesBelow(top)) {
        delete node;
    }
    top->Children.clear();
}

}  // namespace

CListExUI::CListExUI(std::shared_ptr<Skin> skin)
    : CListUI(std::move(skin)), m_root(std::make_unique<Node>())
{
    m_rowLook.hasMarkup = true;
    setUniformRowHeights(false);
}

CListExUI::~CListExUI()
{
    DeleteNodesBelow(m_root.get());
}

CListExUI::Node* CListExUI::LastBelow(Node* node)
{
    while (!node->Children.empty()) {
        node = node->Children.back();
    }
    return node;
}

CListExUI::Node* CListExUI::AddNode(const QString& text, Node* parent, std::intptr_t rowData)
{
    auto row = std::make_unique<Row>();
    row->SetTag(rowData);
    Node* node = InsertNode(std::move(row), text, parent);
    if (node != nullptr) {
        RewriteText(*node);
    }
    return node;
}

CListExUI::Node*
CListExUI::InsertNode(std::unique_ptr<Row> row, const QString& text, Node* parent, Node* behind)
{
    Node* above = parent != nullptr ? parent : m_root.get();
    const bool isBelowRoot = above == m_root.get();
    auto node = std::make_unique<Node>();
    node->Level = above->Level + 1;
    node->ChildVisible = isBelowRoot;
    node->Text = text;
    node->Row = row.get();
    node->Parent = above;
    const auto place = std::find(above->Children.begin(), above->Children.end(), behind);
    const bool isLast = place == above->Children.end();
    const int index = isLast && isBelowRoot
                          ? GetCount()
                          : GetItemIndex(LastBelow(isLast ? above : behind)->Row) + 1;
    if (!isBelowRoot && (!above->ChildVisible || !above->Row->IsVisible())) {
        row->SetVisible(false);
    }
    std::unique_ptr<CControlUI> control = std::move(row);
    if (!CListUI::AddAt(control, index)) {
        return nullptr;
    }
    above->Children.insert(isLast ? place : place + 1, node.get());
    return node.release();
}

bool CListExUI::IsNodeRow(const Row&) const
{
    return true;
}

void CListExUI::RewriteText(Node& node)
{
    QString text = QStringLiteral("<x 6>");
    for (int level = 0; level < node.Level; ++level) {
        text += QStringLiteral("<x 18>");
    }
    if (node.Level < FlaggedLevels) {
        text += node.ChildVisible ? QStringLiteral("<a><i expand_flag.png 2 1></a>")
                                  : QStringLiteral("<a><i expand_flag.png 2 0></a>");
    }
    node.Row->SetText(text + node.Text);
}

void CListExUI::SetChildVisible(Node* node, bool isVisible)
{
    if (node == nullptr || node->ChildVisible == isVisible) {
        return;
    }
    node->ChildVisible = isVisible;
    if (node->Row == nullptr) {
        return;
    }
    if (WritesTexts()) {
        RewriteText(*node);
    }
    if (!node->Row->IsVisible()) {
        return;
    }
    for (Node* below : NodesBelow(node)) {
        if (IsNodeRow(*below->Row)) {
            below->Row->SetVisible(below->Parent->ChildVisible && below->Parent->Row->IsVisible());
        }
    }
}

void CListExUI::RemoveNode(Node* node, bool alsoDeleteRow)
{
    if (node == nullptr || node == m_root.get()) {
        return;
    }
    std::vector<Node*> removed = NodesBelow(node);
    removed.insert(removed.begin(), node);
    if (alsoDeleteRow) {
        SelectItem(-1);
    }
    // The last first: each goes before what it lies below.
    for (auto last = removed.rbegin(); last != removed.rend(); ++last) {
        if (alsoDeleteRow) {
            DeleteRow(GetItemIndex((*last)->Row));
        } else if (auto* row = dynamic_cast<CListImageTextNodeUI*>((*last)->Row)) {
            row->SetNode(nullptr);
        }
        std::erase((*last)->Parent->Children, *last);
        delete *last;
    }
}

bool CListExUI::Remove(CControlUI* row)
{
    return RemoveAt(GetItemIndex(row));
}

bool CListExUI::RemoveAt(int index)
{
    Node* node = FindNode(GetItemAt(index));
    if (node == nullptr) {
        return DeleteRow(index);
    }
    RemoveNode(node, true);
    return true;
}

void CListExUI::RemoveAll()
{
    CListUI::RemoveAll();
    DeleteNodesBelow(m_root.get());
    m_root = std::make_unique<Node>();
}

CListExUI::Node* CListExUI::FindNode(const CControlUI* row) const
{
    if (row == nullptr) {
        return nullptr;
    }
    for (Node* node : NodesBelow(m_root.get())) {
        if (node->Row == row) {
            return node;
        }
    }
    return nullptr;
}

bool CListExUI::OnRowLink(Row& row, int)
{
    Node* node = FindNode(&row);
    if (node != nullptr) {
        SetChildVisible(node, !node->ChildVisible);
    }
    return node != nullptr;
}

void CListExUI::keyPressEvent(QKeyEvent* event)
{
    Node* node = FindNode(GetItemAt(GetCurSel()));
    const bool opens = event->key() == Qt::Key_Right;
    if (node == nullptr || (!opens && event->key() != Qt::Key_Left)) {
        CListUI::keyPressEvent(event);
        return;
    }
    if (!opens && (node->Children.empty() || !node->ChildVisible) && node->Parent->Row != nullptr) {
        SelectItem(GetItemIndex(node->Parent->Row));
    } else if (!node->Children.empty()) {
        SetChildVisible(node, opens);
    }
}

void CListExUI::wheelEvent(QWheelEvent* event)
{
    const int turn = event->angleDelta().y();
    if (turn == 0) {
        CListUI::wheelEvent(event);
        return;
    }
    event->accept();
    m_glide.Turn(turn > 0);
    if (!HasTimer(WheelGlide::TimerId)) {
        m_unscrolled = 0;
        SetTimer(WheelGlide::TimerId, WheelGlide::TickMilliseconds);
    }
}

void CListExUI::OnTimer(int id)
{
    if (id != WheelGlide::TimerId) {
        CListUI::OnTimer(id);
        return;
    }
    // Up is towards smaller values.
    m_unscrolled -= m_glide.Tick();
    const double whole = std::trunc(m_unscrolled);
    m_unscrolled -= whole;
    QScrollBar& bar = *verticalScrollBar();
    bar.setValue(bar.value() + static_cast<int>(whole));
    const bool isAtEnd =
        (whole < 0 && bar.value() == bar.minimum()) || (whole > 0 && bar.value() == bar.maximum());
    if (isAtEnd || !m_glide.IsRunning()) {
        m_glide.Stop();
        KillTimer(WheelGlide::TimerId);
    }
}
