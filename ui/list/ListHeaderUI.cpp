#include "ui/list/ListHeaderUI.h"

#include <QKeyEvent>
#include <QPainter>

#include <algorithm>
#include <utility>

namespace {

constexpr int DefaultHeight = 28;

}  // namespace

void CListHeaderItemUI::SetText(const QString& text)
{
    m_text = text;
    Invalidate();
}

void CListHeaderItemUI::Invalidate()
{
    if (m_header != nullptr) {
        m_header->Invalidate();
    }
}

CControlUI* CListHeaderItemUI::GetParent() const
{
    return m_header;
}

const Skin* CListHeaderItemUI::GetSkin() const
{
    return m_header != nullptr ? m_header->GetSkin() : nullptr;
}

QString CListHeaderItemUI::GetPlainText() const
{
    const QString plain = PlainText(m_text, m_look.hasMarkup);
    return plain.isEmpty() ? m_accessibleName : plain;
}

bool CListHeaderItemUI::ReadAttribute(const QString& name, const QString& value)
{
    static constexpr std::array<AttributeSetter<CListHeaderItemUI>, 3> Table = {{
        {"width", [](CListHeaderItemUI& item,
                     const QString& text) { item.m_width = std::max(ParseNumber(text), 0); }},
        {"minwidth",
         [](CListHeaderItemUI& item, const QString& text) {
             item.m_minimumWidth = std::max(ParseNumber(text), 0);
         }},
        {"accname",
         [](CListHeaderItemUI& item, const QString& text) { item.m_accessibleName = text; }},
    }};
    const bool isKnown =
        SetFromTable(Table, *this, name, value) || SetLookAttribute(m_look, name, value);
    if (isKnown) {
        Invalidate();
    }
    return isKnown || CControlUI::ReadAttribute(name, value);
}

void CListHeaderItemUI::Draw(QPainter& painter, const QRect& area) const
{
    const Skin& skin = *GetSkin();
    if (m_look.backColor.isValid()) {
        painter.fillRect(area, m_look.backColor);
    }
    skin.DrawImage(painter, area, m_look.backImage);
    skin.DrawImage(painter, area, m_look.foreImage);
    if (m_look.borderColor.isValid()) {
        painter.fillRect(area.right() - m_look.borderSize + 1, area.top(), m_look.borderSize,
                         area.height(), m_look.borderColor);
    }
    DrawRuns(painter, skin, ParseTextMarkup(m_text, m_look.hasMarkup), StyleIn(area));
}

TextStyle CListHeaderItemUI::StyleIn(const QRect& area) const
{
    return {m_look.font,
            m_look.textColor,
            {area.marginsRemoved(m_look.textPadding), m_look.alignment, false}};
}

bool CListHeaderItemUI::IsTextCut(const QRect& area) const
{
    return MeasureRuns(*GetSkin(), ParseTextMarkup(m_text, m_look.hasMarkup), StyleIn(area)).isCut;
}

CListHeaderUI::CListHeaderUI(std::shared_ptr<Skin> skin)
    : WidgetControl<QHeaderView>(std::move(skin), Qt::Horizontal)
{
    setFocusPolicy(Qt::TabFocus);
    setFrameShape(QFrame::NoFrame);
    setMinimumSectionSize(1);
    setStretchLastSection(false);
    connect(this, &QHeaderView::sectionClicked, this, [this](int index) {
        if (CListHeaderItemUI* item = GetItemAt(index)) {
            item->SendNotify(NotifyHeaderClick);
        }
    });
}

CListHeaderItemUI* CListHeaderUI::GetItemAt(int index) const
{
    return index >= 0 && index < GetCount() ? m_items[static_cast<std::size_t>(index)].get()
                                            : nullptr;
}

bool CListHeaderUI::Add(std::unique_ptr<CControlUI>& child)
{
    auto* item = dynamic_cast<CListHeaderItemUI*>(child.get());
    if (item == nullptr) {
        return false;
    }
    (void)child.release();
    item->m_header = this;
    m_items.emplace_back(item);
    return true;
}

void CListHeaderUI::OnBuilt()
{
    if (m_built) {
        m_built();
    }
}

void CListHeaderUI::ApplyWidths()
{
    for (int i = 0; i < std::min(GetCount(), count()); ++i) {
        const CListHeaderItemUI& item = *m_items[static_cast<std::size_t>(i)];
        const bool isShared = item.GetWidth() == 0 && item.GetMinimumWidth() == 0;
        setSectionResizeMode(i, isShared ? QHeaderView::Stretch : QHeaderView::Fixed);
        if (item.GetWidth() > 0) {
            resizeSection(i, item.GetWidth());
        }
    }
    ShareWidth();
}

// Qt's own sharing knows no least width of a single column.
void CListHeaderUI::ShareWidth()
{
    for (int i = 0; i < std::min(GetCount(), count()); ++i) {
        const int least = m_items[static_cast<std::size_t>(i)]->GetMinimumWidth();
        if (least > 0) {
            resizeSection(i, std::max(viewport()->width() - (length() - sectionSize(i)), least));
        }
    }
}

void CListHeaderUI::resizeEvent(QResizeEvent* event)
{
    WidgetControl<QHeaderView>::resizeEvent(event);
    ShareWidth();
}

void CListHeaderUI::paintEvent(QPaintEvent* event)
{
    {
        QPainter painter(viewport());
        DrawGround(painter, viewport()->rect());
    }
    QHeaderView::paintEvent(event);
}

void CListHeaderUI::paintSection(QPainter* painter, const QRect& rect, int logicalIndex) const
{
    if (const CListHeaderItemUI* item = GetItemAt(logicalIndex)) {
        item->Draw(*painter, rect);
        if (hasFocus() && logicalIndex == m_marked) {
            DrawFocusMark(*painter, rect);
        }
    }
}

QSize CListHeaderUI::sizeHint() const
{
    const int height = Place().height > 0 ? Place().height : DefaultHeight;
    return {QHeaderView::sizeHint().width(), height};
}

void CListHeaderUI::keyPressEvent(QKeyEvent* event)
{
    switch (event->key()) {
    case Qt::Key_Left:
    case Qt::Key_Right:
        m_marked += event->key() == Qt::Key_Left ? -1 : 1;
        m_marked = std::clamp(m_marked, 0, std::max(GetCount() - 1, 0));
        Invalidate();
        break;
    case Qt::Key_Space:
    case Qt::Key_Return:
    case Qt::Key_Enter:
        if (CListHeaderItemUI* item = GetItemAt(m_marked)) {
            item->SendNotify(NotifyHeaderClick);
        }
        break;
    default:
        event->ignore();
    }
}
